// Linear PCM in all its layouts, read and written as numbers within [-1, 1].
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "../AudioTypes.h"

namespace lirvox::platform {

/// How the samples of a linear PCM format lie in memory: signed integers of 16,
/// 24 (in 3 bytes, or low in 4) or 32 bits, floats of 32 or 64 bits; interleaved
/// or not; 1 to 8 channels; a whole number of Hz within [8000, 192000].
class PcmFormat {
 public:
  /// None when the description is of anything else, or contradicts itself.
  static std::optional<PcmFormat> of(const AudioStreamBasicDescription& description);

  std::uint32_t sampleRateHz() const { return sampleRateHz_; }
  std::uint32_t channels() const { return channels_; }
  std::uint32_t bytesPerFrame() const { return bytesPerFrame_; }
  std::uint32_t numberBuffers() const { return interleaved_ ? 1 : channels_; }

  /// Frames that the `dataByteSize`s of all buffers of `list` span.
  std::uint32_t framesIn(const AudioBufferList& list) const;

  /// Integers become fractions of full scale, exactly.
  double read(const AudioBufferList& list, std::uint32_t frame, std::uint32_t channel) const;

  /// Integers are rounded to the nearest and kept in range; what is no number is 0.
  void write(const AudioBufferList& list, std::uint32_t frame, std::uint32_t channel,
             double value) const;

 private:
  enum class Sample { int16, int24, int24In32, int32, float32, float64 };

  PcmFormat() = default;
  static std::optional<Sample> sampleOf(const AudioStreamBasicDescription& description,
                                        std::uint32_t bytes);
  std::byte* address(const AudioBufferList& list, std::uint32_t frame, std::uint32_t channel) const;

  Sample sample_ = Sample::int16;
  bool interleaved_ = true;
  std::uint32_t sampleRateHz_ = 0;
  std::uint32_t channels_ = 0;
  std::uint32_t bytesPerSample_ = 0;
  std::uint32_t bytesPerFrame_ = 0;
};

}  // namespace lirvox::platform
