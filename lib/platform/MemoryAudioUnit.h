// An audio unit that captures nothing and delivers samples from memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "AudioUnit.h"

namespace lirvox::platform {

/// Delivers 32-bit signed mono samples at 11025 Hz, on a thread of its own and
/// as fast as they are taken, beginning with the first sample and going on where
/// it was stopped. After the last sample it falls silent: it keeps running and
/// delivers nothing.
class LIRVOX_EXPORT MemoryAudioUnit : public AudioUnit {
 public:
  /// The largest delivery.
  static constexpr std::uint32_t maximumFrames = 1024;

  /// Shared, and never changed.
  using Samples = std::shared_ptr<const std::vector<std::int32_t>>;

  /// `deliverySizes`, in frames within [1, 1024], are used in turn, over and over.
  explicit MemoryAudioUnit(Samples samples,
                           std::vector<std::uint32_t> deliverySizes = {maximumFrames});
  ~MemoryAudioUnit() override;
  MemoryAudioUnit(const MemoryAudioUnit&) = delete;
  MemoryAudioUnit& operator=(const MemoryAudioUnit&) = delete;

  AudioStatus enableInput() override { return audioNoError; }
  AudioStatus inputStreamFormat(AudioStreamBasicDescription& format) override;
  AudioStatus setClientStreamFormat(const AudioStreamBasicDescription& format) override;
  AudioStatus setDeliveredStreamFormat(const AudioStreamBasicDescription& format) override;
  AudioStatus maximumFramesPerSlice(std::uint32_t& frames) override;
  AudioStatus setInputCallback(InputCallback callback) override;
  AudioStatus initialize() override;
  AudioStatus uninitialize() override;
  AudioStatus start() override;
  AudioStatus stop() override;
  AudioStatus render(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                     std::uint32_t busNumber, std::uint32_t numberFrames,
                     AudioBufferList& list) override;

 private:
  struct Player;

  // Outlives this object when it is destroyed from inside its own callback.
  const std::shared_ptr<Player> player_;
};

}  // namespace lirvox::platform
