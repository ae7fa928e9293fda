// Task queues and a clock in virtual time.
#include "tests/support/VirtualScheduler.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "lib/platform/RunTask.h"
#include "tests/support/Faults.h"

namespace lirvox::test {

using platform::Task;
using std::chrono::nanoseconds;

class VirtualScheduler::VirtualWaker : public platform::Waker {
 public:
  VirtualWaker(std::weak_ptr<platform::TaskQueue> queue, Task task)
      : queue_(std::move(queue)), wakeUp_(std::make_shared<WakeUp>()) {
    wakeUp_->task = std::move(task);
  }

  void wake() noexcept override {
    const auto queue = queue_.lock();
    if (!queue || wakeUp_->pending.exchange(true)) return;
    const FaultsPaused real;  // wakers take no memory
    queue->async([weak = std::weak_ptr(wakeUp_)] {
      const auto wakeUp = weak.lock();
      if (!wakeUp) return;
      wakeUp->pending = false;
      wakeUp->task();
    });
  }

 private:
  struct WakeUp {
    Task task;
    std::atomic<bool> pending{false};
  };

  const std::weak_ptr<platform::TaskQueue> queue_;
  const std::shared_ptr<WakeUp> wakeUp_;
};

class VirtualScheduler::Queue : public platform::TaskQueue,
                                public std::enable_shared_from_this<Queue> {
 public:
  void async(Task task) override { after(nanoseconds::zero(), std::move(task)); }

  void after(nanoseconds delay, Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.emplace(std::pair(now_ + std::max(delay, nanoseconds::zero()), handedOver_++),
                   std::move(task));
  }

  std::unique_ptr<platform::Waker> makeWaker(Task task) override {
    return std::make_unique<VirtualWaker>(weak_from_this(), std::move(task));
  }

  nanoseconds now() const {
    const std::lock_guard lock(mutex_);
    return now_;
  }

  // Runs the first task that is due by `end`, at its moment.
  bool runOneUntil(nanoseconds end) {
    Task task;
    {
      const std::lock_guard lock(mutex_);
      const auto first = tasks_.begin();
      if (first == tasks_.end() || first->first.first > end) return false;
      now_ = first->first.first;
      task = std::move(first->second);
      tasks_.erase(first);
    }
    platform::runLogged(task);
    return true;
  }

  void setNow(nanoseconds now) {
    const std::lock_guard lock(mutex_);
    now_ = now;
  }

 private:
  mutable std::mutex mutex_;
  // Guarded by mutex_.
  nanoseconds now_{0};
  std::uint64_t handedOver_ = 0;
  std::map<std::pair<nanoseconds, std::uint64_t>, Task> tasks_;
};

class VirtualScheduler::VirtualClock : public platform::Clock {
 public:
  explicit VirtualClock(std::shared_ptr<Queue> queue) : queue_(std::move(queue)) {}
  Date now() const override {
    return Date(std::chrono::seconds(1'000'000'000)) +
           std::chrono::duration_cast<Date::duration>(queue_->now());
  }

 private:
  const std::shared_ptr<Queue> queue_;
};

VirtualScheduler::VirtualScheduler() : queue_(std::make_shared<Queue>()) {}

std::shared_ptr<platform::TaskQueue> VirtualScheduler::queue() const {
  return queue_;
}

std::shared_ptr<platform::Clock> VirtualScheduler::clock() const {
  return std::make_shared<VirtualClock>(queue_);
}

bool VirtualScheduler::runOne() {
  return queue_->runOneUntil(queue_->now());
}

void VirtualScheduler::run() {
  while (runOne()) continue;
}

void VirtualScheduler::advance(nanoseconds time) {
  const nanoseconds end = queue_->now() + time;
  while (queue_->runOneUntil(end)) continue;
  queue_->setNow(end);
}

}  // namespace lirvox::test
