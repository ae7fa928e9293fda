// Main queues for hosts that have an event loop of their own.
#include "lib/platform/HostTaskQueues.h"

#include <deque>
#include <utility>

#include "lib/platform/Mutex.h"
#include "lib/platform/RunTask.h"

namespace lirvox::platform {
namespace {

// Exceptions must not get into the host's loop.
Task logged(Task task) {
  return [task = std::move(task)] { runLogged(task); };
}

// Withdraws calls that the host has not run yet, too.
class ExecutorWaker : public Waker {
 public:
  ExecutorWaker(const ExecutorTaskQueue::Executor& executor, TaskQueue& timers, Task task)
      : task_(std::make_shared<const Task>(logged(std::move(task)))),
        waker_(timers.makeWaker([executor, weak = std::weak_ptr(task_)] {
          executor([weak] {
            if (const auto call = weak.lock()) (*call)();
          });
        })) {}

  void wake() noexcept override { waker_->wake(); }

 private:
  const std::shared_ptr<const Task> task_;
  const std::unique_ptr<Waker> waker_;
};

}  // namespace

ExecutorTaskQueue::ExecutorTaskQueue(Executor executor, std::shared_ptr<TaskQueue> timers)
    : executor_(std::move(executor)), timers_(std::move(timers)) {}

void ExecutorTaskQueue::async(Task task) {
  executor_(logged(std::move(task)));
}

void ExecutorTaskQueue::after(std::chrono::nanoseconds delay, Task task) {
  timers_->after(delay, [executor = executor_, task = logged(std::move(task))] { executor(task); });
}

std::unique_ptr<Waker> ExecutorTaskQueue::makeWaker(Task task) {
  return std::make_unique<ExecutorWaker>(executor_, *timers_, std::move(task));
}

struct PumpedTaskQueue::Waiting {
  Mutex mutex;
  std::deque<Task> tasks LIRVOX_GUARDED_BY(mutex);
};

PumpedTaskQueue::PumpedTaskQueue(std::shared_ptr<TaskQueue> timers)
    : PumpedTaskQueue(std::make_shared<Waiting>(), std::move(timers)) {}

PumpedTaskQueue::PumpedTaskQueue(const std::shared_ptr<Waiting>& waiting,
                                 std::shared_ptr<TaskQueue> timers)
    : ExecutorTaskQueue(
          [waiting](Task task) {
            const MutexLock lock(waiting->mutex);
            waiting->tasks.push_back(std::move(task));
          },
          std::move(timers)),
      waiting_(waiting) {}

std::size_t PumpedTaskQueue::pump() {
  std::deque<Task> due;
  {
    const MutexLock lock(waiting_->mutex);
    due.swap(waiting_->tasks);
  }
  for (const Task& task : due) task();
  return due.size();
}

}  // namespace lirvox::platform
