// Requests to the system that fail, one after the other.
#include "tests/support/Faults.h"

namespace lirvox::test {
namespace {

// Requests until the one that fails; 0 when none will, -1 when all do.
std::atomic<int> countdown{0};
std::atomic<int> struck{0};
std::atomic<int> afterwards{0};
// Whether this is the thread on which `failEach` runs.
thread_local bool counts = false;

}  // namespace

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

bool faultIsDue() noexcept {
  return counts && faultOfAnyThreadIsDue();
}

bool faultOfAnyThreadIsDue() noexcept {
  int left = countdown.load();
  while (left > 0 &&
         !countdown.compare_exchange_weak(left, left == 1 ? afterwards.load() : left - 1))
    continue;
  if (left == 0 || left > 1) return false;
  ++struck;
  return true;
}

FaultsPaused::FaultsPaused() : counts_(std::exchange(counts, false)) {}

FaultsPaused::~FaultsPaused() {
  counts = counts_;
}

int failEach(Failing failing, const std::function<void()>& operation,
             const std::function<void()>& check) {
  for (int n = 1;; ++n) {
    const testing::ScopedTrace trace("", 0, "request " + std::to_string(n));
    const std::ptrdiff_t descriptors = n == 1 ? 0 : openDescriptors();
    afterwards = failing == Failing::onwards ? -1 : 0;
    struck = 0;
    countdown = n;
    counts = true;
    operation();
    counts = false;
    countdown = 0;
    check();
    EXPECT_TRUE(n == 1 || openDescriptors() == descriptors) << "a descriptor stays open";
    if (struck > 0 && !testing::Test::HasFailure()) continue;
    testing::Test::RecordProperty("requests", n - 1);
    return n - 1;
  }
}

}  // namespace lirvox::test
