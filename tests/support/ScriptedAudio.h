// An audio unit whose behaviour a test writes down.
#pragma once

#include "lib/platform/Platform.h"
#include "tests/support/Faults.h"

namespace lirvox::test {

using platform::AudioStatus;
using Format = platform::AudioStreamBasicDescription;

// What happened at the platform's side, and what it answers.
struct AudioScript {
  std::vector<std::string> calls;
  std::map<std::string, AudioStatus> statuses;  // by call; 0 where none is given
  std::vector<std::int32_t> samples;            // of the next delivery
  AudioStatus renderStatus = 0;
  std::uint32_t maximumFrames = 1024;
  platform::AudioUnit::InputCallback callback;
  std::function<void()> whenStopped = [] {};

  AudioStatus answer(const char* call) {
    if (faultIsDue()) return platform::audioStateError;
    const FaultsPaused own;
    calls.push_back(call);
    return statuses[call];
  }

  // One delivery, on the calling thread.
  AudioStatus deliver(std::vector<std::int32_t> delivery) {
    samples = std::move(delivery);
    std::uint32_t flags = 0;
    return callback(flags, {}, platform::audioUnitInputBus,
                    static_cast<std::uint32_t>(samples.size()));
  }
};

class ScriptedUnit : public platform::AudioUnit {
 public:
  explicit ScriptedUnit(std::shared_ptr<AudioScript> script) : script_(std::move(script)) {}

  AudioStatus enableInput() override { return script_->answer(__func__); }
  AudioStatus inputStreamFormat(Format& format) override {
    format.sampleRate = 48000;
    format.channelsPerFrame = 2;
    return script_->answer(__func__);
  }
  AudioStatus setClientStreamFormat(const Format&) override { return script_->answer(__func__); }
  AudioStatus setDeliveredStreamFormat(const Format&) override { return script_->answer(__func__); }
  AudioStatus maximumFramesPerSlice(std::uint32_t& frames) override {
    frames = script_->maximumFrames;
    return script_->answer(__func__);
  }
  AudioStatus setInputCallback(InputCallback callback) override {
    script_->callback = std::move(callback);
    return script_->answer(__func__);
  }
  AudioStatus initialize() override { return script_->answer(__func__); }
  AudioStatus uninitialize() override { return script_->answer(__func__); }
  AudioStatus start() override { return script_->answer(__func__); }
  AudioStatus stop() override {
    const AudioStatus status = script_->answer(__func__);
    script_->whenStopped();
    return status;
  }
  AudioStatus render(RenderActionFlags&, const platform::AudioTimeStamp&, std::uint32_t,
                     std::uint32_t, platform::AudioBufferList& list) override {
    std::memcpy(list.buffers[0].data, script_->samples.data(), list.buffers[0].dataByteSize);
    return script_->renderStatus;
  }

 private:
  const std::shared_ptr<AudioScript> script_;
};

}  // namespace lirvox::test
