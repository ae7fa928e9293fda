// Samples of the host's in the place of a microphone.
#include "lib/platform/SampleFeed.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "lib/platform/Mutex.h"

namespace lirvox::platform {
namespace {

constexpr std::uint32_t kRateInHz = 11025;

// What the converter has not asked for yet.
struct Source {
  const std::byte* samples;
  std::size_t frames;
  std::uint32_t bytesPerFrame;
};

// In pieces, since sizes of buffers have 32 bits.
AudioStatus hand(AudioConverter&, std::uint32_t& packetCount, AudioBufferList& request,
                 AudioStreamPacketDescription**, void* userData) {
  auto& source = *static_cast<Source*>(userData);
  packetCount = static_cast<std::uint32_t>(std::min<std::size_t>(packetCount, source.frames));
  auto& buffer = request.buffers.front();
  // A converter reads what it is given.
  buffer.data = const_cast<std::byte*>(source.samples);
  buffer.dataByteSize = packetCount * source.bytesPerFrame;
  source.samples += buffer.dataByteSize;
  source.frames -= packetCount;
  return audioNoError;
}

AudioStatus pullAll(AudioConverter& converter, Source source, std::vector<std::int32_t>& words) {
  constexpr std::uint32_t kPiece = 1U << 16;
  while (true) {
    const std::size_t done = words.size();
    words.resize(done + kPiece);
    AudioBufferList output{{{1, kPiece * 4, words.data() + done}}};
    std::uint32_t count = kPiece;
    const AudioStatus status = converter.fillComplexBuffer(&hand, &source, count, output, nullptr);
    words.resize(done + count);
    if (status != audioNoError || count == 0) return status;
  }
}

}  // namespace

struct SampleFeed::Held {
  Mutex mutex;
  MemoryAudioUnit::Samples samples LIRVOX_GUARDED_BY(mutex);
};

std::shared_ptr<SampleFeed> SampleFeed::replaceMicrophone(Platform& platform) {
  const std::shared_ptr<SampleFeed> feed(new SampleFeed(platform.makeAudioConverter));
  platform.audioSession = std::make_shared<NullAudioSession>();
  platform.makeInputUnit = [feed](AudioStatus&) {
    return std::make_unique<MemoryAudioUnit>(feed->samples());
  };
  return feed;
}

SampleFeed::SampleFeed(MakeConverter makeConverter)
    : makeConverter_(std::move(makeConverter)), held_(std::make_shared<Held>()) {}

AudioStatus SampleFeed::put(const void* samples, std::size_t frames,
                            const AudioStreamBasicDescription& format) {
  AudioStatus status = audioNoError;
  const auto converter = makeConverter_(format, interleavedPcm(kRateInHz, 1, 32), status);
  if (!converter) return status == audioNoError ? audioFormatError : status;
  auto words = std::make_shared<std::vector<std::int32_t>>();
  status = pullAll(*converter,
                   {static_cast<const std::byte*>(samples), frames, format.bytesPerFrame}, *words);
  if (status != audioNoError) return status;
  if (words->empty()) return audioParameterError;
  MemoryAudioUnit::Samples converted = std::move(words);
  const MutexLock lock(held_->mutex);
  held_->samples.swap(converted);
  return audioNoError;
}

double SampleFeed::seconds() const {
  const auto held = samples();
  return held ? static_cast<double>(held->size()) / kRateInHz : 0.0;
}

MemoryAudioUnit::Samples SampleFeed::samples() const {
  const MutexLock lock(held_->mutex);
  return held_->samples;
}

}  // namespace lirvox::platform
