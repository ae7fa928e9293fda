// Task queues: where the library's work runs when it leaves the caller's thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Work to be done once.
using Task = std::function<void()>;

/// Starts one fixed task from a real-time thread.
///
/// All memory is allocated when the waker is made. Destroying it (from any
/// thread but a real-time one) withdraws calls that have not started yet.
class LIRVOX_EXPORT Waker {
 public:
  virtual ~Waker() = default;

  /// Makes the task run soon on the waker's queue: at least once after the last
  /// call, and at most once per call (calls in quick succession may be merged).
  /// Allocates nothing, takes no lock and does not block; callable from any
  /// thread, an audio thread included.
  virtual void wake() noexcept = 0;
};

/// A queue of tasks: serial (one at a time, in order) or concurrent, as its maker says.
///
/// All operations may be called from any thread and return at once; a task never
/// runs inside the call that hands it over. Exceptions that leave a task are
/// logged and dropped.
class LIRVOX_EXPORT TaskQueue {
 public:
  virtual ~TaskQueue() = default;

  /// Runs `task` as soon as the queue gets to it.
  virtual void async(Task task) = 0;

  /// Runs `task` no earlier than `delay` from now.
  virtual void after(std::chrono::nanoseconds delay, Task task) = 0;

  /// A waker that runs `task` on this queue.
  virtual std::unique_ptr<Waker> makeWaker(Task task) = 0;
};

}  // namespace lirvox::platform
