// The C interface to samples of the host's.
#include "bindings/c/Handles.h"
#include "lib/LirvoxSettings.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

std::uint32_t bytesOf(lirvox_sample_format format) {
  switch (format) {
    case LIRVOX_INT16:
      return 2;
    case LIRVOX_INT24:
      return 3;
    case LIRVOX_INT32:
    case LIRVOX_FLOAT32:
      return 4;
    case LIRVOX_FLOAT64:
      return 8;
  }
  throw Failure(LIRVOX_INVALID_ARGUMENT, "no such sample format");
}

platform::AudioStreamBasicDescription interleaved(std::uint32_t rate, std::uint32_t channels,
                                                  lirvox_sample_format sampleFormat) {
  const bool isFloat = sampleFormat == LIRVOX_FLOAT32 || sampleFormat == LIRVOX_FLOAT64;
  const std::uint32_t bytes = bytesOf(sampleFormat);
  platform::AudioStreamBasicDescription format;
  format.sampleRate = rate;
  format.formatID = platform::audioFormatLinearPCM;
  format.formatFlags =
      platform::audioFormatFlagIsPacked |
      (isFloat ? platform::audioFormatFlagIsFloat : platform::audioFormatFlagIsSignedInteger);
  format.bytesPerFrame = format.bytesPerPacket = bytes * channels;
  format.framesPerPacket = 1;
  format.channelsPerFrame = channels;
  format.bitsPerChannel = bytes * 8;
  return format;
}

}  // namespace

lirvox_feed* lirvox_platform_use_feed(lirvox_platform* platform) {
  return guarded<lirvox_feed*>(nullptr, [&] {
    platform::Platform& changed = platformOf(platform);
    auto feed = std::make_unique<lirvox_feed>();
    feed->samples = std::make_shared<HostSamples>(changed.makeAudioConverter);
    auto session = std::make_shared<platform::NullAudioSession>();
    changed.makeInputUnit = [samples = feed->samples](platform::AudioStatus&) {
      return std::make_unique<platform::MemoryAudioUnit>(samples->samples());
    };
    changed.audioSession = std::move(session);
    return feed.release();
  });
}

void lirvox_feed_free(lirvox_feed* feed) {
  delete feed;
}

lirvox_status lirvox_feed_put(lirvox_feed* feed, const void* samples, size_t frames,
                              uint32_t sample_rate, uint32_t channels,
                              lirvox_sample_format format) {
  return guarded([&] {
    required(feed, "feed")
        ->samples->put(required(samples, "samples"), frames,
                       interleaved(sample_rate, channels, format));
  });
}

double lirvox_feed_seconds(const lirvox_feed* feed) {
  return guarded(0.0, [&] {
    const auto samples = required(feed, "feed")->samples->samples();
    return samples ? static_cast<double>(samples->size()) / LirvoxSettings::sampleRate() : 0.0;
  });
}
