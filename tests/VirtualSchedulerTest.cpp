// The virtual time that other tests rely on.
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/TestPlatform.h"
#include "tests/support/VirtualScheduler.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;

TEST(VirtualScheduler, RunsTasksInOrderOfTimeThenOfHandingOver) {
  VirtualScheduler scheduler;
  const auto queue = scheduler.queue();
  std::string order;
  queue->after(2s, [&] { order += 'd'; });
  queue->after(1s, [&] {
    order += 'b';
    queue->async([&] { order += 'c'; });
  });
  queue->async([&] { order += 'a'; });
  EXPECT_EQ(order, "");
  scheduler.run();
  EXPECT_EQ(order, "a");
  scheduler.advance(1999ms);
  EXPECT_EQ(order, "abc");
  scheduler.advance(1ms);
  EXPECT_EQ(order, "abcd");
}

TEST(VirtualScheduler, ShowsATaskTheTimeAtWhichItIsDue) {
  VirtualScheduler scheduler;
  const auto clock = scheduler.clock();
  const auto start = clock->now();
  platform::Clock::Date seen;
  scheduler.queue()->after(3s, [&] { seen = clock->now(); });
  scheduler.advance(10s);
  EXPECT_EQ(seen - start, 3s);
  EXPECT_EQ(clock->now() - start, 10s);
}

TEST(VirtualScheduler, MergesWakeUpsAndForgetsThoseOfADestroyedWaker) {
  VirtualScheduler scheduler;
  int calls = 0;
  auto waker = scheduler.queue()->makeWaker([&] { ++calls; });
  waker->wake();
  waker->wake();
  scheduler.run();
  EXPECT_EQ(calls, 1);
  waker->wake();
  waker.reset();
  scheduler.run();
  EXPECT_EQ(calls, 1);
}

TEST(VirtualScheduler, LogsWhatATaskThrows) {
  TestPlatform platform;
  platform.scheduler.queue()->async([] { throw std::runtime_error("no more sound"); });
  platform.scheduler.run();
  EXPECT_TRUE(platform.log->has("no more sound"));
}

}  // namespace
}  // namespace lirvox::test
