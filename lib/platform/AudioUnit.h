// The audio unit: the platform's source of captured sound.
#pragma once

#include <cstdint>
#include <functional>

#include "../LirvoxExport.h"
#include "AudioTypes.h"

namespace lirvox::platform {

/// The element of a unit that captures.
constexpr std::uint32_t audioUnitInputBus = 1;

/// Captures sound in deliveries of a few frames. Every operation returns 0 or
/// the code of its failure.
///
/// Order of use: `enableInput`, the two formats, `setInputCallback`,
/// `initialize`; then `start` and `stop` any number of times; then `uninitialize`.
///
/// Threads: `render` belongs to the audio thread and may be called from inside
/// the input callback only. All other operations may be called from any thread
/// and are serialised by the unit; they may block for a short time, except where
/// they say otherwise; of these, only `stop` and the end of the unit's life may
/// happen inside the callback. No lock is held while the input callback runs that another
/// operation needs for anything but waiting for the callback's end.
class LIRVOX_EXPORT AudioUnit {
 public:
  /// Opaque to the unit's user, who hands to `render` what the callback was given.
  using RenderActionFlags = std::uint32_t;

  /// Called on the audio thread when `numberFrames` frames, at most
  /// `maximumFramesPerSlice`, wait to be rendered. What it returns is the unit's
  /// to note; deliveries go on either way. It must not block.
  using InputCallback =
      std::function<AudioStatus(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                                std::uint32_t busNumber, std::uint32_t numberFrames)>;

  /// Ends deliveries as `uninitialize` does, and gives everything back.
  virtual ~AudioUnit() = default;

  /// Turns the capturing element on.
  virtual AudioStatus enableInput() = 0;

  /// The format in which the hardware captures.
  virtual AudioStatus inputStreamFormat(AudioStreamBasicDescription& format) = 0;

  /// The format of what the unit's client would play (input scope, element 0).
  virtual AudioStatus setClientStreamFormat(const AudioStreamBasicDescription& format) = 0;

  /// The format in which captured frames are rendered (output scope, element 1).
  /// A format that the unit cannot make gives `audioFormatError`.
  virtual AudioStatus setDeliveredStreamFormat(const AudioStreamBasicDescription& format) = 0;

  /// The largest `numberFrames` of a delivery. Fixed once `initialize` was called.
  virtual AudioStatus maximumFramesPerSlice(std::uint32_t& frames) = 0;

  /// Installs the callback; not while the unit runs.
  virtual AudioStatus setInputCallback(InputCallback callback) = 0;

  /// Prepares to start; opens no device.
  virtual AudioStatus initialize() = 0;

  /// Ends deliveries as `stop` does and undoes `initialize`. Succeeds on a unit
  /// that is not initialised.
  virtual AudioStatus uninitialize() = 0;

  /// Begins to deliver. Starting a unit that runs changes nothing and succeeds.
  virtual AudioStatus start() = 0;

  /// Ends deliveries: when it returns, no callback runs, and none begins before
  /// the next `start`. For that it waits for a callback that runs on another
  /// thread, so the caller must hold nothing that a callback waits for. Called
  /// from inside the callback it does not wait: that delivery is the last.
  /// Stopping a unit that does not run, or whose device is gone, succeeds.
  virtual AudioStatus stop() = 0;

  /// Copies the delivery's samples into `list`, whose buffers say with
  /// `dataByteSize` how much they take. Allocates nothing, locks nothing and
  /// does not block.
  virtual AudioStatus render(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                             std::uint32_t busNumber, std::uint32_t numberFrames,
                             AudioBufferList& list) = 0;
};

}  // namespace lirvox::platform
