// The C interface to samples of the host's.
#include "bindings/c/Handles.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

struct SampleLayout {
  std::uint32_t bits;
  bool isFloat;
};

SampleLayout layoutOf(lirvox_sample_format format) {
  switch (format) {
    case LIRVOX_INT16:
      return {16, false};
    case LIRVOX_INT24:
      return {24, false};
    case LIRVOX_INT32:
      return {32, false};
    case LIRVOX_FLOAT32:
      return {32, true};
    case LIRVOX_FLOAT64:
      return {64, true};
  }
  throw Failure(LIRVOX_INVALID_ARGUMENT, "no such sample format");
}

}  // namespace

lirvox_feed* lirvox_platform_use_feed(lirvox_platform* platform) {
  return guarded<lirvox_feed*>(nullptr, [&] {
    auto feed = std::make_unique<lirvox_feed>();
    feed->feed = platform::SampleFeed::replaceMicrophone(platformOf(platform));
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
    const SampleLayout layout = layoutOf(format);
    const platform::AudioStatus status =
        required(feed, "feed")
            ->feed->put(
                required(samples, "samples"), frames,
                platform::interleavedPcm(sample_rate, channels, layout.bits, layout.isFloat));
    if (status == platform::audioNoError) return;
    throw Failure(LIRVOX_INVALID_ARGUMENT, status == platform::audioParameterError
                                               ? "there are no samples"
                                               : "no such sample rate, channels or format");
  });
}

double lirvox_feed_seconds(const lirvox_feed* feed) {
  return guarded(0.0, [&] { return required(feed, "feed")->feed->seconds(); });
}
