// The unit that delivers from memory, on its own thread, with a microphone on top.
#include <condition_variable>
#include <future>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>

#include "lib/audio/LirvoxMicrophone.h"
#include "lib/platform/MemoryAudioUnit.h"

namespace lirvox {
namespace {

using platform::MemoryAudioUnit;

class Collector : public LirvoxMicrophoneAudioDelegate {
 public:
  void hasAudioReceived(LirvoxMicrophone& microphone, float** buffers, std::uint32_t bufferSize,
                        std::uint32_t) override {
    const auto* const samples = reinterpret_cast<const std::int32_t*>(buffers[0]);
    const std::lock_guard lock(mutex_);
    received_.insert(received_.end(), samples, samples + bufferSize);
    largest_ = std::max(largest_, bufferSize);
    if (received_.size() >= stopAt_) microphone.stopFetchingAudio();
    changed_.notify_all();
  }

  bool waitFor(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30),
                             [&] { return received_.size() >= count; });
  }
  std::size_t count() {
    const std::lock_guard lock(mutex_);
    return received_.size();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::int32_t> received_;
  std::uint32_t largest_ = 0;
  std::size_t stopAt_ = std::numeric_limits<std::size_t>::max();
};

class MemoryAudioUnitTest : public testing::Test {
 protected:
  std::shared_ptr<LirvoxMicrophone> microphoneOf(std::size_t samples,
                                                 std::vector<std::uint32_t> sizes) {
    auto ramp = std::make_shared<std::vector<std::int32_t>>(samples);
    std::iota(ramp->begin(), ramp->end(), 1);
    samples_ = ramp;
    platform::Platform installed = platform::systemPlatform();
    installed.makeInputUnit = [this, sizes](platform::AudioStatus&) {
      return std::make_unique<MemoryAudioUnit>(samples_, sizes);
    };
    platform::install(std::move(installed));
    return LirvoxMicrophone::microphoneWithDelegate(collector_);
  }

  MemoryAudioUnit::Samples samples_;
  std::shared_ptr<Collector> collector_ = std::make_shared<Collector>();
};

TEST_F(MemoryAudioUnitTest, DeliversEverySampleOnceHoweverItIsChopped) {
  for (const auto& sizes :
       std::vector<std::vector<std::uint32_t>>{{1024}, {1}, {17, 1000, 3}, {}, {0, 5000}}) {
    collector_ = std::make_shared<Collector>();
    const auto microphone = microphoneOf(5000, sizes);
    microphone->startFetchingAudio();
    ASSERT_TRUE(collector_->waitFor(5000));
    microphone->stopFetchingAudio();
    EXPECT_EQ(collector_->received_, *samples_);
    EXPECT_LE(collector_->largest_, MemoryAudioUnit::maximumFrames);
  }
}

TEST_F(MemoryAudioUnitTest, DeliversNothingAfterStopAndGoesOnWithTheNextSample) {
  const auto microphone = microphoneOf(400000, {7});
  for (std::size_t goal = 1; goal < 300000; goal += 5000) {
    microphone->startFetchingAudio();
    ASSERT_TRUE(collector_->waitFor(std::min(goal, collector_->count() + 1)));
    microphone->stopFetchingAudio();
    const std::size_t stoppedAt = collector_->count();
    std::this_thread::yield();
    ASSERT_EQ(collector_->count(), stoppedAt);
  }
  ASSERT_TRUE(
      std::equal(collector_->received_.begin(), collector_->received_.end(), samples_->begin()));
}

TEST_F(MemoryAudioUnitTest, TheDeliveryThatStopsItIsTheLast) {
  collector_->stopAt_ = 3000;
  const auto microphone = microphoneOf(100000, {1000});
  microphone->startFetchingAudio();
  ASSERT_TRUE(collector_->waitFor(3000));
  microphone->stopFetchingAudio();  // waits for the end of that delivery
  EXPECT_EQ(collector_->count(), 3000U);
}

TEST_F(MemoryAudioUnitTest, MayBeDestroyedWhileItDelivers) {
  for (int i = 0; i < 50; ++i) {
    auto microphone = microphoneOf(100000, {64});
    microphone->startFetchingAudio();
    ASSERT_TRUE(collector_->waitFor(static_cast<std::size_t>(i)));
    microphone.reset();
    const std::size_t destroyedAt = collector_->count();
    std::this_thread::yield();
    ASSERT_EQ(collector_->count(), destroyedAt);
  }
}

// Owns its microphone, and is owned by nobody else once a delivery runs.
class Owner : public LirvoxMicrophoneAudioDelegate {
 public:
  explicit Owner(std::promise<void>& gone)
      : gone_(&gone, [](auto* promise) { promise->set_value(); }) {}

  void hasAudioReceived(LirvoxMicrophone&, float**, std::uint32_t, std::uint32_t) override {
    started.get_future().wait();
    self.reset();
  }

  std::promise<void> started;
  std::shared_ptr<Owner> self;

 private:
  const std::shared_ptr<std::promise<void>> gone_;  // released after the microphone

 public:
  std::shared_ptr<LirvoxMicrophone> microphone;
};

TEST_F(MemoryAudioUnitTest, MayBeDestroyedWithItsDelegateFromInsideADelivery) {
  std::promise<void> gone;
  auto owner = std::make_shared<Owner>(gone);
  owner->microphone = microphoneOf(10, {1});
  owner->microphone->setDelegate(owner);
  owner->self = owner;
  owner->microphone->startFetchingAudio();
  Owner& alive = *owner;
  owner.reset();
  alive.started.set_value();
  EXPECT_EQ(gone.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

}  // namespace
}  // namespace lirvox
