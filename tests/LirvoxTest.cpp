// The controller, in virtual time.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lib/HistoryInfo.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/SqlTrace.h"

namespace lirvox {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::int32_t>;

constexpr std::size_t kBlock = 2560;
constexpr std::size_t kLimit = test::kSamplesOfCapture;

class Controller : public test::ControllerTest {
 protected:
  LirvoxError error_;
};

TEST_F(Controller, StartsNothingWithoutADatabaseFile) {
  EXPECT_FALSE(lirvox_->canRecognize(error_));
  EXPECT_EQ(error_.domain, "Lirvox");
  EXPECT_EQ(error_.code, 201);
  EXPECT_EQ(error_.localizedDescription, "No database file");
  lirvox_->startRecognize();
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog(), "");
  install();
  error_ = {};
  EXPECT_TRUE(lirvox_->canRecognize(error_));
  EXPECT_EQ(error_.code, 0);
}

TEST_F(Controller, RecognizesWhatItHears) {
  install();
  lirvox_->setShouldStop(true);
  lirvox_->setBufferSizeMax(1);
  lirvox_->setBufferSizeEnoughForMiniSpectogram(1);
  start();
  EXPECT_FALSE(lirvox_->shouldStop());
  EXPECT_EQ(lirvox_->bufferSizeMax() + lirvox_->bufferSizeEnoughForMiniSpectogram(), 0U);
  EXPECT_EQ(lirvox_->timeStartListening(), platform_.scheduler.clock()->now());
  platform_.scheduler.advance(5s);
  deliver(song_.data(), kLimit - 1);
  platform_.scheduler.run();
  EXPECT_TRUE(lirvox_->isRecording());
  EXPECT_EQ(unitLog(), "start ");
  deliver(song_.data() + kLimit - 1, 1);
  EXPECT_TRUE(lirvox_->isRecording()) << "the capture ends on the main queue";
  deliver(song_.data(), 10);
  EXPECT_EQ(samplesOf(lirvox_->bufferAudioData()), kLimit + 10);
  platform_.scheduler.run();
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog(), "start stop ");
  EXPECT_EQ(delegate_->calls(), (Calls{{7, 46.4399109F, 51.4399109F}}));
  EXPECT_FALSE(lirvox_->bufferAudioData());
  EXPECT_FALSE(lirvox_->processedBuffer());
}

TEST_F(Controller, AnalysesEachBlockOnceItIsComplete) {
  install();
  start();
  EXPECT_FALSE(lirvox_->bufferAudioData());
  EXPECT_FALSE(lirvox_->shouldProcessBuffer());
  const std::vector<std::pair<std::size_t, std::size_t>> deliveredAndAnalysed = {
      {2559, 0}, {2560, 1}, {2561, 1}, {10239, 3}, {20480, 8}, {55124, 21}};
  std::size_t delivered = 0;
  for (const auto& [upTo, blocks] : deliveredAndAnalysed) {
    deliver(song_.data() + delivered, upTo - delivered);
    delivered = upTo;
    platform_.scheduler.run();
    EXPECT_FALSE(lirvox_->shouldProcessBuffer());
    EXPECT_EQ(samplesOf(lirvox_->processedBuffer()), blocks * kBlock) << upTo;
    EXPECT_EQ(lirvox_->historyInfo()->frameCount0(), blocks == 0 ? 0 : 10 * blocks - 1);
  }
  const auto* const bytes = reinterpret_cast<const std::byte*>(song_.data());
  EXPECT_EQ(lirvox_->bufferAudioData(), std::vector<std::byte>(bytes, bytes + 4 * delivered));
  EXPECT_EQ(lirvox_->processedBuffer(), std::vector<std::byte>(bytes, bytes + 21 * 10240));
}

TEST_F(Controller, FindsTheSameHashesHoweverDeliveriesAreChopped) {
  install();
  test::SqlTrace trace;
  outcomeOf(song_);
  const std::vector<std::string> statement = trace.takeStatements();
  ASSERT_EQ(statement.size(), 1U);
  const std::vector<std::vector<std::size_t>> choppings = {{1},          {1024},     {2560},
                                                           {2561, 0, 3}, {30000, 7}, {10240, 2559}};
  for (const std::vector<std::size_t>& sizes : choppings) {
    start();
    std::size_t next = 0;
    for (std::size_t i = 0; i < kLimit;) {
      const std::size_t size = std::min(sizes[next++ % sizes.size()], kLimit - i);
      deliver(song_.data() + i, size);
      i += size;
      if (next % 3 == 0) platform_.scheduler.run();
    }
    platform_.scheduler.run();
    EXPECT_EQ(trace.takeStatements(), statement);
    EXPECT_EQ(delegate_->takeCalls(), Calls{foundSong_}) << testing::PrintToString(sizes);
  }
}

