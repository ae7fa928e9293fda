// Recognition of what an input hears, through the recognizer and its delegate.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "lib/platform/MeteredUnit.h"
#include "lib/platform/Platform.h"
#include "tools/Answer.h"
#include "tools/InstalledDatabase.h"

namespace lirvox::tools {

/// Runs captures on the process's recognizer, and wakes the main thread (`sleepFor`)
/// when there is news. Installs a platform of its own, so one at a time, and before
/// anything else uses the library. To be used on the main thread.
class LiveRecognizer {
 public:
  struct Options {
    std::string database;
    std::string source;  ///< empty: the default source
    double seconds = 0;
    std::int32_t minimumVotes = 0;
    bool savesCaptures = false;
  };

  explicit LiveRecognizer(const Options& options);
  ~LiveRecognizer();
  LiveRecognizer(const LiveRecognizer&) = delete;
  LiveRecognizer& operator=(const LiveRecognizer&) = delete;

  /// Why nothing can be heard, for people; empty when something can.
  std::string whyNoInput() const;
  /// The input in use, if there is one.
  std::optional<platform::AudioSessionPort> input() const;

  /// Starts a capture. Throws `CatalogError` when the database is gone.
  void start();
  /// Cancels it: there will be no answer.
  void stop();

  /// The answer to the last start, once.
  std::optional<Answer> takeAnswer();
  /// Whether the input was taken away, or changed, since the last call.
  bool takeInputChange();
  /// Whether the input could not be used, since the last call.
  bool takeFailure() { return failed_->exchange(false); }

  /// Frames that have arrived in all captures.
  std::uint64_t frames() const { return level_->frames; }
  /// The largest magnitude since the last call, in [0, 2^31].
  std::uint32_t takePeak() { return level_->peak.exchange(0); }

  /// Keeps the last capture, with the samples up to its end or cancellation, at `path`.
  std::error_code saveTo(const std::string& path) const;

 private:
  class Listener;

  const Options options_;
  const InstalledDatabase installed_;
  const std::shared_ptr<platform::SoundLevel> level_ = std::make_shared<platform::SoundLevel>();
  const std::shared_ptr<std::atomic<bool>> failed_ = std::make_shared<std::atomic<bool>>(false);
  const std::shared_ptr<Listener> listener_;
  std::shared_ptr<const platform::Platform> platform_;
};

}  // namespace lirvox::tools
