// The microphone over a scripted unit and session.
#include "lib/audio/LirvoxMicrophone.h"
#include "lib/platform/MeteredUnit.h"
#include "tests/support/ScriptedAudio.h"
#include "tests/support/SoundRecorder.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using Words = SoundRecorder::Words;

struct ScriptedSession : platform::NullAudioSession {
  platform::AudioSessionRoute currentRoute() override { return route; }
  std::optional<platform::AudioSessionDataSource> inputDataSource() override { return dataSource; }
  bool setPreferredInput(const std::optional<platform::AudioSessionPort>&,
                         LirvoxError& error) override {
    error.localizedDescription = "port refused";
    return !refusesPort;
  }
  bool setInputDataSource(const platform::AudioSessionDataSource&, LirvoxError& error) override {
    error.localizedDescription = "source refused";
    return false;
  }

  platform::AudioSessionRoute route;
  std::optional<platform::AudioSessionDataSource> dataSource;
  bool refusesPort = false;
};

struct RawListener : LirvoxMicrophoneDelegate {
  void hasBufferList(LirvoxMicrophone&, platform::AudioBufferList& list, std::uint32_t frames,
                     std::uint32_t) override {
    EXPECT_EQ(list.buffers[0].dataByteSize, frames * 4);
    ++bufferLists;
  }
  int bufferLists = 0;
};

struct MicrophoneTest : testing::Test {
  MicrophoneTest() {
    platform_.change([this](platform::Platform& services) {
      services.audioSession = session_;
      services.makeInputUnit = [this](platform::AudioStatus& status) {
        status = script_->answer("makeInputUnit");
        return std::make_unique<ScriptedUnit>(script_);
      };
    });
  }
  static platform::AudioSessionPort port(const std::string& name) {
    return {name, name, false, {}};
  }

  TestPlatform platform_;
  const std::shared_ptr<SoundRecorder> listener_ = std::make_shared<SoundRecorder>();
  const std::shared_ptr<AudioScript> script_ = std::make_shared<AudioScript>();
  const std::shared_ptr<ScriptedSession> session_ = std::make_shared<ScriptedSession>();
};

TEST_F(MicrophoneTest, SetsTheUnitUpInOrderAndUninitialisesItWithoutStopping) {
  session_->route.inputs = {port("built-in")};
  auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_, true);
  EXPECT_EQ(microphone->info().inputFormat.sampleRate, 11025.0);
  EXPECT_EQ(microphone->info().inputFormat.channelsPerFrame, 2U);
  microphone.reset();
  EXPECT_EQ(script_->calls,
            (Words{"makeInputUnit", "enableInput", "inputStreamFormat", "setClientStreamFormat",
                   "setDeliveredStreamFormat", "maximumFramesPerSlice", "setInputCallback",
                   "initialize", "start", "uninitialize"}));
  EXPECT_EQ(listener_->takeEvents(), (Words{"device built-in", "format 1", "playing"}));
}

TEST_F(MicrophoneTest, HandsOnAndPlaysThroughWhatItRendersToTheBitHoweverItIsChopped) {
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  const auto output = std::make_shared<LirvoxOutput>();
  microphone->setOutput(output);
  EXPECT_EQ(output->inputFormat(), microphone->audioStreamBasicDescription());
  std::vector<std::int32_t> sent;
  for (const std::uint32_t frames : {1024U, 1U, 700U, 1024U, 3U}) {
    std::vector<std::int32_t> delivery(frames);
    for (std::int32_t& sample : delivery) {
      sample = static_cast<std::int32_t>(0x7FC00001U + 2654435761U * sent.size());
      sent.push_back(sample);
    }
    EXPECT_EQ(script_->deliver(delivery), 0);
    platform::AudioBufferList list;
    EXPECT_EQ(output->fill(list, frames, {}), 0);
    EXPECT_EQ(list.buffers.at(0).dataByteSize, 4 * frames);
    EXPECT_EQ(static_cast<std::int32_t*>(list.buffers[0].data)[frames - 1], sent.back());
  }
  EXPECT_EQ(listener_->received, sent);
}

TEST_F(MicrophoneTest, NeverConvertsForADelegateThatTakesRenderedBuffersOnlyOrIsGone) {
  auto raw = std::make_shared<RawListener>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(raw);
  float& converted = microphone->info().floatBuffers[0][0];
  converted = 0.5F;
  script_->deliver({1, 2, 3});
  EXPECT_EQ(raw->bufferLists, 1);
  raw.reset();
  EXPECT_EQ(script_->deliver({1}), 0);
  EXPECT_EQ(converted, 0.5F);
}

