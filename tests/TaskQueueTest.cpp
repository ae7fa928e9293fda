// Task queues on real threads, and those of hosts with a loop of their own.
#include <latch>

#include <signal.h>

#include "lib/platform/HostTaskQueues.h"
#include "lib/platform/Platform.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::platform {
namespace {

using namespace std::chrono_literals;

using test::drain;

struct SystemQueues : testing::Test {
  test::TestPlatform platform_;  // for its log
  Platform system_ = systemPlatform();
  // The serial ones, and the concurrent one at the end.
  std::vector<std::shared_ptr<TaskQueue>> queues_{
      system_.mainQueue, system_.makeSerialQueue("lirvox-test"), system_.globalQueue};
};

TEST_F(SystemQueues, RunSerialTasksOneAtATimeAndInOrder) {
  for (const auto& queue : {queues_[0], queues_[1]}) {
    std::vector<int> order;  // without a lock: tasks that overlap would race
    const auto handOver = [&](int first) {
      for (int i = 0; i < 500; ++i)
        queue->async([&order, first, i] { order.push_back(first + i); });
    };
    std::jthread other(handOver, 1000);
    handOver(0);
    other.join();
    drain(*queue);
    EXPECT_EQ(order.size(), 1000U);
    std::stable_partition(order.begin(), order.end(), [](int task) { return task < 1000; });
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  }
}

TEST_F(SystemQueues, RunDelayedTasksWhenTheyAreDueAndLogWhatTheyThrow) {
  for (const auto& queue : {queues_[0], queues_[1]}) {
    std::string order;
    std::promise<void> last;
    const auto start = std::chrono::steady_clock::now();
    queue->after(-1h, [&] { order += 'a'; });
    queue->after(200ms, [&] {
      order += 'c';
      last.set_value();
    });
    queue->after(20ms, [&] {
      order += 'b';
      throw std::runtime_error("too late");
    });
    queue->after(std::chrono::nanoseconds::max(), [&] { order += 'z'; });
    const auto waker = queue->makeWaker([] { throw 7; });
    waker->wake();
    last.get_future().wait();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
    EXPECT_EQ(order, "abc");
  }
  EXPECT_TRUE(platform_.log->has("A task ended with an exception: too late"));
  EXPECT_TRUE(platform_.log->has("A task ended with an unknown exception"));
}

TEST_F(SystemQueues, LeaveSignalsToTheHost) {
  std::promise<bool> blocked;
  system_.globalQueue->async([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocked.set_value(sigismember(&mask, SIGINT) == 1);
  });
  EXPECT_TRUE(blocked.get_future().get());
}

TEST_F(SystemQueues, WakersMissNoLastCall) {
  for (const auto& queue : queues_) {
    struct Shared {
      std::atomic<int> written{0};
      int seen = 0;  // not atomic: a waker's task never runs twice at once
      std::promise<void> sawLast;
    };
    const auto shared = std::make_shared<Shared>();
    const auto waker = queue->makeWaker([shared] {
      const int before = std::exchange(shared->seen, shared->written.load());
      if (before < 2000 && shared->seen == 2000) shared->sawLast.set_value();
    });
    for (int i = 0; i < 2000; ++i) {
      ++shared->written;
      waker->wake();
    }
    shared->sawLast.get_future().wait();
  }
}

TEST_F(SystemQueues, WakersWithdrawTheirCallsWhenDestroyed) {
  for (const auto& queue : {queues_[0], queues_[1]}) {
    std::latch release(1);
    const auto calls = std::make_shared<std::atomic<int>>(0);
    auto waker = queue->makeWaker([calls] { ++*calls; });
    queue->async([&] { release.wait(); });
    waker->wake();
    waker.reset();
    release.count_down();
    while (calls.use_count() > 1) drain(*queue);  // until the task itself is gone
    EXPECT_EQ(*calls, 0);
  }
}

TEST_F(SystemQueues, MayBeDestroyedWithWorkPending) {
  const auto witness = std::make_shared<int>();
  std::unique_ptr<Waker> waker = system_.mainQueue->makeWaker([witness] {});
  for (const auto& queue : queues_) queue->after(1h, [witness] {});
  for (int i = 0; i < 100; ++i) system_.globalQueue->async([witness] {});
  queues_.clear();
  system_ = {};
  waker->wake();
  waker.reset();
  EXPECT_EQ(witness.use_count(), 1);
}

TEST_F(SystemQueues, MayBeDestroyedByTheirOwnTask) {
  for (std::size_t i = 0; i < 30; ++i) {
    Platform system = systemPlatform();
    auto queues = std::make_shared<decltype(queues_)>(decltype(queues_){
        system.mainQueue, system.globalQueue, system.makeSerialQueue("lirvox-test")});
    std::promise<void> gone;
    // The task is left with the last reference.
    queues->at(i % 3)->async([queues, gone = gone.get_future().share()] { gone.wait(); });
    queues.reset();
    system = {};
    gone.set_value();
  }
}

TEST(ExecutorTaskQueue, HandsTasksToTheHostWhenTheyAreDueAndNoException) {
  test::TestPlatform platform;
  std::vector<Task> handed;
  ExecutorTaskQueue queue([&](Task task) { handed.push_back(std::move(task)); },
                          platform.scheduler.queue());
  std::string order;
  const auto runLoopAfter = [&](std::chrono::seconds time) {
    platform.scheduler.advance(time);
    for (const Task& task : std::exchange(handed, {})) task();
    return std::exchange(order, {});
  };
  const auto note = [&](char letter) {
    return [&order, letter] {
      order += letter;
      throw std::runtime_error(std::string("from ") + letter);
    };
  };
  auto waker = queue.makeWaker(note('w'));
  queue.after(2s, note('b'));
  queue.async(note('a'));
  waker->wake();
  EXPECT_EQ(runLoopAfter(1s), "aw");
  EXPECT_EQ(runLoopAfter(1s), "b");
  waker->wake();
  platform.scheduler.run();  // the host has the call, but has not run it
  waker.reset();
  EXPECT_EQ(runLoopAfter(1s), "");
  for (const char* const text : {"from a", "from b", "from w"}) {
    EXPECT_TRUE(platform.log->has(text)) << text;
  }
}

TEST(PumpedTaskQueue, RunsWhatWaitsWhenItIsPumped) {
  test::TestPlatform platform;
  PumpedTaskQueue queue(platform.scheduler.queue());
  std::string order;
  queue.after(1s, [&] { order += 'b'; });
  queue.async([&] {
    order += 'a';
    queue.async([&] { order += 'c'; });
    throw std::runtime_error("bumped");
  });
  platform.scheduler.advance(1s);
  EXPECT_EQ(queue.pump(), 2U);
  EXPECT_EQ(order, "ab");
  EXPECT_EQ(queue.pump(), 1U);
  EXPECT_EQ(order, "abc");
  EXPECT_EQ(queue.pump(), 0U);
}

}  // namespace
}  // namespace lirvox::platform
