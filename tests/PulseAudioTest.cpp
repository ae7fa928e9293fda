// The microphone on a real PulseAudio server.
#include <complex>

#include "lib/platform/PulseAudio.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SoundRecorder.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

class Recorder : public SoundRecorder {
 public:
  // Until the last half second is little but a sine of this frequency.
  bool waitForSine(double frequency) {
    return waitUntil([&] { return received.size() > 5512 && toneShare(frequency) > 0.98; });
  }

 private:
  double toneShare(double frequency) const {
    std::complex<double> sum;
    double power = 0;
    for (std::size_t i = received.size() - 5512; i < received.size(); ++i) {
      sum += std::polar<double>(received[i], 2 * M_PI * frequency * static_cast<double>(i) / 11025);
      power += std::pow(received[i], 2);
    }
    return power > 0 ? 2 * std::norm(sum) / (5512 * power) : 0;
  }
};

struct ChangeCounter : platform::AudioSessionObserver {
  void audioSessionWasInterrupted(const platform::AudioSessionInterruption&) override {}
  void audioSessionRouteChanged() override { ++changes; }
  std::atomic<int> changes{0};
};

struct PulseAudioTest : testing::Test {
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no pulseaudio, pactl or paplay here";
    server_ = std::make_unique<PulseServer>();
    install("");
  }
  void install(const std::string& source) {
    platform::Platform installed = platform::systemPlatform();
    platform::usePulseAudio(installed, {"lirvox-test", "Test", server_->address(), source});
    session_ = installed.audioSession;
    platform::install(std::move(installed));
  }
  void TearDown() override { platform::install(platform::systemPlatform()); }

  std::shared_ptr<LirvoxMicrophone> capture() {
    auto microphone = LirvoxMicrophone::microphoneWithDelegate(recorder_, true);
    EXPECT_TRUE(recorder_->waitForFrames(2000));
    return microphone;
  }

  std::unique_ptr<PulseServer> server_;
  std::shared_ptr<platform::AudioSession> session_;
  const std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
};

TEST_F(PulseAudioTest, HearsTheDefaultSourceAndFollowsItUntilADeviceIsChosen) {
  server_->playSine("one", 1000);
  server_->playSine("two", 700);
  const auto microphone = capture();
  EXPECT_TRUE(recorder_->waitFor("device one.monitor"));
  EXPECT_TRUE(recorder_->waitForSine(1000));
  EXPECT_TRUE(server_->control("set-default-source two.monitor"));
  EXPECT_TRUE(recorder_->waitFor("device two.monitor"));
  EXPECT_TRUE(recorder_->waitForSine(700));
  const platform::AudioSessionPort one = session_->availableInputs().at(0);
  EXPECT_TRUE(one.isMonitor);
  microphone->setDevice(LirvoxAudioDevice(one));
  EXPECT_TRUE(recorder_->waitForSine(1000));
  EXPECT_TRUE(server_->control("set-default-source one.monitor"));
  EXPECT_TRUE(server_->control("set-default-source two.monitor"));
  EXPECT_TRUE(recorder_->waitForFrames(11025));
  EXPECT_TRUE(recorder_->waitForSine(1000)) << "a chosen device does not follow the default";
}

TEST_F(PulseAudioTest, ASuspendedSourceInterruptsAndItsReturnResumesUnlessStoppedMeanwhile) {
  const auto microphone = capture();
  EXPECT_TRUE(server_->control("suspend-sink one 1"));
  EXPECT_TRUE(recorder_->waitFor("stopped"));
  EXPECT_TRUE(server_->control("suspend-sink one 0"));
  EXPECT_TRUE(recorder_->waitFor("playing"));
  EXPECT_TRUE(recorder_->waitForFrames(2000));

  EXPECT_TRUE(server_->control("suspend-sink one 1"));
  EXPECT_TRUE(recorder_->waitFor("stopped"));
  microphone->stopFetchingAudio();
  EXPECT_TRUE(server_->control("suspend-sink one 0"));
  EXPECT_TRUE(server_->control("set-default-source two.monitor"));
  EXPECT_TRUE(recorder_->waitFor("device two.monitor"));  // comes after what the return would do
  EXPECT_TRUE(recorder_->waitFor("stopped"));
  microphone->startFetchingAudio();
  EXPECT_TRUE(recorder_->waitForFrames(2000));
}

TEST_F(PulseAudioTest, OutlivesTheRemovalOfTheDefaultSource) {
  const auto microphone = capture();
  EXPECT_TRUE(server_->removeSink("one"));
  EXPECT_TRUE(recorder_->waitFor("device two.monitor"));
  EXPECT_TRUE(recorder_->waitForFrames(2000));
}

TEST_F(PulseAudioTest, StopsWhenTheSourceThatItAskedForByNameIsRemoved) {
  install("two.monitor");
  const auto microphone = capture();
  EXPECT_TRUE(server_->removeSink("two"));
  EXPECT_TRUE(recorder_->waitFor("stopped"));
  EXPECT_TRUE(recorder_->waitFor("device none"));
}

TEST_F(PulseAudioTest, StopsWhenTheServerDies) {
  auto microphone = capture();
  server_->kill();
  EXPECT_TRUE(recorder_->waitFor("stopped"));
  EXPECT_TRUE(recorder_->waitFor("device none"));
  microphone->stopFetchingAudio();

  // Looking for the server in vain is no news that makes anybody look again.
  const auto counter = std::make_shared<ChangeCounter>();
  drain(*platform::current()->mainQueue);
  session_->addObserver(counter);
  EXPECT_TRUE(session_->availableInputs().empty());
  drain(*platform::current()->mainQueue);
  EXPECT_EQ(counter->changes, 0);
}

TEST_F(PulseAudioTest, WaitsForNoFrozenServer) {
  auto microphone = capture();
  server_->freeze();
  const auto before = std::chrono::steady_clock::now();
  EXPECT_TRUE(session_->availableInputs().empty());
  microphone.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
}

TEST_F(PulseAudioTest, StartsAndStopsAtAnyMoment) {
  const auto busy = std::make_shared<Recorder>();
  const auto other = LirvoxMicrophone::microphoneWithDelegate(busy, true);
  ASSERT_TRUE(busy->waitForFrames(2000));  // a source that runs delivers to others soon
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(recorder_);
  std::mt19937 random(1);
  for (int i = 0; i < 250; ++i) {
    const auto delay = random() % (i % 8 == 0 ? 120'000 : 3'000);
    std::thread stopper([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(delay));
      microphone->stopFetchingAudio();
    });
    microphone->startFetchingAudio();
    stopper.join();
    microphone->stopFetchingAudio();
    const std::size_t stoppedAt = recorder_->count();
    std::this_thread::yield();
    ASSERT_EQ(recorder_->count(), stoppedAt);
  }
  EXPECT_GT(recorder_->count(), 0U) << "it was stopped too early to deliver, each time";
  microphone->startFetchingAudio();
  EXPECT_TRUE(recorder_->waitForFrames(2000));
}

}  // namespace
}  // namespace lirvox::test
