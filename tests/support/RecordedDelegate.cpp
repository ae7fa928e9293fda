// A delegate that tests can ask.
#include "tests/support/RecordedDelegate.h"

#include <utility>

#include "tests/support/Faults.h"

namespace lirvox::test {

void RecordedDelegate::didRecognize(std::int32_t trackId, float absoluteTimeOffset,
                                    float relativeTimeOffset) {
  add({trackId, absoluteTimeOffset, relativeTimeOffset});
}

void RecordedDelegate::didNotRecognize() {
  add({});
}

void RecordedDelegate::add(const Call& call) {
  const FaultsPaused own;
  const std::lock_guard lock(mutex_);
  calls_.push_back(call);
  called_.notify_all();
}

std::vector<RecordedDelegate::Call> RecordedDelegate::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<RecordedDelegate::Call> RecordedDelegate::takeCalls() {
  const std::lock_guard lock(mutex_);
  return std::exchange(calls_, {});
}

std::vector<RecordedDelegate::Call> RecordedDelegate::waitForCalls(std::size_t count) const {
  std::unique_lock lock(mutex_);
  called_.wait(lock, [&] { return calls_.size() >= count; });
  return calls_;
}

}  // namespace lirvox::test
