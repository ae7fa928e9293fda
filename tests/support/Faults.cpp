// Requests to the system that fail, one after the other.
#include "tests/support/Faults.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace lirvox::test {
namespace {

// Requests until the one that fails; 0 when none will, -1 when all do.
thread_local int countdown = 0;
thread_local int struck = 0;
thread_local Failing kind = Failing::once;

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace

bool faultIsDue() noexcept {
  if (countdown == 0) return false;
  if (countdown > 0 && --countdown > 0) return false;
  ++struck;
  if (kind == Failing::onwards) countdown = -1;
  return true;
}

FaultsPaused::FaultsPaused() : countdown_(std::exchange(countdown, 0)) {}

FaultsPaused::~FaultsPaused() {
  countdown = countdown_;
}

int failEach(Failing failing, const std::function<void()>& operation,
             const std::function<void()>& check) {
  for (int n = 1;; ++n) {
    const testing::ScopedTrace trace("", 0, "request " + std::to_string(n));
    const std::ptrdiff_t descriptors = n == 1 ? 0 : openDescriptors();
    kind = failing;
    struck = 0;
    countdown = n;
    operation();
    countdown = 0;
    check();
    EXPECT_TRUE(n == 1 || openDescriptors() == descriptors) << "a descriptor stays open";
    if (struck > 0 && !testing::Test::HasFailure()) continue;
    testing::Test::RecordProperty("requests", n - 1);
    return n - 1;
  }
}

}  // namespace lirvox::test
