// Stream formats, buffers and failed statuses of the capture path.
#pragma once

#include <cstdint>
#include <memory>

#include "../LirvoxExport.h"
#include "../platform/AudioTypes.h"

namespace lirvox {

/// The helpers of the capture path. All may be called from any thread; those
/// that allocate or free are not for the audio thread.
class LIRVOX_EXPORT LirvoxAudioUtilities {
 public:
  /// Frees a buffer list that goes out of scope.
  struct BufferListFreer {
    /// Frees it.
    void operator()(platform::AudioBufferList* list) const { freeBufferList(list); }
  };
  /// Frees buffers that go out of scope.
  struct FloatBuffersFreer {
    std::uint32_t numberOfChannels = 0;  ///< how many buffers there are
    /// Frees them.
    void operator()(float** buffers) const { freeFloatBuffers(buffers, numberOfChannels); }
  };
  /// Whoever has it is the owner.
  using OwnedBufferList = std::unique_ptr<platform::AudioBufferList, BufferListFreer>;
  /// Whoever has them is the owner.
  using OwnedFloatBuffers = std::unique_ptr<float*[], FloatBuffersFreer>;

  LirvoxAudioUtilities() = delete;

  /// Does nothing when `result` is 0. Otherwise prints "Error: OPERATION (CODE)"
  /// to the standard error stream, where CODE is the status as a four-character
  /// code in single quotes or else as a number, and, while
  /// `shouldExitOnCheckResultFail` is set, ends the process with status -1.
  static void checkResult(platform::AudioStatus result, const char* operation);

  /// Whether `checkResult` ends the process. Nothing in the library clears it.
  static bool shouldExitOnCheckResultFail;

  /// A new list with zeroed samples of 4 bytes: one buffer for all channels when
  /// interleaved, else one per channel.
  static OwnedBufferList audioBufferListWithNumberOfFrames(std::uint32_t frames,
                                                           std::uint32_t numberOfChannels,
                                                           bool interleaved);

  /// Frees a list that `audioBufferListWithNumberOfFrames` made and that its
  /// owner has released, with its samples. A null list is ignored.
  static void freeBufferList(platform::AudioBufferList* list);

  /// New buffers of `frames` samples of 4 bytes, one per channel, not initialised.
  static OwnedFloatBuffers floatBuffersWithNumberOfFrames(std::uint32_t frames,
                                                          std::uint32_t numberOfChannels);

  /// Frees buffers that `floatBuffersWithNumberOfFrames` made and that their
  /// owner has released. Does nothing when the array or its first entry is null.
  static void freeFloatBuffers(float** buffers, std::uint32_t numberOfChannels);

  /// Whether all channels share one buffer.
  static bool isInterleaved(const platform::AudioStreamBasicDescription& format);

  /// Two channels of 32-bit floats, one buffer each.
  static platform::AudioStreamBasicDescription stereoFloatNonInterleavedFormatWithSampleRate(
      float sampleRate);

  /// The recognizer's own format, whatever the arguments: one channel of 32-bit
  /// signed integers at 11025 Hz.
  static platform::AudioStreamBasicDescription floatFormatWithNumberOfChannels(
      std::uint32_t numberOfChannels, float sampleRate);
};

}  // namespace lirvox
