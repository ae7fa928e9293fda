// Samples of the host's in the place of a microphone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "MemoryAudioUnit.h"
#include "Platform.h"

namespace lirvox::platform {

/// What a recognizer without a microphone hears: samples that the host has from a file, a
/// network stream or another sound system.
///
///     auto platform = platform::systemPlatform("myapp");
///     const auto feed = platform::SampleFeed::replaceMicrophone(platform);
///     platform::install(std::move(platform));
///     ...
///     feed->put(samples, frames, platform::interleavedPcm(44100, 2, 16));
///     recognizer->setRecordingTime(feed->seconds());
///     recognizer->startRecognize();
///
/// Any thread.
class LIRVOX_EXPORT SampleFeed {
 public:
  /// Makes `platform` hear what is put into the feed, and speak to no sound server.
  static std::shared_ptr<SampleFeed> replaceMicrophone(Platform& platform);

  SampleFeed(const SampleFeed&) = delete;
  SampleFeed& operator=(const SampleFeed&) = delete;

  /// What the captures that start from now on hear, each from the first sample: `frames`
  /// frames of an interleaved format, which are copied, mixed to one channel and resampled
  /// to 11025 Hz. A capture that is longer than its samples waits for ever: set the recording
  /// time to `seconds()`, or less. Takes time and memory in proportion. On failure what was
  /// there stays: `audioParameterError` when there are no samples, or what the platform
  /// says of a format that it cannot convert.
  AudioStatus put(const void* samples, std::size_t frames,
                  const AudioStreamBasicDescription& format);

  /// The length of what was put last; 0 before the first.
  double seconds() const;

 private:
  using MakeConverter = decltype(Platform::makeAudioConverter);

  explicit SampleFeed(MakeConverter makeConverter);
  MemoryAudioUnit::Samples samples() const;

  struct Held;

  const MakeConverter makeConverter_;
  const std::shared_ptr<Held> held_;
};

}  // namespace lirvox::platform
