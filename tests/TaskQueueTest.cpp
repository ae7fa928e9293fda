// Task queues on real threads, and those of hosts with a loop of their own.
#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>

#include "lib/platform/HostTaskQueues.h"
#include "lib/platform/Platform.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::platform {
namespace {

using namespace std::chrono_literals;

// Waits until all that `queue` was handed before has run.
void drain(TaskQueue& queue) {
  std::promise<void> reached;
  queue.async([&] { reached.set_value(); });
  reached.get_future().wait();
}

class SystemQueues : public testing::Test {
 protected:
  // The serial queues of a system, by name.
  std::vector<std::pair<std::string, std::shared_ptr<TaskQueue>>> serialQueues() const {
    return {{"main", system_.mainQueue}, {"serial", system_.makeSerialQueue("lirvox-test")}};
  }

  test::TestPlatform platform_;  // for its log
  Platform system_ = systemPlatform();
};

TEST_F(SystemQueues, RunSerialTasksOneAtATimeAndInOrder) {
  for (const auto& [name, queue] : serialQueues()) {
    std::vector<std::vector<int>> order(3);
    int running = 0;  // not atomic: tasks that overlap would race
    {
      std::vector<std::jthread> threads;
      for (std::vector<int>& ofThread : order) {
        threads.emplace_back([&ofThread, &running, &queue = *queue] {
          for (int i = 0; i < 500; ++i) {
            queue.async([&ofThread, &running, i] {
              EXPECT_EQ(++running, 1);
              ofThread.push_back(i);
              --running;
            });
          }
        });
      }
    }
    drain(*queue);
    for (const std::vector<int>& ofThread : order) {
      ASSERT_EQ(ofThread.size(), 500U) << name;
      EXPECT_TRUE(std::is_sorted(ofThread.begin(), ofThread.end())) << name;
    }
  }
}

TEST_F(SystemQueues, RunGlobalTasksSideBySide) {
  const auto both = std::make_shared<std::latch>(2);
  std::promise<void> met;
  system_.globalQueue->async([both] { both->arrive_and_wait(); });
  system_.globalQueue->async([both, &met] {
    both->arrive_and_wait();
    met.set_value();
  });
  met.get_future().wait();
}

TEST_F(SystemQueues, RunDelayedTasksWhenTheyAreDue) {
  for (const auto& [name, queue] : serialQueues()) {
    std::string order;
    std::promise<void> last;
    const auto start = std::chrono::steady_clock::now();
    queue->after(40ms, [&] {
      order += 'c';
      last.set_value();
    });
    queue->after(20ms, [&] { order += 'b'; });
    queue->after(-1h, [&] { order += 'a'; });
    queue->after(std::chrono::nanoseconds::max(), [&] { order += 'z'; });
    last.get_future().wait();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 40ms);
    EXPECT_EQ(order, "abc") << name;
  }
}

TEST_F(SystemQueues, LogWhatTasksThrowAndGoOn) {
  for (const auto& [name, queue] : serialQueues()) {
    queue->async([] { throw std::runtime_error("out of tape"); });
    queue->async([] { throw 7; });
    const auto waker = queue->makeWaker([] { throw std::runtime_error("woken too early"); });
    waker->wake();
    drain(*queue);
    std::promise<void> waited;
    queue->after(1ms, [&] { waited.set_value(); });
    waited.get_future().wait();
    EXPECT_TRUE(platform_.log->has("A task ended with an exception: out of tape")) << name;
    EXPECT_TRUE(platform_.log->has("A task ended with an unknown exception")) << name;
  }
}

TEST_F(SystemQueues, LeaveSignalsToTheHost) {
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  std::promise<bool> blocked;
  system_.globalQueue->async([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocked.set_value(sigismember(&mask, SIGINT) == 1 && sigismember(&mask, SIGALRM) == 1);
  });
  EXPECT_TRUE(blocked.get_future().get());
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&after, SIGINT), sigismember(&before, SIGINT));
}

TEST_F(SystemQueues, WakersMissNoLastCall) {
  auto queues = serialQueues();
  queues.emplace_back("global", system_.globalQueue);
  for (const auto& [name, queue] : queues) {
    constexpr int kCalls = 2000;
    struct Shared {
      std::atomic<int> written{0};
      std::atomic<int> runs{0};
      int seen = 0;  // not atomic: a waker's task never runs twice at once
      std::promise<void> sawLast;
    };
    const auto shared = std::make_shared<Shared>();
    const auto waker = queue->makeWaker([shared] {
      ++shared->runs;
      const bool done = shared->seen == kCalls;
      shared->seen = shared->written;
      if (!done && shared->seen == kCalls) shared->sawLast.set_value();
    });
    std::jthread audio([&] {
      for (int i = 0; i < kCalls; ++i) {
        ++shared->written;
        waker->wake();
      }
    });
    shared->sawLast.get_future().wait();
    audio.join();
    EXPECT_LE(shared->runs, kCalls) << name;
  }
}

