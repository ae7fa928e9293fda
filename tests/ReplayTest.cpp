// Recordings of any length, or none, in any state; in virtual time.
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ControllerTest.h"

namespace lirvox {
namespace {

using namespace std::chrono_literals;
using Ids = std::vector<std::int32_t>;

class Replay : public test::ControllerTest {
 protected:
  void SetUp() override { lirvox_->setStopNow(false); }

  // Puts the first `bytes` of the song among the resources.
  void ship(std::size_t bytes) {
    test::writeFile(platform_.folder.path("resources/soundLirvox.dat"),
                    {reinterpret_cast<const char*>(song_.data()), bytes});
  }
  // The tracks that the delegate is told of meanwhile; 0 for none found.
  Ids toldIn(std::chrono::nanoseconds time) {
    platform_.scheduler.advance(time);
    Ids ids;
    for (const auto& call : delegate_->takeCalls()) ids.push_back(call.trackId);
    return ids;
  }
};

TEST_F(Replay, AnswersAfterFourSecondsAndListensTwoSecondsLaterIfThereIsADatabase) {
  bool hasDatabase = false;
  for (const auto& [bytes, answer] : {std::pair{0U, 0}, {0U, 0}, {10239U, 0}, {215040U, 7}}) {
    if (bytes > 0) ship(bytes);  // else there is no recording
    lirvox_->startRecognizeFromFile();
    EXPECT_EQ(toldIn(4s - 1ns), Ids());
    EXPECT_TRUE(lirvox_->isRecording());
    EXPECT_EQ(samplesOf(lirvox_->processedBuffer()), answer > 0 ? 21 * 2560U : 0U);
    EXPECT_EQ(toldIn(1ns), Ids{answer}) << bytes;
    EXPECT_EQ(toldIn(3s), Ids());
    EXPECT_EQ(lirvox_->isRecording(), hasDatabase);
    lirvox_->stopRecognize();
    platform_.scheduler.run();
    lirvox_->setStopNow(false);
    if (!std::exchange(hasDatabase, true)) install();
  }
}

TEST_F(Replay, EndsTheLiveCaptureThatRunsAndAnswersBoth) {
  install();
  ship(220500);
  start();
  deliver(other_.data(), other_.size() - 1);
  lirvox_->startRecognizeFromFile();
  EXPECT_EQ(toldIn(0s), Ids{8});
  EXPECT_EQ(toldIn(4s), Ids{7});
  EXPECT_EQ(toldIn(2s), Ids());
  EXPECT_TRUE(lirvox_->isRecording());
}

}  // namespace
}  // namespace lirvox
