// The microphone over a scripted unit and session.
#include <gtest/gtest.h>

#include "lib/audio/LirvoxMicrophone.h"
#include "tests/support/ScriptedAudio.h"

namespace lirvox {
namespace {

using platform::AudioSessionInterruption;
using Words = std::vector<std::string>;

// Writes down the events that do not come from the audio thread, and counts raw deliveries.
template <typename Base>
class Listener : public Base {
 public:
  void hasAudioStreamBasicDescription(LirvoxMicrophone&,
                                      platform::AudioStreamBasicDescription format) override {
    events.push_back("format " + std::to_string(format.channelsPerFrame));
  }
  void hasBufferList(LirvoxMicrophone&, platform::AudioBufferList& list, std::uint32_t frames,
                     std::uint32_t) override {
    EXPECT_EQ(list.buffers[0].dataByteSize, frames * 4);
    ++bufferLists;
  }
  void changedPlayingState(LirvoxMicrophone&, bool isPlaying) override {
    events.push_back(isPlaying ? "playing" : "stopped");
  }
  void changedDevice(LirvoxMicrophone&, const LirvoxAudioDevice& device) override {
    events.push_back("device " + (device.port() ? device.port()->name : "none"));
  }

  Words events;
  int bufferLists = 0;
};

using RawListener = Listener<LirvoxMicrophoneDelegate>;

class AudioListener : public Listener<LirvoxMicrophoneAudioDelegate> {
 public:
  void hasAudioReceived(LirvoxMicrophone&, float** buffers, std::uint32_t bufferSize,
                        std::uint32_t numberOfChannels) override {
    EXPECT_EQ(numberOfChannels, 1U);
    std::vector<std::int32_t> delivery(bufferSize);
    std::memcpy(delivery.data(), buffers[0], bufferSize * 4);
    received.insert(received.end(), delivery.begin(), delivery.end());
  }
  std::vector<std::int32_t> received;
};

class MicrophoneTest : public testing::Test {
 protected:
  static platform::AudioSessionPort port(const std::string& name) {
    return {name, name, false, {}};
  }
  static Words took(Words& words) { return std::exchange(words, {}); }

