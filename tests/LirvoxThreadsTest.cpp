// The controller with real queues, a real audio thread and hosts that do not wait.
#include <algorithm>
#include <functional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "lib/LirvoxSettings.h"
#include "lib/platform/MemoryAudioUnit.h"
#include "tests/support/ControllerTest.h"

namespace lirvox {
namespace {

using Calls = std::vector<test::RecordedDelegate::Call>;

class ControllerThreads : public test::ControllerTest {
 protected:
  ControllerThreads() {
    platform_.change([this](platform::Platform& services) {
      services.mainQueue = system_.mainQueue;
      services.globalQueue = system_.globalQueue;
      services.makeInputUnit = [this](platform::AudioStatus&) {
        return std::make_unique<platform::MemoryAudioUnit>(
            playing_, std::vector<std::uint32_t>{1024, 7, 300});
      };
    });
    install();
    lirvox_->setRecordingTime(1.5);
  }

  // A little more than a capture needs.
  static platform::MemoryAudioUnit::Samples beginningOf(const std::vector<std::int32_t>& words) {
    return std::make_shared<const std::vector<std::int32_t>>(words.begin(), words.begin() + 18000);
  }

  const platform::Platform system_ = platform::systemPlatform();
  platform::MemoryAudioUnit::Samples playing_ = beginningOf(song_);
};

TEST_F(ControllerThreads, AnswerEveryCaptureThatIsNotCancelled) {
  constexpr std::size_t kCaptures = 15;
  for (std::size_t i = 0; i < kCaptures; ++i) {
    lirvox_->startRecognize();  // while passes before it finish
    while (lirvox_->isRecording()) std::this_thread::yield();
  }
  EXPECT_EQ(delegate_->waitForCalls(kCaptures), Calls(kCaptures, foundSong_));
}

TEST_F(ControllerThreads, SurviveHostsThatCallFromEverywhere) {
  const std::vector<std::function<void()>> calls = {
      [this] { lirvox_->startRecognize(); },
      [this] { lirvox_->stopRecognize(); },
      [this] { lirvox_->setIsRecording(false); },
      [this] { lirvox_->setRecordingTime(1.0); },
      [this] { lirvox_->setMinimumFindedCnt(0); },
      [this] { lirvox_->setDelegate(std::make_shared<test::RecordedDelegate>()); },
      [this] {
        lirvox_->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
      },
      [this] { (void)(lirvox_->isRecording() || lirvox_->stopNow() || lirvox_->shouldStop()); },
      [this] { lirvox_->databaseInfo(); },
      [this] { EXPECT_EQ(samplesOf(lirvox_->processedBuffer()) % 2560, 0U); },
      [this] {
        const auto bytes = lirvox_->bufferAudioData();
        const auto* const played = reinterpret_cast<const std::byte*>(song_.data());
        EXPECT_TRUE(!bytes || std::equal(bytes->begin(), bytes->end(), played));
      },
      [this] { (void)(lirvox_->microphone() && lirvox_->timeStartListening()); },
  };
  {
    std::vector<std::jthread> hosts;
    for (unsigned seed = 1; seed <= 4; ++seed) {
      hosts.emplace_back([&calls, seed] {
        std::minstd_rand random(seed);
        for (int i = 0; i < 150; ++i) calls[random() % calls.size()]();
      });
    }
  }
  // Whatever happened, the next capture works as ever.
  lirvox_->stopRecognize();
  playing_ = beginningOf(other_);
  lirvox_->setDelegate(delegate_);
  lirvox_->startRecognize();
  while (delegate_->waitForCalls(1).back() != foundOther_) delegate_->takeCalls();
}

}  // namespace
}  // namespace lirvox
