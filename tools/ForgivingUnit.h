// An audio unit whose failures do not end the process.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "lib/platform/MeteredUnit.h"

namespace lirvox::tools {

/// Where the other unit fails to set up, start or stop, that is noted, and this one
/// succeeds: a microphone would end the process.
class ForgivingUnit : public platform::MeteredUnit {
 public:
  using Status = platform::AudioStatus;

  /// `failed` becomes true with the first failure; `stopped` is called after each stop of
  /// the unit, when it delivers no more.
  ForgivingUnit(std::unique_ptr<AudioUnit> unit, std::shared_ptr<platform::SoundLevel> level,
                std::shared_ptr<std::atomic<bool>> failed, std::function<void()> stopped)
      : MeteredUnit(std::move(unit), std::move(level)),
        failed_(std::move(failed)),
        stopped_(std::move(stopped)) {}

  Status inputStreamFormat(Format& format) override {
    return noted(MeteredUnit::inputStreamFormat(format));
  }
  Status setDeliveredStreamFormat(const Format& format) override {
    return noted(MeteredUnit::setDeliveredStreamFormat(format));
  }
  Status initialize() override { return noted(MeteredUnit::initialize()); }
  Status start() override { return noted(MeteredUnit::start()); }
  Status stop() override {
    const Status status = MeteredUnit::stop();
    stopped_();
    return noted(status);
  }

 private:
  Status noted(Status status) {
    if (status != platform::audioNoError) *failed_ = true;
    return platform::audioNoError;
  }

  const std::shared_ptr<std::atomic<bool>> failed_;
  const std::function<void()> stopped_;
};

}  // namespace lirvox::tools
