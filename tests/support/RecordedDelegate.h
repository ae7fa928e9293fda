// A delegate that tests can ask.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

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
                    float relativeTimeOffset) override;
  void didNotRecognize() override;

  std::vector<Call> calls() const;
  /// The calls so far, which are then forgotten.
  std::vector<Call> takeCalls();
  /// Waits until there are `count` calls, and returns them.
  std::vector<Call> waitForCalls(std::size_t count) const;

 private:
  void add(const Call& call);

  mutable std::mutex mutex_;
  mutable std::condition_variable called_;
  std::vector<Call> calls_;  // guarded by mutex_
};

}  // namespace lirvox::test
