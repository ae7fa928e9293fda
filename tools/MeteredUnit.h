// An audio unit that is watched.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "lib/platform/AudioUnit.h"

namespace lirvox::tools {

/// What the audio thread has seen.
struct SoundLevel {
  std::atomic<std::uint64_t> frames{0};
  /// The largest magnitude since somebody last set it 0, in [0, 2^31].
  std::atomic<std::uint32_t> peak{0};
  /// The input could not be used.
  std::atomic<bool> failed{false};
};

/// Hands everything on to another unit, whose samples are 32-bit integers, and notes
/// what it renders. Where the other fails to set up, start or stop, that is noted, and
/// this one succeeds: a microphone would end the process.
class MeteredUnit : public platform::AudioUnit {
 public:
  using Status = platform::AudioStatus;
  using Format = platform::AudioStreamBasicDescription;

  /// `stopped` is called after each stop of the unit, when it delivers no more.
  MeteredUnit(std::unique_ptr<AudioUnit> unit, std::shared_ptr<SoundLevel> level,
              std::function<void()> stopped)
      : unit_(std::move(unit)), level_(std::move(level)), stopped_(std::move(stopped)) {}

  Status enableInput() override { return unit_->enableInput(); }
  Status inputStreamFormat(Format& format) override {
    return noted(unit_->inputStreamFormat(format));
  }
  Status setClientStreamFormat(const Format& format) override {
    return unit_->setClientStreamFormat(format);
  }
  Status setDeliveredStreamFormat(const Format& format) override {
    return noted(unit_->setDeliveredStreamFormat(format));
  }
  Status maximumFramesPerSlice(std::uint32_t& frames) override {
    return unit_->maximumFramesPerSlice(frames);
  }
  Status setInputCallback(InputCallback callback) override {
    return unit_->setInputCallback(std::move(callback));
  }
  Status initialize() override { return noted(unit_->initialize()); }
  Status uninitialize() override { return unit_->uninitialize(); }
  Status start() override { return noted(unit_->start()); }
  Status stop() override;
  Status render(RenderActionFlags& actionFlags, const platform::AudioTimeStamp& timeStamp,
                std::uint32_t busNumber, std::uint32_t numberFrames,
                platform::AudioBufferList& list) override;

 private:
  Status noted(Status status);

  const std::unique_ptr<AudioUnit> unit_;
  const std::shared_ptr<SoundLevel> level_;
  const std::function<void()> stopped_;
};

}  // namespace lirvox::tools