TEST_F(SystemQueues, WakersWithdrawTheirCallsWhenDestroyed) {
  for (const auto& [name, queue] : serialQueues()) {
    std::latch release(1);
    const auto calls = std::make_shared<std::atomic<int>>(0);
    auto waker = queue->makeWaker([calls] { ++*calls; });
    queue->async([&] { release.wait(); });
    waker->wake();
    waker.reset();
    release.count_down();
    while (calls.use_count() > 1) drain(*queue);  // until the task itself is gone
    EXPECT_EQ(*calls, 0) << name;
  }
}

TEST_F(SystemQueues, MayBeDestroyedWithWorkPending) {
  const auto witness = std::make_shared<int>();
  std::unique_ptr<Waker> waker = system_.mainQueue->makeWaker([witness] {});
  system_.mainQueue->after(1h, [witness] {});
  system_.globalQueue->after(1h, [witness] {});
  for (int i = 0; i < 100; ++i) system_.globalQueue->async([witness] {});
  waker->wake();
  system_ = {};
  waker->wake();
  waker.reset();
  EXPECT_EQ(witness.use_count(), 1);
}

TEST_F(SystemQueues, MayBeDestroyedByTheirOwnTask) {
  for (std::size_t i = 0; i < 30; ++i) {
    system_ = systemPlatform();
    using Queues = std::vector<std::shared_ptr<TaskQueue>>;
    auto queues = std::make_shared<Queues>(
        Queues{system_.mainQueue, system_.globalQueue, system_.makeSerialQueue("lirvox-test")});
    std::promise<void> gone;
    // The task is left with the last reference.
    queues->at(i % 3)->async([queues, gone = gone.get_future().share()] { gone.wait(); });
    queues.reset();
    system_ = {};
    gone.set_value();
  }
}

// What a host's loop does.
class HostLoop {
 public:
  void run() {
    for (std::size_t i = 0; i < tasks_.size(); ++i) tasks_[i]();
    tasks_.clear();
  }
  ExecutorTaskQueue::Executor executor() {
    return [this](Task task) { tasks_.push_back(std::move(task)); };
  }

 private:
  std::vector<Task> tasks_;
};

TEST(ExecutorTaskQueue, HandsTasksToTheHostWhenTheyAreDue) {
  test::TestPlatform platform;
  HostLoop loop;
  ExecutorTaskQueue queue(loop.executor(), platform.scheduler.queue());
  std::string order;
  auto waker = queue.makeWaker([&] { order += 'w'; });
  queue.after(2s, [&] { order += 'b'; });
  queue.async([&] { order += 'a'; });
  waker->wake();
  platform.scheduler.advance(1s);
  EXPECT_EQ(order, "");
  loop.run();
  EXPECT_EQ(order, "aw");
  platform.scheduler.advance(1s);
  loop.run();
  EXPECT_EQ(order, "awb");
}

TEST(ExecutorTaskQueue, LetsNoExceptionIntoTheHost) {
  test::TestPlatform platform;
  HostLoop loop;
  ExecutorTaskQueue queue(loop.executor(), platform.scheduler.queue());
  const auto waker = queue.makeWaker([] { throw std::runtime_error("from a waker"); });
  waker->wake();
  queue.after(1s, [] { throw std::runtime_error("from a timer"); });
  queue.async([] { throw std::runtime_error("from a task"); });
  platform.scheduler.advance(1s);
  EXPECT_NO_THROW(loop.run());
  for (const char* const text : {"from a task", "from a timer", "from a waker"}) {
    EXPECT_TRUE(platform.log->has(text)) << text;
  }
}

TEST(ExecutorTaskQueue, WithdrawsTheCallsOfADestroyedWaker) {
  test::TestPlatform platform;
  HostLoop loop;
  ExecutorTaskQueue queue(loop.executor(), platform.scheduler.queue());
  int calls = 0;
  auto waker = queue.makeWaker([&] { ++calls; });
  waker->wake();
  platform.scheduler.run();  // the host has the call, but has not run it
  waker.reset();
  loop.run();
  EXPECT_EQ(calls, 0);
}

TEST(PumpedTaskQueue, RunsTasksOnTheThreadThatPumps) {
  test::TestPlatform platform;
  PumpedTaskQueue queue(platform.scheduler.queue());
  std::string order;
  std::jthread([&] { queue.async([&] { order += 'a'; }); }).join();
  queue.async([&] {
    order += 'b';
    queue.async([&] { order += 'd'; });
    throw std::runtime_error("bumped");
  });
  queue.after(1s, [&] { order += 'c'; });
  EXPECT_EQ(queue.pump(), 2U);
  EXPECT_EQ(order, "ab");
  platform.scheduler.advance(1s);
  EXPECT_EQ(queue.pump(), 2U);
  EXPECT_EQ(order, "abdc");
  EXPECT_EQ(queue.pump(), 0U);
  EXPECT_TRUE(platform.log->has("bumped"));
}

}  // namespace
}  // namespace lirvox::platform