  test::ScriptedPlatform platform_;
  const std::shared_ptr<AudioListener> listener_ = std::make_shared<AudioListener>();
  test::AudioScript& script_ = *platform_.script;
  test::ScriptedSession& session_ = *platform_.session;
};

TEST_F(MicrophoneTest, SetsTheUnitUpInOrderAndUninitialisesItWithoutStopping) {
  session_.route.inputs = {port("built-in")};
  auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_, true);
  EXPECT_EQ(microphone->info().inputFormat.sampleRate, 11025.0);
  EXPECT_EQ(microphone->info().inputFormat.channelsPerFrame, 2U);
  microphone.reset();
  EXPECT_EQ(script_.calls,
            (Words{"makeInputUnit", "enableInput", "inputStreamFormat", "setClientStreamFormat",
                   "setDeliveredStreamFormat", "maximumFramesPerSlice", "setInputCallback",
                   "initialize", "start", "uninitialize"}));
  EXPECT_EQ(listener_->events, (Words{"device built-in", "format 1", "playing"}));
}

TEST_F(MicrophoneTest, HandsOnWhatItRendersToTheBitHoweverItIsChopped) {
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  std::vector<std::int32_t> sent;
  for (const std::uint32_t frames : {1024U, 1U, 700U, 1024U, 3U}) {
    std::vector<std::int32_t> delivery(frames);
    for (std::int32_t& sample : delivery) {
      sample = static_cast<std::int32_t>(0x7FC00001U + 2654435761U * sent.size());
      sent.push_back(sample);
    }
    EXPECT_EQ(script_.deliver(delivery), 0);
  }
  EXPECT_EQ(listener_->received, sent);
  EXPECT_EQ(listener_->bufferLists, 5);
}

TEST_F(MicrophoneTest, CallsTheDelegateThoughRenderingFailedButNotForWhatItCannotHold) {
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  platform_.unit->renderStatus = -7;
  EXPECT_EQ(script_.deliver({1, 2}), -7);
  EXPECT_EQ(script_.deliver(std::vector<std::int32_t>(1025)), platform::audioTooManyFramesError);
  EXPECT_EQ(listener_->received.size(), 2U);
  EXPECT_EQ(listener_->bufferLists, 1);
}

// A converter that must not be used.
class ForbiddenConverter : public platform::AudioConverter {
 public:
  platform::AudioStatus fillComplexBuffer(InputDataCallback, void*, std::uint32_t&,
                                          platform::AudioBufferList&,
                                          platform::AudioStreamPacketDescription*) override {
    ADD_FAILURE() << "converted for a delegate that does not want it";
    return platform::audioNoError;
  }
  platform::AudioStatus maximumOutputPacketSize(std::uint32_t&) override { return -1; }
};

TEST_F(MicrophoneTest, NeverConvertsForADelegateThatTakesRenderedBuffersOnly) {
  platform::Platform installed = *platform::current();
  installed.makeAudioConverter = [](const auto&, const auto&, platform::AudioStatus&) {
    return std::make_unique<ForbiddenConverter>();
  };
  platform::install(installed);
  const auto raw = std::make_shared<RawListener>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(raw);
  script_.deliver({1, 2, 3});
  EXPECT_EQ(raw->bufferLists, 1);
}

TEST_F(MicrophoneTest, DeliversToNobodyOnceTheDelegateIsGone) {
  auto raw = std::make_shared<RawListener>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(raw);
  raw.reset();
  EXPECT_EQ(script_.deliver({1}), 0);
  microphone->startFetchingAudio();
}

TEST_F(MicrophoneTest, FollowsInterruptions) {
  constexpr auto began = AudioSessionInterruption::Type::began;
  constexpr auto ended = AudioSessionInterruption::Type::ended;
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_, true);
  listener_->events.clear();
  session_.postInterruption({began, 0});
  EXPECT_EQ(took(listener_->events), Words{"stopped"});
  session_.postInterruption({ended, 0});
  EXPECT_EQ(took(listener_->events), Words{}) << "it stays stopped without the resume option";
  session_.postInterruption({ended, AudioSessionInterruption::shouldResume});
  EXPECT_EQ(took(listener_->events), Words{"playing"});
  EXPECT_EQ(script_.calls.back(), "start");
}

TEST_F(MicrophoneTest, FollowsTheRouteAndHearsNothingOfTheSameDevice) {
  session_.route.inputs = {port("first"), port("other")};
  auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  listener_->events.clear();
  session_.postRouteChange();
  EXPECT_EQ(took(listener_->events), Words{});
  session_.dataSource = platform::AudioSessionDataSource{"front", "Front"};
  session_.postRouteChange();
  EXPECT_EQ(took(listener_->events), Words{"device first"});
  session_.route.inputs.clear();
  session_.postRouteChange();
  EXPECT_EQ(took(listener_->events), Words{"device none"});
  microphone.reset();
  session_.route.inputs = {port("second")};
  session_.postRouteChange();
  EXPECT_EQ(listener_->events, Words{}) << "a microphone that is gone observes nothing";
}

TEST_F(MicrophoneTest, StoresADeviceThatTheSessionRefuses) {
  const LirvoxAudioDevice device(port("usb"), platform::AudioSessionDataSource{"rear", "Rear"});
  struct Case {
    bool refusesPort, refusesDataSource;
    std::string requests;
    Words log;
  };
  for (const Case& expected : {Case{true, true, "port;", {"Error (usb): port refused"}},
                               Case{false, true, "port;source;", {"Error: (Rear): source refused"}},
                               Case{false, false, "port;source;", {}}}) {
    const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
    session_.refusesPort = expected.refusesPort;
    session_.refusesDataSource = expected.refusesDataSource;
    session_.requests.clear();
    listener_->events.clear();
    const auto logged = static_cast<std::ptrdiff_t>(platform_.log->lines().size());
    microphone->setDevice(device);
    EXPECT_EQ(session_.requests, expected.requests);
    const Words log = platform_.log->lines();
    EXPECT_EQ(Words(log.begin() + logged, log.end()), expected.log);
    EXPECT_EQ(microphone->device(), device);
    EXPECT_EQ(listener_->events, Words{"device usb"});
  }
}

