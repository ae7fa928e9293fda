// A log that tests can read.
#pragma once

#include "Faults.h"
#include "lib/platform/Log.h"

namespace lirvox::test {

/// Keeps every line.
class RecordedLog : public platform::Log {
 public:
  void write(std::string_view line) override {
    const FaultsPaused own;
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
  }

  /// All lines so far.
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  /// Whether a line contains `text`.
  bool has(std::string_view text) const {
    const std::lock_guard lock(mutex_);
    return std::any_of(lines_.begin(), lines_.end(), [&](const std::string& line) {
      return line.find(text) != std::string::npos;
    });
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;  // guarded by mutex_
};

}  // namespace lirvox::test
