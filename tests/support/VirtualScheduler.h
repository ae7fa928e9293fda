// Task queues and a clock in virtual time.
#pragma once

#include "Faults.h"
#include "lib/platform/Clock.h"
#include "lib/platform/RunTask.h"
#include "lib/platform/TaskQueue.h"

namespace lirvox::test {

class VirtualWaker : public platform::Waker {
 public:
  VirtualWaker(std::weak_ptr<platform::TaskQueue> queue, platform::Task task)
      : queue_(std::move(queue)), task_(std::make_shared<platform::Task>(std::move(task))) {}

  void wake() noexcept override {
    const auto queue = queue_.lock();
    if (!queue || pending_->exchange(true)) return;
    const FaultsPaused real;  // wakers take no memory
    queue->async([weak = std::weak_ptr(task_), pending = pending_] {
      *pending = false;
      if (const auto task = weak.lock()) (*task)();
    });
  }

 private:
  const std::weak_ptr<platform::TaskQueue> queue_;
  const std::shared_ptr<platform::Task> task_;
  const std::shared_ptr<std::atomic<bool>> pending_ = std::make_shared<std::atomic<bool>>(false);
};

/// Runs tasks in the order of their times, equal times in the order in which they were handed over.
class VirtualQueue : public platform::TaskQueue, public std::enable_shared_from_this<VirtualQueue> {
 public:
  using nanoseconds = std::chrono::nanoseconds;

  void async(platform::Task task) override { after(nanoseconds::zero(), std::move(task)); }

  void after(nanoseconds delay, platform::Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.emplace(std::pair(now_ + std::max(delay, nanoseconds::zero()), handedOver_++),
                   std::move(task));
  }

  std::unique_ptr<platform::Waker> makeWaker(platform::Task task) override {
    return std::make_unique<VirtualWaker>(weak_from_this(), std::move(task));
  }

  nanoseconds now() const {
    const std::lock_guard lock(mutex_);
    return now_;
  }
  void setNow(nanoseconds now) {
    const std::lock_guard lock(mutex_);
    now_ = now;
  }

  // Runs the first task that is due by `end`, at its moment.
  bool runOneUntil(nanoseconds end) {
    platform::Task task;
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

 private:
  mutable std::mutex mutex_;
  // Guarded by mutex_.
  nanoseconds now_{0};
  std::uint64_t handedOver_ = 0;
  std::map<std::pair<nanoseconds, std::uint64_t>, platform::Task> tasks_;
};

/// Shows the time of a queue. It starts at 2001-09-09 01:46:40 UTC.
class VirtualClock : public platform::Clock {
 public:
  explicit VirtualClock(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}
  Date now() const override {
    return Date(std::chrono::seconds(1'000'000'000)) +
           std::chrono::duration_cast<Date::duration>(queue_->now());
  }

 private:
  const std::shared_ptr<VirtualQueue> queue_;
};

/// Runs tasks on the thread of the test, and only when the test says so. Tasks may be handed over,
/// and wakers woken, by any thread.
class VirtualScheduler {
 public:
  /// A serial queue. It may be used for every queue of a platform.
  std::shared_ptr<platform::TaskQueue> queue() const { return queue_; }
  std::shared_ptr<platform::Clock> clock() const { return std::make_shared<VirtualClock>(queue_); }

  /// Runs the next task that is due; false when there is none.
  bool runOne() { return queue_->runOneUntil(queue_->now()); }
  /// Runs tasks until none is due now, those that they hand over included.
  void run() {
    while (runOne()) continue;
  }
  /// Lets `time` pass, running each task at its moment.
  void advance(std::chrono::nanoseconds time) {
    const auto end = queue_->now() + time;
    while (queue_->runOneUntil(end)) continue;
    queue_->setNow(end);
  }

 private:
  const std::shared_ptr<VirtualQueue> queue_ = std::make_shared<VirtualQueue>();
};

}  // namespace lirvox::test
