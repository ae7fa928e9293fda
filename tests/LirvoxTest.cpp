// The controller, in virtual time.
#include "lib/HistoryInfo.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/SqlTrace.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::int32_t>;

constexpr std::size_t kBlock = 2560;

TEST_F(ControllerTest, StartsNothingWithoutADatabaseFile) {
  LirvoxError error;
  EXPECT_FALSE(lirvox_->canRecognize(error));
  EXPECT_EQ(error.domain, "Lirvox");
  EXPECT_EQ(error.code, 201);
  EXPECT_EQ(error.localizedDescription, "No database file");
  lirvox_->startRecognize();
  EXPECT_FALSE(lirvox_->isRecording());
  EXPECT_EQ(unitLog(), "");
}

TEST_F(ControllerTest, RecognizesWhatItHears) {
  install();
  lirvox_->setShouldStop(true);
  lirvox_->setBufferSizeMax(1);
  lirvox_->setBufferSizeEnoughForMiniSpectogram(1);
  start();
  EXPECT_FALSE(lirvox_->shouldStop());
  EXPECT_EQ(lirvox_->bufferSizeMax() + lirvox_->bufferSizeEnoughForMiniSpectogram(), 0U);
  EXPECT_EQ(lirvox_->timeStartListening(), platform_.scheduler.clock()->now());
  platform_.scheduler.advance(5s);
  lirvox_->startRecognize();  // is ignored while it records
  deliver(song_.data(), kLimit - 1);
  lirvox_->startRecognize();
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

TEST_F(ControllerTest, AnalysesEachBlockOnceItIsComplete) {
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

TEST_F(ControllerTest, FindsTheSameHashesHoweverDeliveriesAreChopped) {
  install();
  SqlTrace trace;
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

TEST_F(ControllerTest, EndsACaptureAtItsRecordingTime) {
  install();
  constexpr double kNever = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<double, std::size_t>> limits = {
      // seconds and samples
      {2.5, 27563},  // 110250 bytes end within a sample
      {0.0, kLimit}, {-0.0, kLimit},    {1.0 / 11025, 1}, {1e-9, 0},
      {-3.0, 0},     {std::nan(""), 0}, {kNever, 60000},  {1e9, 60000}};
  for (const auto& [seconds, samples] : limits) {
    lirvox_->setRecordingTime(seconds);
    start();
    outcomeAfter(Words(std::max<std::size_t>(samples, 1) - 1));
    EXPECT_EQ(lirvox_->isRecording(), samples > 0) << seconds;
    if (lirvox_->isRecording()) outcomeAfter(Words(1));
    EXPECT_EQ(lirvox_->isRecording(), samples == 60000) << seconds;
    EXPECT_EQ(lirvox_->recordingTime() == 5.0, samples == kLimit) << seconds;
    cancel();
  }
}

TEST_F(ControllerTest, CancelsARunningCapture) {
  install();
  SqlTrace trace;
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

TEST_F(ControllerTest, CannotCancelACaptureThatHasItsLength) {
  install();
  start();
  deliver(song_);
  runUntilLimit();
  lirvox_->stopRecognize();
  EXPECT_FALSE(lirvox_->stopNow());
  EXPECT_TRUE(lirvox_->microphone());
  EXPECT_EQ(unitLog(), "start stop ");
  EXPECT_EQ(delegate_->calls(), Calls());
  EXPECT_EQ(outcomeAfter({}), Calls{foundSong_});
}

TEST_F(ControllerTest, AnswersACaptureThatTheNextOneOverlaps) {
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
  EXPECT_EQ(outcomeAfter({other_.begin() + 30000, other_.end()}), Calls{foundOther_});
  // The pass of a cancelled capture is overlapped just as well.
  start();
  deliver(other_);
  lirvox_->stopRecognize();
  EXPECT_EQ(outcomeOf(song_), Calls{foundSong_});
}

TEST_F(ControllerTest, FindsNothingInSilenceOrWithoutADatabase) {
  install();
  EXPECT_EQ(outcomeOf(Words(kLimit)), Calls{{}});
  lirvox_->setDatabase(nullptr);
  EXPECT_FALSE(lirvox_->databaseInfo());
  EXPECT_EQ(outcomeOf(song_), Calls{{}});
}

TEST_F(ControllerTest, EndsACaptureEarlyWhenIsRecordingIsSetFalse) {
  install();
  start();
  deliver(song_.data(), 40000);
  lirvox_->setIsRecording(false);
  EXPECT_EQ(unitLog(), "start stop ");
  EXPECT_EQ(outcomeAfter({}), Calls{foundSong_});
}

TEST_F(ControllerTest, LetsNoInterruptionLeaveTheMicrophoneOn) {
  using Interruption = platform::AudioSessionInterruption;
  const auto post = [](Interruption::Type type) {
    platform::current()->audioSession->postInterruption({type, Interruption::shouldResume});
  };
  install();
  start();
  post(Interruption::Type::began);
  post(Interruption::Type::ended);
  EXPECT_EQ(unitLog(), "start stop start ") << "the capture goes on";
  EXPECT_EQ(outcomeAfter(song_), Calls{foundSong_});
  post(Interruption::Type::ended);
  platform_.scheduler.run();
  EXPECT_EQ(unitLog(), "start stop start stop start stop ");
}

TEST_F(ControllerTest, DropsACaptureWhenStopNowIsSet) {
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

TEST_F(ControllerTest, ReplaysARecordingInFourSecondsAndListensTwoLaterIfThereIsADatabase) {
  // The bytes of the song, 0 for no recording, and whether the replay is cancelled, which the live
  // start takes back.
  const std::tuple<std::size_t, bool, Calls> cases[] = {
      {0, false, {{}}},
      {0, false, {{}}},
      {10239, false, {{}}},
      {220500, true, {}},
      {215040, false, {{7, 46.4399109F, 50.4399109F}}}};
  for (const auto& [bytes, isCancelled, told] : cases) {
    SCOPED_TRACE(bytes);
    LirvoxError error;
    const bool hasDatabase = lirvox_->canRecognize(error);
    EXPECT_EQ(error.code, hasDatabase ? 0 : 201);
    if (bytes > 0) bundleRecording(bytes);
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

TEST_F(ControllerTest, EndsTheLiveCaptureThatRunsWhenItReplaysAndAnswersBoth) {
  install();
  start();
  deliver(other_.data(), kLimit - 1);
  bundleRecording(4 * kLimit);
  lirvox_->startRecognizeFromFile();
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->takeCalls(), Calls{foundOther_});
  platform_.scheduler.advance(4s);
  EXPECT_EQ(delegate_->takeCalls().at(0).trackId, 7);
  platform_.scheduler.advance(2s);
  EXPECT_TRUE(lirvox_->isRecording());
}

}  // namespace
}  // namespace lirvox::test