TEST_F(MicrophoneTest, GoesOnAfterADelegateThatThrows) {
  struct Thrower : SoundRecorder {
    void hasBufferList(LirvoxMicrophone&, platform::AudioBufferList&, std::uint32_t,
                       std::uint32_t) override {
      throw std::runtime_error("host");
    }
    void hasAudioReceived(LirvoxMicrophone&, float**, std::uint32_t, std::uint32_t) override {
      throw 7;  // NOLINT: hosts do
    }
    void changedPlayingState(LirvoxMicrophone&, bool) override { throw std::bad_alloc(); }
  };
  const auto thrower = std::make_shared<Thrower>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(thrower, true);
  script_->renderStatus = -7;
  EXPECT_EQ(script_->deliver({1, 2}), -7);
  EXPECT_EQ(platform_.log->lines().size(), 3U);
}

TEST_F(MicrophoneTest, FollowsTheRouteAndHearsNothingOfTheSameDevice) {
  session_->route.inputs = {port("first"), port("other")};
  auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  session_->postRouteChange();
  EXPECT_EQ(listener_->takeEvents(), (Words{"device first", "format 1"}));
  session_->dataSource = platform::AudioSessionDataSource{"front", "Front"};
  session_->postRouteChange();
  EXPECT_EQ(listener_->takeEvents(), Words{"device first"});
  session_->route.inputs.clear();
  session_->postRouteChange();
  EXPECT_EQ(listener_->takeEvents(), Words{"device none"});
  microphone.reset();
  session_->route.inputs = {port("second")};
  session_->postRouteChange();
  EXPECT_EQ(listener_->takeEvents(), Words{}) << "a microphone that is gone observes nothing";
}

TEST_F(MicrophoneTest, StoresADeviceThatTheSessionRefuses) {
  const LirvoxAudioDevice device(port("usb"), platform::AudioSessionDataSource{"rear", "Rear"});
  for (const char* const line : {"Error: (Rear): source refused", "Error (usb): port refused"}) {
    const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
    listener_->takeEvents();
    microphone->setDevice(device);
    EXPECT_EQ(platform_.log->lines().back(), line);
    EXPECT_EQ(microphone->device(), device);
    EXPECT_EQ(listener_->takeEvents(), Words{"device usb"});
    session_->refusesPort = true;
  }
  EXPECT_EQ(platform_.log->lines().size(), 2U);
}

TEST_F(MicrophoneTest, ReplacesItsBuffersWithTheFormat) {
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  auto format = microphone->audioStreamBasicDescription();
  const auto first = microphone->floatConverter();
  script_->maximumFrames = 256;
  microphone->setAudioStreamBasicDescription(format);
  EXPECT_NE(microphone->floatConverter(), first);
  EXPECT_EQ(microphone->maximumBufferSize(), 256U);
  EXPECT_EQ(script_->deliver(std::vector<std::int32_t>(256, 9)), 0);
  EXPECT_EQ(listener_->received, std::vector<std::int32_t>(256, 9));
  format.bytesPerPacket = format.bytesPerFrame = 2;
  format.bitsPerChannel = 16;
  microphone->setAudioStreamBasicDescription(format);
  EXPECT_EQ(script_->deliver(std::vector<std::int32_t>(257)), platform::audioTooManyFramesError);
}

using MicrophoneDeathTest = MicrophoneTest;

TEST_F(MicrophoneDeathTest, EndsTheProcessWhenAnyOperationOfTheUnitFails) {
  const auto useAll = [] {
    LirvoxMicrophone::microphoneWithDelegate({}, true)->stopFetchingAudio();
  };
  useAll();
  for (const std::string& call : std::exchange(script_->calls, {})) {
    script_->statuses = {{call, -10875}};
    EXPECT_EXIT(useAll(), testing::ExitedWithCode(255), "^Error: .+ \\(-10875\\)\n$") << call;
  }
  platform_.change([](platform::Platform& services) { services.makeInputUnit = nullptr; });
  EXPECT_DEATH(LirvoxMicrophone::microphone(),
               "Couldn't get input component unit!, file lib/audio/LirvoxMicrophone, line 177");
}

TEST(MeteredUnitTest, CountsTheFramesOfAnyFormatAndMeasuresThoseThatItCanRead) {
  const auto script = std::make_shared<AudioScript>();
  script->samples = {5, -7};
  const auto level = std::make_shared<platform::SoundLevel>();
  platform::MeteredUnit unit(std::make_unique<ScriptedUnit>(script), level);
  for (const auto& [bits, isFloat, peak] :
       {std::tuple(32U, false, 7U), {32U, true, 0U}, {16U, false, 0U}}) {
    unit.setDeliveredStreamFormat(platform::interleavedPcm(11025, 1, bits, isFloat));
    std::vector<std::byte> bytes(2 * bits / 8);
    platform::AudioBufferList list{{{1, 2 * bits / 8, bytes.data()}}};
    std::uint32_t flags = 0;
    EXPECT_EQ(unit.render(flags, {}, platform::audioUnitInputBus, 2, list), 0);
    EXPECT_EQ(level->peak.exchange(0), peak) << bits;
  }
  EXPECT_EQ(level->frames, 6U);
}

}  // namespace
}  // namespace lirvox::test
