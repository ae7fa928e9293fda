// Task queues on threads of the library's own, over standalone Asio.
#include "lib/platform/linux/AsioTaskQueues.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <asio.hpp>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "lib/platform/BlockedSignals.h"
#include "lib/platform/RunTask.h"

namespace lirvox::platform {
namespace {

// An event loop with the threads that run it.
class Threads {
 public:
  Threads(std::string name, unsigned count) : name_(std::move(name)), count_(count) {}

  ~Threads() {
    context_->stop();
    for (std::thread& thread : threads_) {
      // The last owner of a queue may be a task that runs on it. That thread keeps the
      // loop until it has left it.
      if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
      } else {
        thread.join();
      }
    }
  }

  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

  // Starts no thread.
  asio::io_context::executor_type executor() { return context_->get_executor(); }

  asio::io_context& context() {
    std::call_once(started_, [this] { start(); });
    return *context_;
  }

 private:
  void start() {
    const BlockedSignals quiet;
    const std::string name = name_.substr(0, 15);
    threads_.reserve(count_);
    // One thread is enough to go on with; without any, the next use tries again.
    while (threads_.size() < count_) {
      try {
        threads_.emplace_back([context = context_] { run(*context); });
      } catch (const std::system_error&) {
        if (threads_.empty()) throw;
        return;
      }
      pthread_setname_np(threads_.back().native_handle(), name.c_str());
    }
  }

  // Tasks throw nothing, but the loop itself may run out of memory between two of them.
  static void run(asio::io_context& context) {
    while (!runLogged([&] { context.run(); })) continue;
  }

  const std::string name_;
  const unsigned count_;
  std::once_flag started_;
  const std::shared_ptr<asio::io_context> context_ = std::make_shared<asio::io_context>();
  asio::executor_work_guard<asio::io_context::executor_type> keepRunning_ =
      asio::make_work_guard(*context_);
  std::vector<std::thread> threads_;
};

// The part of a waker that outlives it while an operation of the event loop is under way.
class EventDescriptor : public std::enable_shared_from_this<EventDescriptor> {
 public:
  EventDescriptor(asio::io_context& context, Task task)
      : descriptor_(context, makeEventDescriptor()), task_(std::move(task)) {}

  void signal() noexcept {
    const std::uint64_t one = 1;
    // Fails only when the counter would overflow, and then the task is due anyway.
    [[maybe_unused]] const auto written = ::write(descriptor_.native_handle(), &one, sizeof one);
  }

  template <typename Executor>
  void waitOn(Executor executor) {
    descriptor_.async_wait(
        asio::posix::stream_descriptor::wait_read,
        asio::bind_executor(executor, [self = shared_from_this(), executor](std::error_code error) {
          if (error || self->withdrawn_.load()) return;
          std::uint64_t count = 0;
          if (::read(self->descriptor_.native_handle(), &count, sizeof count) > 0) {
            runLogged(self->task_);
          }
          if (!self->withdrawn_.load()) self->waitOn(executor);
        }));
  }

  // The signal ends the wait that is under way, or the next one if none is.
  void withdraw() {
    withdrawn_.store(true);
    signal();
  }

 private:
  static int makeEventDescriptor() {
    const int descriptor = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    return descriptor;
  }

  asio::posix::stream_descriptor descriptor_;
  const Task task_;
  std::atomic<bool> withdrawn_{false};
};

class EventWaker : public Waker {
 public:
  EventWaker(std::shared_ptr<Threads> threads, std::shared_ptr<EventDescriptor> event)
      : threads_(std::move(threads)), event_(std::move(event)) {}
  ~EventWaker() override { event_->withdraw(); }

  void wake() noexcept override { event_->signal(); }

 private:
  const std::shared_ptr<Threads> threads_;
  const std::shared_ptr<EventDescriptor> event_;
};

// One queue class for both kinds: `Executor` is the loop's own or a strand over it.
template <typename Executor>
class AsioQueue : public TaskQueue {
 public:
  AsioQueue(std::shared_ptr<Threads> threads, Executor executor)
      : threads_(std::move(threads)), executor_(std::move(executor)) {}

  void async(Task task) override {
    threads_->context();
    asio::post(executor_, [task = std::move(task)] { runLogged(task); });
  }

  void after(std::chrono::nanoseconds delay, Task task) override {
    auto timer = std::make_shared<asio::steady_timer>(threads_->context(), delay);
    timer->async_wait(
        asio::bind_executor(executor_, [timer, task = std::move(task)](std::error_code error) {
          if (!error) runLogged(task);
        }));
  }

  std::unique_ptr<Waker> makeWaker(Task task) override {
    auto event = std::make_shared<EventDescriptor>(threads_->context(), std::move(task));
    event->waitOn(executor_);
    return std::make_unique<EventWaker>(threads_, std::move(event));
  }

  const std::shared_ptr<Threads>& threads() const { return threads_; }

 private:
  const std::shared_ptr<Threads> threads_;
  const Executor executor_;
};

using ThreadedQueue = AsioQueue<asio::io_context::executor_type>;

}  // namespace

std::shared_ptr<TaskQueue> makeThreadedQueue(const std::string& name, unsigned threads) {
  auto shared = std::make_shared<Threads>(name, threads);
  return std::make_shared<ThreadedQueue>(shared, shared->executor());
}

std::shared_ptr<TaskQueue> makeSerialQueueOn(const std::shared_ptr<TaskQueue>& pool) {
  const auto& threads = dynamic_cast<ThreadedQueue&>(*pool).threads();
  auto strand = asio::make_strand(threads->executor());
  return std::make_shared<AsioQueue<decltype(strand)>>(threads, strand);
}

}  // namespace lirvox::platform
