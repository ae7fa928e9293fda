// Captures and replays while memory, queues, timers and the sound of the system fail.
#include "lib/audio/LirvoxAudioUtilities.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/Faults.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;

struct ControllerFaults : ControllerTest {
  static constexpr std::size_t kSamples = 16538;  // of 1.5 s

  ControllerFaults() {
    LirvoxAudioUtilities::shouldExitOnCheckResultFail = false;
    install();
    lirvox_->setRecordingTime(1.5);
    lirvox_->setStopNow(false);
    bundleRecording(4 * kSamples);
  }
  ~ControllerFaults() override { LirvoxAudioUtilities::shouldExitOnCheckResultFail = true; }

  void listen() {
    lirvox_->startRecognize();
    if (lirvox_->isRecording()) deliver(song_.data(), kSamples);
    platform_.scheduler.run();
  }
  // Told once, if anybody can be told without memory, and idle; what comes next works as ever.
  void checkAnswered(Failing failing = Failing::once) {
    const std::size_t told = delegate_->takeCalls().size();
    EXPECT_TRUE(told == 1 || (told == 0 && failing == Failing::onwards)) << told;
    EXPECT_FALSE(lirvox_->isRecording());
    EXPECT_FALSE(lirvox_->bufferAudioData());
    EXPECT_FALSE(platform_.scheduler.runOne());
    listen();
    EXPECT_EQ(delegate_->takeCalls(), Calls{foundSong_});
  }
};

TEST_F(ControllerFaults, EveryCaptureIsAnsweredAndTheNextOneWorks) {
  testing::internal::CaptureStderr();
  for (const Failing failing : {Failing::once, Failing::onwards}) {
    EXPECT_GT(failEach(
                  failing, [this] { listen(); }, [&] { checkAnswered(failing); }),
              100);
  }
  EXPECT_NE(testing::internal::GetCapturedStderr().find("Error: "), std::string::npos);
}

TEST_F(ControllerFaults, EveryReplayIsAnsweredAndTheNextCaptureWorks) {
  testing::internal::CaptureStderr();
  EXPECT_GT(failEach(
                Failing::once,
                [this] {
                  lirvox_->startRecognizeFromFile();
                  platform_.scheduler.advance(4s);
                },
                [this] {
                  checkAnswered();
                  platform_.scheduler.advance(2s);  // the live start that follows a replay
                  cancel();
                  lirvox_->setStopNow(false);
                }),
            100);
  testing::internal::GetCapturedStderr();
}

TEST_F(ControllerFaults, ACopyThatFailsLeavesTheCaptureAlone) {
  start();
  deliver(song_.data(), 5000);
  bool isCopied = false;
  const auto copy = [&] {
    isCopied = false;
    try {
      isCopied = lirvox_->bufferAudioData().has_value();
    } catch (const std::bad_alloc&) {
    }
  };
  EXPECT_GT(failEach(Failing::once, copy, [] {}), 0);
  EXPECT_TRUE(isCopied);
  cancel();
  EXPECT_FALSE(lirvox_->bufferAudioData());
}

}  // namespace
}  // namespace lirvox::test
