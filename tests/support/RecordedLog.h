// A log that tests can read.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "lib/platform/Log.h"

namespace lirvox::test {

/// Keeps every line.
class RecordedLog : public platform::Log {
 public:
  void write(std::string_view line) override;

  /// All lines so far.
  std::vector<std::string> lines() const;
  /// Whether a line contains `text`.
  bool has(std::string_view text) const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;  // guarded by mutex_
};

/// Makes a new log the installed platform's.
std::shared_ptr<RecordedLog> recordLog();

}  // namespace lirvox::test
