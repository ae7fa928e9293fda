// Memory: who must not ask for any, and what happens when there is none.
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "lib/HistoryInfo.h"
#include "tests/support/ControllerTest.h"

namespace {

thread_local std::size_t allocations = 0;
thread_local std::size_t largestGranted = std::numeric_limits<std::size_t>::max();

}  // namespace

// Compilers that see through these would warn of what they are made of.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return size > largestGranted ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  return memory ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace lirvox {
namespace {

using Calls = std::vector<test::RecordedDelegate::Call>;

// While it lives, this thread gets no more than some bytes at a time.
class Shortage {
 public:
  explicit Shortage(std::size_t size) { largestGranted = size; }
  ~Shortage() { largestGranted = std::numeric_limits<std::size_t>::max(); }
};

class Allocation : public test::ControllerTest {};

TEST_F(Allocation, IsNoneOnTheAudioThread) {
  const platform::Platform system = platform::systemPlatform();  // for its real wakers
  platform_.change([&](platform::Platform& services) {
    services.mainQueue = system.mainQueue;
    services.globalQueue = system.globalQueue;
  });
  install();
  start();
  const std::size_t before = allocations;
  for (std::size_t i = 0; i < song_.size(); i += 1125) deliver(song_.data() + i, 1125);
  EXPECT_EQ(allocations, before);
  delegate_->waitForCalls(1);
}

TEST_F(Allocation, IsNoneForATransform) {
  const std::vector<double> frame(512, 1.0);
  const std::size_t before = allocations;
  lirvox_->fft()->fft(frame.data(), 9);
  EXPECT_EQ(allocations, before);
}

TEST_F(Allocation, FailingInThePassEndsTheCaptureWithAnAnswer) {
  install();
  start();
  deliver(song_.data(), 2560);
  {
    const Shortage shortage(10000);
    platform_.scheduler.run();
  }
  EXPECT_EQ(delegate_->takeCalls(), Calls{{}});
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog_, "start stop ");
  start();
  deliver(song_);
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls{foundSong_});
}

TEST_F(Allocation, FailingInALookupIsAnswered) {
  install();
  start();
  deliver(song_.data(), song_.size() - 1);
  platform_.scheduler.run();
  deliver(song_.data(), 1);
  {
    const Shortage shortage(10000);
    platform_.scheduler.run();
  }
  EXPECT_EQ(delegate_->takeCalls(), Calls{{}});
  EXPECT_EQ(lirvox_->historyInfo()->frameCount0(), 0);
}

TEST_F(Allocation, FailingForACopyLeavesTheCaptureAlone) {
  install();
  start();
  deliver(song_.data(), 50000);
  {
    const Shortage shortage(10000);
    EXPECT_THROW(lirvox_->bufferAudioData(), std::bad_alloc);
  }
  lirvox_->stopRecognize();
  platform_.scheduler.run();
  start();
  EXPECT_FALSE(lirvox_->bufferAudioData());
}

}  // namespace
}  // namespace lirvox
