// Samples of the host's, in the recognizer's format.
#include "bindings/c/HostSamples.h"

#include <algorithm>
#include <utility>

#include "bindings/c/Failure.h"
#include "lib/LirvoxSettings.h"
#include "lib/audio/LirvoxAudioUtilities.h"

namespace lirvox::c {
namespace {

using platform::AudioBufferList;
using platform::AudioConverter;
using platform::AudioStatus;
using platform::AudioStreamBasicDescription;

// What the converter has not asked for yet.
struct Source {
  const std::byte* samples;
  std::size_t frames;
  std::uint32_t bytesPerFrame;
};

// In pieces, since sizes of buffers have 32 bits.
AudioStatus hand(AudioConverter&, std::uint32_t& packetCount, AudioBufferList& request,
                 platform::AudioStreamPacketDescription**, void* userData) {
  auto& source = *static_cast<Source*>(userData);
  packetCount = static_cast<std::uint32_t>(std::min<std::size_t>(packetCount, source.frames));
  auto& buffer = request.buffers.front();
  // A converter reads what it is given.
  buffer.data = const_cast<std::byte*>(source.samples);
  buffer.dataByteSize = packetCount * source.bytesPerFrame;
  source.samples += buffer.dataByteSize;
  source.frames -= packetCount;
  return platform::audioNoError;
}

std::vector<std::int32_t> pullAll(AudioConverter& converter, Source source) {
  constexpr std::uint32_t kPiece = 1U << 16;
  std::vector<std::int32_t> words;
  while (true) {
    const std::size_t done = words.size();
    words.resize(done + kPiece);
    AudioBufferList output{{{1, kPiece * 4, words.data() + done}}};
    std::uint32_t count = kPiece;
    const AudioStatus status = converter.fillComplexBuffer(&hand, &source, count, output, nullptr);
    words.resize(done + count);
    if (status != platform::audioNoError) throw Failure(LIRVOX_FAILED, "the conversion failed");
    if (count == 0) return words;
  }
}

}  // namespace

void HostSamples::put(const void* samples, std::size_t frames,
                      const AudioStreamBasicDescription& format) {
  const auto rate = static_cast<float>(LirvoxSettings::sampleRate());
  AudioStatus status = platform::audioNoError;
  const auto converter = makeConverter_(
      format, LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, rate), status);
  if (!converter) throw Failure(LIRVOX_INVALID_ARGUMENT, "no such sample rate, channels or format");
  auto words =
      pullAll(*converter, {static_cast<const std::byte*>(samples), frames, format.bytesPerFrame});
  if (words.empty()) throw Failure(LIRVOX_INVALID_ARGUMENT, "there are no samples");
  auto converted = std::make_shared<const std::vector<std::int32_t>>(std::move(words));
  const std::lock_guard lock(mutex_);
  samples_.swap(converted);
}

HostSamples::Samples HostSamples::samples() const {
  const std::lock_guard lock(mutex_);
  return samples_;
}

}  // namespace lirvox::c
