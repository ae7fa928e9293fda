// The audio unit over a PulseAudio server.
#pragma once

#include <memory>

#include "../AudioUnit.h"
#include "PulseAudioSession.h"
#include "PulseStream.h"

namespace lirvox::platform {

/// Captures from the session's input. The server resamples, so any interleaved
/// linear PCM can be asked for; a block is at most 1024 frames, which is what a
/// converter's output holds. Opens a stream when it starts, and not before.
class PulseAudioUnit : public AudioUnit {
 public:
  explicit PulseAudioUnit(std::shared_ptr<PulseAudioSession> session);
  ~PulseAudioUnit() override { stream_->close(); }
  PulseAudioUnit(const PulseAudioUnit&) = delete;
  PulseAudioUnit& operator=(const PulseAudioUnit&) = delete;

  AudioStatus enableInput() override { return audioNoError; }
  AudioStatus inputStreamFormat(AudioStreamBasicDescription& format) override;
  AudioStatus setClientStreamFormat(const AudioStreamBasicDescription& format) override;
  AudioStatus setDeliveredStreamFormat(const AudioStreamBasicDescription& format) override;
  AudioStatus maximumFramesPerSlice(std::uint32_t& frames) override;
  AudioStatus setInputCallback(InputCallback callback) override;
  AudioStatus initialize() override;
  AudioStatus uninitialize() override;
  AudioStatus start() override;
  AudioStatus stop() override;
  AudioStatus render(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                     std::uint32_t busNumber, std::uint32_t numberFrames,
                     AudioBufferList& list) override;

 private:
  const std::shared_ptr<PulseAudioSession> session_;
  const std::shared_ptr<PulseStream> stream_;
};

}  // namespace lirvox::platform
