// Main queues for hosts that have an event loop of their own.
#include "lib/platform/HostTaskQueues.h"

#include <utility>

#include "lib/platform/RunTask.h"

namespace lirvox::platform {

ExecutorTaskQueue::ExecutorTaskQueue(Executor executor, std::shared_ptr<TaskQueue> timers)
    : executor_(std::move(executor)), timers_(std::move(timers)) {}

void ExecutorTaskQueue::async(Task task) {
  executor_(std::move(task));
}

void ExecutorTaskQueue::after(std::chrono::nanoseconds delay, Task task) {
  timers_->after(delay, [executor = executor_, task = std::move(task)] { executor(task); });
}

std::unique_ptr<Waker> ExecutorTaskQueue::makeWaker(Task task) {
  return timers_->makeWaker([executor = executor_, task = std::move(task)] { executor(task); });
}

PumpedTaskQueue::PumpedTaskQueue(std::shared_ptr<TaskQueue> timers)
    : PumpedTaskQueue(std::make_shared<Waiting>(), std::move(timers)) {}

PumpedTaskQueue::PumpedTaskQueue(const std::shared_ptr<Waiting>& waiting,
                                 std::shared_ptr<TaskQueue> timers)
    : ExecutorTaskQueue(
          [waiting](Task task) {
            const std::lock_guard lock(waiting->mutex);
            waiting->tasks.push_back(std::move(task));
          },
          std::move(timers)),
      waiting_(waiting) {}

std::size_t PumpedTaskQueue::pump() {
  std::deque<Task> due;
  {
    const std::lock_guard lock(waiting_->mutex);
    due.swap(waiting_->tasks);
  }
  for (const Task& task : due) runLogged(task);
  return due.size();
}

}  // namespace lirvox::platform
