// A log that tests can read.
#include "tests/support/RecordedLog.h"

#include <algorithm>
#include <utility>

#include "lib/platform/Platform.h"
#include "tests/support/Faults.h"

namespace lirvox::test {

void RecordedLog::write(std::string_view line) {
  const FaultsPaused own;
  const std::lock_guard lock(mutex_);
  lines_.emplace_back(line);
}

std::vector<std::string> RecordedLog::lines() const {
  const std::lock_guard lock(mutex_);
  return lines_;
}

bool RecordedLog::has(std::string_view text) const {
  const auto all = lines();
  return std::any_of(all.begin(), all.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

std::shared_ptr<RecordedLog> recordLog() {
  auto log = std::make_shared<RecordedLog>();
  platform::Platform platform = *platform::current();
  platform.log = log;
  platform::install(std::move(platform));
  return log;
}

}  // namespace lirvox::test
