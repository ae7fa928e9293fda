// What tests of the controller start from.
#include "tests/support/ControllerTest.h"

#include "lib/HistoryInfo.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"
#include "lib/ProcessingPass.h"
#include "tests/support/FingerprintFile.h"

namespace lirvox::test {
namespace {

// The hashes that a pass over `words` looks up, stage by stage.
std::vector<QueryHash> queryHashes(const std::vector<std::int32_t>& words) {
  LirvoxAudioFFT fft;
  const auto history = LirvoxUtilities::initHistoryInfo();
  std::vector<float> samples(2560);
  for (std::size_t i = 0; i + samples.size() <= words.size(); i += samples.size()) {
    convertSamples(words.data() + i, samples.size(), samples.data());
    LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data(), fft, *history);
  }
  return LirvoxRecognize::queryHashes(*history);
}

}  // namespace

ControllerTest::ControllerTest() {
  platform_.change([this](platform::Platform& services) {
    services.makeInputUnit = [this](platform::AudioStatus&) {
      return std::make_unique<ScriptedUnit>(script_);
    };
  });
  lirvox_->setDelegate(delegate_);
  lirvox_->setDatabase(std::make_shared<LirvoxDatabase>(databasePath_));
}

ControllerTest::~ControllerTest() {
  cancel();
  lirvox_->setDelegate(nullptr);
  lirvox_->setDatabase(nullptr);
  lirvox_->setMicrophone(nullptr);
  lirvox_->setRecordingTime(0);
  lirvox_->setMinimumFindedCnt(0);
}

void ControllerTest::install() {
  std::vector<FingerprintRow> rows;
  for (const auto& [time, hash] : queryHashes(song_)) rows.push_back({7, time + 2000, hash});
  for (const auto& [time, hash] : queryHashes(other_)) rows.push_back({8, time + 3000, hash});
  writeFingerprintFile(databasePath_, rows);
}

void ControllerTest::start() {
  lirvox_->startRecognize();
  ASSERT_TRUE(lirvox_->isRecording());
}

void ControllerTest::deliver(const std::int32_t* words, std::size_t count) {
  auto* channel = reinterpret_cast<float*>(const_cast<std::int32_t*>(words));
  lirvox_->hasAudioReceived(*lirvox_->microphone(), &channel, static_cast<std::uint32_t>(count), 1);
}

ControllerTest::Calls ControllerTest::outcomeAfter(const std::vector<std::int32_t>& words) {
  deliver(words);
  platform_.scheduler.run();
  return delegate_->takeCalls();
}

ControllerTest::Calls ControllerTest::outcomeOf(const std::vector<std::int32_t>& words) {
  start();
  return outcomeAfter(words);
}

void ControllerTest::cancel() {
  lirvox_->stopRecognize();
  platform_.scheduler.run();
}

void ControllerTest::bundleRecording(std::size_t bytes) const {
  writeFile(platform_.folder.path("resources/soundLirvox.dat"),
            {reinterpret_cast<const char*>(song_.data()), bytes});
}

std::string ControllerTest::unitLog() const {
  std::string log;
  for (const std::string& call : script_->calls) {
    if (call == "start" || call == "stop") log += call + ' ';
  }
  return log;
}

void ControllerTest::runUntilLimit() {
  while (lirvox_->isRecording()) ASSERT_TRUE(platform_.scheduler.runOne());
}

}  // namespace lirvox::test
