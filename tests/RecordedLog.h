// A log that tests can read.
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lib/platform/Platform.h"

namespace lirvox::test {

class RecordedLog : public platform::Log {
 public:
  void write(std::string_view line) override {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
  }
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  bool has(std::string_view text) const {
    const auto all = lines();
    return std::any_of(all.begin(), all.end(), [&](const std::string& line) {
      return line.find(text) != std::string::npos;
    });
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;  // guarded by mutex_
};

/// Makes a new log the installed platform's.
inline std::shared_ptr<RecordedLog> recordLog() {
  auto log = std::make_shared<RecordedLog>();
  platform::Platform platform = *platform::current();
  platform.log = log;
  platform::install(std::move(platform));
  return log;
}

}  // namespace lirvox::test
