// A microphone's delegate that keeps all it is told.
#pragma once

#include "Test.h"
#include "lib/audio/LirvoxMicrophone.h"

namespace lirvox::test {

class SoundRecorder : public LirvoxMicrophoneAudioDelegate {
 public:
  using Words = std::vector<std::string>;

  void hasAudioStreamBasicDescription(LirvoxMicrophone&,
                                      platform::AudioStreamBasicDescription format) override {
    note("format " + std::to_string(format.channelsPerFrame), format_);
  }
  void changedPlayingState(LirvoxMicrophone&, bool isPlaying) override {
    note(isPlaying ? "playing" : "stopped", playing_);
  }
  void changedDevice(LirvoxMicrophone&, const LirvoxAudioDevice& device) override {
    note("device " + (device.port() ? device.port()->uniqueIdentifier : "none"), device_);
  }
  void hasAudioReceived(LirvoxMicrophone& microphone, float** buffers, std::uint32_t bufferSize,
                        std::uint32_t) override {
    const auto* const samples = reinterpret_cast<const std::int32_t*>(buffers[0]);
    {
      const std::lock_guard lock(mutex_);
      received.insert(received.end(), samples, samples + bufferSize);
    }
    if (count() >= stopsAt) microphone.stopFetchingAudio();
    changed_.notify_all();
  }

  Words takeEvents() {
    const std::lock_guard lock(mutex_);
    return std::exchange(events_, {});
  }
  std::size_t count() {
    const std::lock_guard lock(mutex_);
    return received.size();
  }

  bool waitUntil(const std::function<bool()>& condition) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), condition);
  }
  // Until the last event of its kind is this one.
  bool waitFor(const std::string& event) {
    return waitUntil([&] { return playing_ == event || device_ == event; });
  }
  // Until so many frames have arrived in all.
  bool waitForTotal(std::size_t frames) {
    return waitUntil([&] { return received.size() >= frames; });
  }
  // Until so many more have arrived, where they do not end.
  bool waitForFrames(std::size_t frames) { return waitForTotal(count() + frames); }

  std::vector<std::int32_t> received;
  std::size_t stopsAt = 1'000'000'000;

 private:
  void note(const std::string& event, std::string& state) {
    const std::lock_guard lock(mutex_);
    events_.push_back(state = event);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  Words events_;
  std::string format_, playing_, device_;
};

}  // namespace lirvox::test
