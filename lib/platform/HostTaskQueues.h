// Main queues for hosts that have an event loop of their own.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "TaskQueue.h"

namespace lirvox::platform {

/// A queue whose tasks run wherever the host's executor puts them.
///
/// For a host with a loop (GLib, Qt, a game): `executor` receives each task when
/// it is due, on a thread of the library, and must run it later on the host's
/// thread, in order. Delays and wake-ups are kept by `timers`.
class LIRVOX_EXPORT ExecutorTaskQueue : public TaskQueue {
 public:
  /// The host's function.
  using Executor = std::function<void(Task)>;

  /// Hands tasks to `executor`.
  ExecutorTaskQueue(Executor executor, std::shared_ptr<TaskQueue> timers);

  void async(Task task) override;
  void after(std::chrono::nanoseconds delay, Task task) override;
  std::unique_ptr<Waker> makeWaker(Task task) override;

 private:
  const Executor executor_;
  const std::shared_ptr<TaskQueue> timers_;
};

/// A queue that the host pumps: tasks wait until `pump` is called.
class LIRVOX_EXPORT PumpedTaskQueue : public ExecutorTaskQueue {
 public:
  /// Keeps tasks; delays and wake-ups are kept by `timers`.
  explicit PumpedTaskQueue(std::shared_ptr<TaskQueue> timers);

  /// Runs the tasks that wait, on the calling thread, and returns how many ran.
  /// Tasks that these add wait for the next call.
  std::size_t pump();

 private:
  struct Waiting;

  PumpedTaskQueue(const std::shared_ptr<Waiting>& waiting, std::shared_ptr<TaskQueue> timers);

  const std::shared_ptr<Waiting> waiting_;
};

}  // namespace lirvox::platform