TEST_F(Controller, HasALazyRecordingTime) {
  const std::vector<std::pair<double, double>> times = {
      {0.0, 5.0}, {-0.0, 5.0}, {2.5, 2.5}, {-1.0, -1.0}};
  for (const auto& [set, read] : times) {
    lirvox_->setRecordingTime(set);
    EXPECT_EQ(lirvox_->recordingTime(), read);
    EXPECT_EQ(lirvox_->recordingTime(), read);
  }
}

TEST_F(Controller, EndsACaptureAtItsRecordingTime) {
  install();
  constexpr double kNever = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<double, std::size_t>> limits = {
      // seconds and samples
      {2.5, 27563},  // 110250 bytes end within a sample
      {1.0 / 11025, 1}, {1e-9, 0}, {-3.0, 0}, {std::nan(""), 0}, {kNever, 60000}, {1e9, 60000}};
  for (const auto& [seconds, samples] : limits) {
    lirvox_->setRecordingTime(seconds);
    start();
    const Words words(std::max<std::size_t>(samples, 1) - 1);
    deliver(words);
    platform_.scheduler.run();
    EXPECT_EQ(lirvox_->isRecording(), samples > 0) << seconds;
    if (lirvox_->isRecording()) deliver(Words(1));
    platform_.scheduler.run();
    EXPECT_EQ(lirvox_->isRecording(), samples == 60000) << seconds;
    lirvox_->stopRecognize();
    platform_.scheduler.run();
  }
}

TEST_F(Controller, CancelsARunningCapture) {
  install();
  test::SqlTrace trace;
  for (const bool analysed : {false, true}) {
    start();
    deliver(song_.data(), kLimit - 1);
    if (analysed) platform_.scheduler.run();
    lirvox_->stopRecognize();
    EXPECT_EQ(unitLog(), "start stop ");
    EXPECT_FALSE(lirvox_->isRecording());
    EXPECT_TRUE(lirvox_->stopNow());
    EXPECT_FALSE(lirvox_->microphone());
    platform_.scheduler.run();
    EXPECT_FALSE(lirvox_->bufferAudioData());
    EXPECT_FALSE(lirvox_->processedBuffer());
    EXPECT_EQ(lirvox_->historyInfo()->frameCount0(), 0);
    script_->calls.clear();
  }
  lirvox_->saveCurrentBufferToFile();
  EXPECT_FALSE(std::filesystem::exists(platform_.folder.path("caches/soundLirvox.dat")));
  EXPECT_EQ(trace.takeStatements(), std::vector<std::string>());
  EXPECT_EQ(delegate_->calls(), Calls());
  EXPECT_EQ(outcomeOf(song_), Calls{foundSong_}) << "nothing of it is left in the next capture";
  EXPECT_FALSE(lirvox_->stopNow());
}

TEST_F(Controller, CannotCancelACaptureThatHasItsLength) {
  install();
  start();
  deliver(song_);
  runUntilLimit();
  lirvox_->stopRecognize();
  EXPECT_FALSE(lirvox_->stopNow());
  EXPECT_TRUE(lirvox_->microphone());
  EXPECT_EQ(unitLog(), "start stop ");
  EXPECT_EQ(delegate_->calls(), Calls());
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls{foundSong_});
}

TEST_F(Controller, IgnoresAStartWhileItRecords) {
  install();
  start();
  const auto microphone = lirvox_->microphone();
  const auto since = lirvox_->timeStartListening();
  deliver(song_.data(), 3000);
  platform_.scheduler.advance(1s);
  lirvox_->startRecognize();
  EXPECT_EQ(lirvox_->microphone(), microphone);
  EXPECT_EQ(lirvox_->timeStartListening(), since);
  EXPECT_EQ(unitLog(), "start ");
  EXPECT_EQ(samplesOf(lirvox_->bufferAudioData()), 3000U);
}

TEST_F(Controller, AnswersACaptureThatTheNextOneOverlaps) {
  install();
  start();
  deliver(song_);
  runUntilLimit();
  const auto before = lirvox_->microphone();
  start();
  float* late[] = {reinterpret_cast<float*>(const_cast<std::int32_t*>(song_.data()))};
  lirvox_->hasAudioReceived(*before, late, 1000, 1);
  EXPECT_FALSE(lirvox_->bufferAudioData());
  deliver(other_.data(), 30000);
  EXPECT_EQ(samplesOf(lirvox_->bufferAudioData()), 30000U);
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->takeCalls(), Calls{foundSong_});
  EXPECT_EQ(samplesOf(lirvox_->bufferAudioData()), 30000U);
  deliver(other_.data() + 30000, kLimit - 30000);
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->takeCalls(), Calls{foundOther_});
  // The pass of a cancelled capture is overlapped just as well.
  start();
  deliver(other_);
  lirvox_->stopRecognize();
  EXPECT_EQ(outcomeOf(song_), Calls{foundSong_});
}

