// Who receives what a microphone captures.
#pragma once

#include <cstdint>

#include "../LirvoxExport.h"
#include "../platform/AudioTypes.h"

namespace lirvox {

class LirvoxAudioDevice;
class LirvoxMicrophone;

/// Receives a microphone's events. Every operation is optional.
///
/// `hasBufferList` is called on the audio thread and must not block; the others
/// on the thread that makes the change. A delegate that wants converted samples
/// derives from `LirvoxMicrophoneAudioDelegate` instead.
class LIRVOX_EXPORT LirvoxMicrophoneDelegate {
 public:
  virtual ~LirvoxMicrophoneDelegate() = default;

  /// A stream format was applied.
  virtual void hasAudioStreamBasicDescription(
      LirvoxMicrophone& /*microphone*/,
      platform::AudioStreamBasicDescription /*audioStreamBasicDescription*/) {}

  /// `bufferSize` frames were rendered, before conversion. The list belongs to
  /// the microphone and is valid until the call returns.
  virtual void hasBufferList(LirvoxMicrophone& /*microphone*/,
                             platform::AudioBufferList& /*bufferList*/,
                             std::uint32_t /*bufferSize*/, std::uint32_t /*numberOfChannels*/) {}

  /// The unit was started (true) or stopped (false).
  virtual void changedPlayingState(LirvoxMicrophone& /*microphone*/, bool /*isPlaying*/) {}

  /// Another input device was selected.
  virtual void changedDevice(LirvoxMicrophone& /*microphone*/,
                             const LirvoxAudioDevice& /*device*/) {}
};

/// A delegate that receives converted samples too. A type of its own, because a
/// microphone converts only for a delegate that implements `hasAudioReceived`;
/// it looks once, when the delegate is set, and not on the audio thread.
class LIRVOX_EXPORT LirvoxMicrophoneAudioDelegate : public LirvoxMicrophoneDelegate {
 public:
  /// `bufferSize` frames were rendered and converted. Called on the audio thread
  /// and must not block. `buffers` holds one buffer per channel, valid until the
  /// call returns. They are typed as float but hold 32-bit signed integers at
  /// 11025 Hz, in channel 0; that is meant, and to be read as such.
  /// `numberOfChannels` is the stream format's (1 by default).
  virtual void hasAudioReceived(LirvoxMicrophone& microphone, float** buffers,
                                std::uint32_t bufferSize, std::uint32_t numberOfChannels) = 0;
};

}  // namespace lirvox
