// Linear PCM in all its layouts, read and written as numbers within [-1, 1].
#include "lib/platform/linux/PcmFormat.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace lirvox::platform {
namespace {

template <typename Value>
Value load(const std::byte* memory) {
  Value value;
  std::memcpy(&value, memory, sizeof value);
  return value;
}

template <typename Value>
void store(std::byte* memory, Value value) {
  std::memcpy(memory, &value, sizeof value);
}

// The three bytes become the upper ones of a word, which gets the sign right.
std::int32_t load24(const std::byte* memory) {
  std::int32_t value = 0;
  constexpr std::size_t upper = std::endian::native == std::endian::little ? 1 : 0;
  std::memcpy(reinterpret_cast<std::byte*>(&value) + upper, memory, 3);
  return value >> 8;
}

void store24(std::byte* memory, std::int32_t value) {
  constexpr std::size_t lower = std::endian::native == std::endian::little ? 0 : 1;
  std::memcpy(memory, reinterpret_cast<const std::byte*>(&value) + lower, 3);
}

constexpr double fullScale(int bits) {
  return static_cast<double>(std::int64_t{1} << (bits - 1));
}

std::int32_t toInteger(double value, int bits) {
  if (std::isnan(value)) return 0;
  const double scale = fullScale(bits);
  return static_cast<std::int32_t>(std::clamp(std::nearbyint(value * scale), -scale, scale - 1));
}

}  // namespace

std::optional<PcmFormat::Sample> PcmFormat::sampleOf(const AudioStreamBasicDescription& description,
                                                     std::uint32_t bytes) {
  const std::uint32_t bits = description.bitsPerChannel;
  if (description.formatFlags & audioFormatFlagIsFloat) {
    if (bits == 32 && bytes == 4) return Sample::float32;
    if (bits == 64 && bytes == 8) return Sample::float64;
  } else if (description.formatFlags & audioFormatFlagIsSignedInteger) {
    if (bits == 16 && bytes == 2) return Sample::int16;
    if (bits == 24 && bytes == 3) return Sample::int24;
    if (bits == 24 && bytes == 4) return Sample::int24In32;
    if (bits == 32 && bytes == 4) return Sample::int32;
  }
  return std::nullopt;
}

std::optional<PcmFormat> PcmFormat::of(const AudioStreamBasicDescription& description) {
  constexpr std::uint32_t knownFlags = audioFormatFlagIsFloat | audioFormatFlagIsSignedInteger |
                                       audioFormatFlagIsPacked | audioFormatFlagIsNonInterleaved;
  const double rate = description.sampleRate;
  const std::uint32_t channels = description.channelsPerFrame;
  const bool known = description.formatID == audioFormatLinearPCM &&
                     (description.formatFlags & ~knownFlags) == 0 && rate >= 8000 &&
                     rate <= 192000 && rate == std::floor(rate) && channels >= 1 && channels <= 8 &&
                     description.framesPerPacket == 1 &&
                     description.bytesPerPacket == description.bytesPerFrame;
  if (!known) return std::nullopt;
  PcmFormat format;
  format.interleaved_ = (description.formatFlags & audioFormatFlagIsNonInterleaved) == 0;
  format.sampleRateHz_ = static_cast<std::uint32_t>(rate);
  format.channels_ = channels;
  format.bytesPerFrame_ = description.bytesPerFrame;
  const std::uint32_t samplesPerFrame = format.interleaved_ ? channels : 1;
  if (format.bytesPerFrame_ % samplesPerFrame != 0) return std::nullopt;
  format.bytesPerSample_ = format.bytesPerFrame_ / samplesPerFrame;
  const std::optional<Sample> sample = sampleOf(description, format.bytesPerSample_);
  if (!sample) return std::nullopt;
  format.sample_ = *sample;
  return format;
}

std::uint32_t PcmFormat::framesIn(const AudioBufferList& list) const {
  if (list.buffers.size() < numberBuffers()) return 0;
  std::uint32_t bytes = list.buffers.front().dataByteSize;
  for (const AudioBuffer& buffer : list.buffers) bytes = std::min(bytes, buffer.dataByteSize);
  return bytes / bytesPerFrame_;
}

std::byte* PcmFormat::address(const AudioBufferList& list, std::uint32_t frame,
                              std::uint32_t channel) const {
  const AudioBuffer& buffer = list.buffers[interleaved_ ? 0 : channel];
  const std::size_t offset = interleaved_ ? std::size_t{channel} * bytesPerSample_ : 0;
  return static_cast<std::byte*>(buffer.data) + std::size_t{frame} * bytesPerFrame_ + offset;
}

double PcmFormat::read(const AudioBufferList& list, std::uint32_t frame,
                       std::uint32_t channel) const {
  const std::byte* const memory = address(list, frame, channel);
  switch (sample_) {
    case Sample::int16:
      return load<std::int16_t>(memory) / fullScale(16);
    case Sample::int24:
      return load24(memory) / fullScale(24);
    case Sample::int24In32:
      return load<std::int32_t>(memory) / fullScale(24);
    case Sample::int32:
      return load<std::int32_t>(memory) / fullScale(32);
    case Sample::float32:
      return static_cast<double>(load<float>(memory));
    case Sample::float64:
      return load<double>(memory);
  }
  return 0;
}

void PcmFormat::write(const AudioBufferList& list, std::uint32_t frame, std::uint32_t channel,
                      double value) const {
  std::byte* const memory = address(list, frame, channel);
  switch (sample_) {
    case Sample::int16:
      return store(memory, static_cast<std::int16_t>(toInteger(value, 16)));
    case Sample::int24:
      return store24(memory, toInteger(value, 24));
    case Sample::int24In32:
      return store(memory, toInteger(value, 24));
    case Sample::int32:
      return store(memory, toInteger(value, 32));
    case Sample::float32:
      return store(memory, static_cast<float>(value));
    case Sample::float64:
      return store(memory, value);
  }
}

}  // namespace lirvox::platform
