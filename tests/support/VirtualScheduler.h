// Task queues and a clock in virtual time.
#pragma once

#include <chrono>
#include <memory>

#include "lib/platform/Clock.h"
#include "lib/platform/TaskQueue.h"

namespace lirvox::test {

/// Runs tasks on the thread of the test, and only when the test says so: in the order
/// of their times, equal times in the order in which they were handed over. Tasks may
/// be handed over, and wakers woken, by any thread.
class VirtualScheduler {
 public:
  VirtualScheduler();

  /// A serial queue. It may be used for every queue of a platform.
  std::shared_ptr<platform::TaskQueue> queue() const;
  /// A clock that shows virtual time. It starts at 2001-09-09 01:46:40 UTC.
  std::shared_ptr<platform::Clock> clock() const;

  /// Runs the next task that is due; false when there is none.
  bool runOne();
  /// Runs tasks until none is due now, those that they hand over included.
  void run();
  /// Lets `time` pass, running each task at its moment.
  void advance(std::chrono::nanoseconds time);

 private:
  class Queue;
  class VirtualClock;
  class VirtualWaker;

  const std::shared_ptr<Queue> queue_;
};

}  // namespace lirvox::test