TEST_F(MicrophoneTest, ReplacesItsBuffersWithTheFormat) {
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(listener_);
  auto format = microphone->audioStreamBasicDescription();
  const auto first = microphone->floatConverter();
  script_.maximumFrames = 256;
  microphone->setAudioStreamBasicDescription(format);
  EXPECT_NE(microphone->floatConverter(), first);
  EXPECT_EQ(microphone->maximumBufferSize(), 256U);
  EXPECT_EQ(microphone->info().audioBufferList->buffers[0].dataByteSize, 1024U);
  EXPECT_EQ(script_.deliver(std::vector<std::int32_t>(256, 9)), 0);
  EXPECT_EQ(listener_->received, std::vector<std::int32_t>(256, 9));
  format.bytesPerPacket = format.bytesPerFrame = 2;
  format.bitsPerChannel = 16;
  microphone->setAudioStreamBasicDescription(format);
  EXPECT_EQ(script_.deliver(std::vector<std::int32_t>(257)), platform::audioTooManyFramesError);
}

TEST_F(MicrophoneTest, PlaysThroughWhatItRenderedLast) {
  const auto microphone = LirvoxMicrophone::microphone();
  const auto output = std::make_shared<LirvoxOutput>();
  microphone->setOutput(output);
  EXPECT_EQ(output->inputFormat(), microphone->audioStreamBasicDescription());
  script_.deliver({5, 6, 7});
  platform::AudioBufferList list;
  EXPECT_EQ(output->fill(list, 3, {}), 0);
  ASSERT_EQ(list.buffers.size(), 1U);
  EXPECT_EQ(list.buffers[0].dataByteSize, 12U);
  EXPECT_EQ(static_cast<std::int32_t*>(list.buffers[0].data)[2], 7);
}

using MicrophoneDeathTest = MicrophoneTest;

TEST_F(MicrophoneDeathTest, EndsTheProcessWhenTheUnitFails) {
  struct Case {
    const char *call, *text;
  };
  for (const Case& failing :
       {Case{"makeInputUnit", "Failed to get audio component instance"},
        Case{"enableInput", "Couldn't enable input on remote IO unit\\."},
        Case{"inputStreamFormat", "Failed to get stream format of microphone input scope"},
        Case{"setClientStreamFormat", "Failed to set stream format on input scope"},
        Case{"setDeliveredStreamFormat", "Failed to set stream format on output scope"},
        Case{"maximumFramesPerSlice", "Failed to get maximum number of frames per slice"},
        Case{"setInputCallback", "Failed to set render callback"},
        Case{"initialize", "Failed to initialize input unit"},
        Case{"start", "Failed to start microphone audio unit"},
        Case{"stop", "Failed to stop microphone audio unit"},
        Case{"uninitialize", "Failed to unintialize audio unit for microphone"}}) {
    script_.statuses = {{failing.call, -10875}};
    const auto useAll = [] {
      LirvoxMicrophone::microphoneWithDelegate({}, true)->stopFetchingAudio();
    };
    EXPECT_EXIT(useAll(), testing::ExitedWithCode(255),
                std::string("^Error: ") + failing.text + " \\(-10875\\)\n$");
  }
}

TEST_F(MicrophoneDeathTest, FailsAnAssertionWhereThereIsNoUnit) {
  platform::Platform installed = *platform::current();
  installed.makeInputUnit = nullptr;
  platform::install(installed);
  EXPECT_DEATH(LirvoxMicrophone::microphone(),
               "Couldn't get input component unit!, file lib/audio/LirvoxMicrophone, line 177");
}

}  // namespace
}  // namespace lirvox