TEST_F(Controller, FindsNothingInSilenceOrWithoutADatabase) {
  install();
  EXPECT_EQ(outcomeOf(Words(kLimit)), Calls{{}});
  lirvox_->setDatabase(nullptr);
  EXPECT_FALSE(lirvox_->databaseInfo());
  EXPECT_EQ(outcomeOf(song_), Calls{{}});
}

TEST_F(Controller, EndsACaptureEarlyWhenIsRecordingIsSetFalse) {
  install();
  start();
  deliver(song_.data(), 40000);
  lirvox_->setIsRecording(false);
  EXPECT_EQ(unitLog(), "start stop ");
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls{foundSong_});
}

TEST_F(Controller, LetsNoInterruptionLeaveTheMicrophoneOn) {
  using Interruption = platform::AudioSessionInterruption;
  const auto post = [](Interruption::Type type) {
    platform::current()->audioSession->postInterruption({type, Interruption::shouldResume});
  };
  install();
  start();
  post(Interruption::Type::began);
  post(Interruption::Type::ended);
  EXPECT_EQ(unitLog(), "start stop start ") << "the capture goes on";
  deliver(song_);
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls{foundSong_});
  post(Interruption::Type::ended);
  platform_.scheduler.run();
  EXPECT_EQ(unitLog(), "start stop start stop start stop ");
}

TEST_F(Controller, DropsACaptureWhenStopNowIsSet) {
  install();
  start();
  deliver(song_.data(), kBlock - 1);
  lirvox_->setStopNow(true);
  platform_.scheduler.run();
  EXPECT_TRUE(lirvox_->bufferAudioData()) << "the pass looks when a block is complete";
  deliver(song_.data(), 1);
  platform_.scheduler.run();
  EXPECT_FALSE(lirvox_->bufferAudioData());
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog(), "start stop ");
  EXPECT_EQ(delegate_->calls(), Calls());
}

TEST_F(Controller, ReplaysARecordingInFourSecondsAndListensTwoLaterIfThereIsADatabase) {
  const struct {
    std::size_t bytes;  // of the song; 0 for no recording
    bool isCancelled;   // nothing is delivered then; the live start takes that back
    Calls told;
  } cases[] = {{0, false, {{}}},
               {0, false, {{}}},
               {10239, false, {{}}},
               {220500, true, {}},
               {215040, false, {{7, 46.4399109F, 50.4399109F}}}};
  for (const auto& [bytes, isCancelled, told] : cases) {
    SCOPED_TRACE(bytes);
    const bool hasDatabase = lirvox_->canRecognize(error_);
    if (bytes > 0) {
      test::writeFile(platform_.folder.path("resources/soundLirvox.dat"),
                      {reinterpret_cast<const char*>(song_.data()), bytes});
    }
    lirvox_->setStopNow(isCancelled);
    lirvox_->startRecognizeFromFile();
    platform_.scheduler.advance(4s - 1ns);
    EXPECT_EQ(samplesOf(lirvox_->processedBuffer()), bytes == 215040 ? 21 * kBlock : 0);
    EXPECT_EQ(delegate_->calls(), Calls());
    platform_.scheduler.advance(1ns);
    EXPECT_EQ(delegate_->takeCalls(), told);
    platform_.scheduler.advance(2s - 1ns);
    EXPECT_FALSE(lirvox_->isRecording());
    platform_.scheduler.advance(1ns);
    EXPECT_EQ(lirvox_->isRecording(), hasDatabase);
    if (hasDatabase) deliver(other_);
    platform_.scheduler.run();
    EXPECT_EQ(delegate_->takeCalls(), hasDatabase ? Calls{foundOther_} : Calls());
    if (!hasDatabase) install();
  }
}

TEST_F(Controller, EndsTheLiveCaptureThatRunsWhenItReplaysAndAnswersBoth) {
  install();
  start();
  deliver(other_.data(), kLimit - 1);
  test::writeFile(platform_.folder.path("resources/soundLirvox.dat"),
                  {reinterpret_cast<const char*>(song_.data()), 4 * kLimit});
  lirvox_->startRecognizeFromFile();
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->takeCalls(), Calls{foundOther_});
  platform_.scheduler.advance(4s);
  EXPECT_EQ(delegate_->takeCalls().at(0).trackId, 7);
  platform_.scheduler.advance(2s);
  EXPECT_TRUE(lirvox_->isRecording());
}

}  // namespace
}  // namespace lirvox
