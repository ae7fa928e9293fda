// The unit that delivers from memory, on its own thread, with a microphone on top.
#include <signal.h>

#include "lib/platform/MemoryAudioUnit.h"
#include "tests/support/SoundRecorder.h"

namespace lirvox::test {
namespace {

using platform::MemoryAudioUnit;
using Sizes = std::vector<std::uint32_t>;

struct MemoryAudioUnitTest : testing::Test {
  std::shared_ptr<LirvoxMicrophone> microphoneOf(const Sizes& sizes) {
    platform::Platform installed = platform::systemPlatform();
    installed.makeInputUnit = [this, sizes](platform::AudioStatus&) {
      return std::make_unique<MemoryAudioUnit>(samples_, sizes);
    };
    platform::install(std::move(installed));
    return LirvoxMicrophone::microphoneWithDelegate(collector_);
  }

  const std::shared_ptr<std::vector<std::int32_t>> samples_ = [] {
    auto ramp = std::make_shared<std::vector<std::int32_t>>(200000);
    std::iota(ramp->begin(), ramp->end(), 1);
    return ramp;
  }();
  std::shared_ptr<SoundRecorder> collector_ = std::make_shared<SoundRecorder>();
};

TEST_F(MemoryAudioUnitTest, DeliversInOrderUntilItIsStoppedOrDestroyed) {
  for (const auto& sizes : {Sizes{17, 1000, 3}, Sizes{7}, Sizes{}, Sizes{0, 5000}}) {
    collector_ = std::make_shared<SoundRecorder>();
    auto microphone = microphoneOf(sizes);
    for (int i = 0; i < 60; ++i) {
      const std::size_t startedAt = collector_->count();
      microphone->startFetchingAudio();
      ASSERT_TRUE(collector_->waitForTotal(std::min(startedAt + 1, samples_->size())));
      if (i == 59) microphone.reset();
      if (microphone) microphone->stopFetchingAudio();
      const std::size_t stoppedAt = collector_->count();
      std::this_thread::yield();
      ASSERT_EQ(collector_->count(), stoppedAt);
    }
    const auto& received = collector_->received;
    EXPECT_TRUE(std::equal(received.begin(), received.end(), samples_->begin()));
  }
}

TEST_F(MemoryAudioUnitTest, LeavesSignalsToTheHost) {
  std::promise<bool> blocked;
  MemoryAudioUnit unit(std::make_shared<std::vector<std::int32_t>>(1));  // one delivery
  unit.setInputCallback([&](auto&&...) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocked.set_value(sigismember(&mask, SIGINT) == 1);
    return platform::audioNoError;
  });
  unit.initialize();
  unit.start();
  EXPECT_TRUE(blocked.get_future().get());
}

TEST_F(MemoryAudioUnitTest, TheDeliveryThatStopsItIsTheLast) {
  collector_->stopsAt = 3000;
  const auto microphone = microphoneOf({1000});
  microphone->startFetchingAudio();
  ASSERT_TRUE(collector_->waitForTotal(3000));
  microphone->stopFetchingAudio();  // waits for the end of that delivery
  EXPECT_EQ(collector_->count(), 3000U);
}

// Owns its microphone, and is owned by nobody else once a delivery runs.
struct Owner : LirvoxMicrophoneAudioDelegate {
  void hasAudioReceived(LirvoxMicrophone&, float**, std::uint32_t, std::uint32_t) override {
    started.wait();
    self.reset();
  }

  std::shared_future<void> started;
  std::shared_ptr<Owner> self;
  std::shared_ptr<void> witness;  // released after the microphone
  std::shared_ptr<LirvoxMicrophone> microphone;
};

TEST_F(MemoryAudioUnitTest, MayBeDestroyedWithItsDelegateFromInsideADelivery) {
  std::promise<void> started;
  std::promise<void> gone;
  auto owner = std::make_shared<Owner>();
  owner->started = started.get_future();
  owner->witness = std::shared_ptr<void>(nullptr, [&](void*) { gone.set_value(); });
  owner->microphone = microphoneOf({1});
  owner->microphone->setDelegate(owner);
  owner->self = owner;
  owner->microphone->startFetchingAudio();
  owner.reset();
  started.set_value();
  EXPECT_EQ(gone.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

}  // namespace
}  // namespace lirvox::test
