// A delegate that tests can ask.
#pragma once

#include "Faults.h"
#include "lib/LirvoxDelegate.h"

namespace lirvox::test {

/// Keeps every call. May be used from any thread.
class RecordedDelegate : public LirvoxDelegate {
 public:
  /// One call; the default is `didNotRecognize`.
  struct Call {
    std::int32_t trackId = 0;
    float absoluteTimeOffset = 0;
    float relativeTimeOffset = 0;
    bool operator==(const Call&) const = default;
  };

  void didRecognize(std::int32_t trackId, float absoluteTimeOffset,
                    float relativeTimeOffset) override {
    add({trackId, absoluteTimeOffset, relativeTimeOffset});
  }
  void didNotRecognize() override { add({}); }

  std::vector<Call> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  /// The calls so far, which are then forgotten.
  std::vector<Call> takeCalls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }
  /// Waits until there are `count` calls, and returns them.
  std::vector<Call> waitForCalls(std::size_t count) const {
    std::unique_lock lock(mutex_);
    called_.wait(lock, [&] { return calls_.size() >= count; });
    return calls_;
  }

 private:
  void add(const Call& call) {
    const FaultsPaused own;
    const std::lock_guard lock(mutex_);
    calls_.push_back(call);
    called_.notify_all();
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable called_;
  std::vector<Call> calls_;  // guarded by mutex_
};

}  // namespace lirvox::test
