// Recordings of any length, or none, in any state; in virtual time.
#include <filesystem>
#include <fstream>
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

  // Puts the first `bytes` of samples among the resources.
  void ship(const std::vector<std::int32_t>& words, std::size_t bytes) {
    std::filesystem::create_directories(platform_.folder.path("resources"));
    std::ofstream(recording_, std::ios::binary)
        .write(reinterpret_cast<const char*>(words.data()), static_cast<std::streamsize>(bytes));
  }
  void advance(std::chrono::nanoseconds time) { platform_.scheduler.advance(time); }

  // The tracks that the delegate was told of; 0 for none found.
  Ids told() {
    Ids ids;
    for (const auto& call : delegate_->takeCalls()) ids.push_back(call.trackId);
    return ids;
  }

  const std::filesystem::path recording_ = platform_.folder.path("resources/soundLirvox.dat");
};

TEST_F(Replay, AnswersAfterFourSecondsAndListensTwoSecondsLater) {
  struct Case {
    std::size_t bytes;
    std::size_t analysedBytes;
    Ids told;
  };
  install();
  for (const auto& [bytes, analysedBytes, answer] :
       {Case{0, 0, {0}}, Case{10239, 0, {0}}, Case{10240, 10240, {0}},
        Case{220500, 21 * 10240, {7}}, Case{220500 - 5460, 21 * 10240, {7}}}) {
    if (bytes > 0) ship(song_, bytes);  // else there is no recording
    lirvox_->startRecognizeFromFile();
    EXPECT_TRUE(lirvox_->isRecording());
    advance(4s - 1ns);
    EXPECT_EQ(lirvox_->processedBuffer().value_or(std::vector<std::byte>()).size(), analysedBytes);
    EXPECT_TRUE(lirvox_->isRecording());
    EXPECT_EQ(told(), Ids());
    advance(1ns);
    EXPECT_FALSE(lirvox_->isRecording());
    EXPECT_EQ(told(), answer) << bytes;
    advance(2s - 1ns);
    EXPECT_EQ(unitLog_, "") << "the replay leaves the microphone alone";
    advance(1ns);
    EXPECT_EQ(unitLog_, "start ");
    EXPECT_TRUE(lirvox_->isRecording());
    lirvox_->stopRecognize();
    platform_.scheduler.run();
    lirvox_->setStopNow(false);
    unitLog_.clear();
  }
}

TEST_F(Replay, EndsTheLiveCaptureThatRunsAndAnswersBoth) {
  install();
  ship(song_, 220500);
  start();
  deliver(other_.data(), other_.size() - 1);
  lirvox_->startRecognizeFromFile();
  advance(0s);
  EXPECT_EQ(told(), Ids{8});
  advance(4s);
  EXPECT_EQ(told(), Ids{7});
  advance(2s);
  EXPECT_TRUE(lirvox_->isRecording());
}

TEST_F(Replay, WithoutADatabaseFindsNothingAndDoesNotListen) {
  ship(song_, 220500);
  lirvox_->startRecognizeFromFile();
  advance(10s);
  EXPECT_EQ(told(), Ids{0});
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog_, "");
}

}  // namespace
}  // namespace lirvox
