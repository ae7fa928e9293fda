// Samples of the host's, in the recognizer's format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "lib/platform/MemoryAudioUnit.h"
#include "lib/platform/Platform.h"

namespace lirvox::c {

/// What the next capture hears. Callable from any thread.
class HostSamples {
 public:
  using Samples = platform::MemoryAudioUnit::Samples;
  using MakeConverter = decltype(platform::Platform::makeAudioConverter);

  explicit HostSamples(MakeConverter makeConverter) : makeConverter_(std::move(makeConverter)) {}

  /// Takes `frames` frames of an interleaved format; throws `Failure` when there are none
  /// or the format is not one that the platform converts.
  void put(const void* samples, std::size_t frames,
           const platform::AudioStreamBasicDescription& format);

  Samples samples() const;

 private:
  const MakeConverter makeConverter_;
  mutable std::mutex mutex_;
  Samples samples_;  // guarded by mutex_
};

}  // namespace lirvox::c
