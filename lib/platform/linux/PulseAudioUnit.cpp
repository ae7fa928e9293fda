// The audio unit over a PulseAudio server.
#include "lib/platform/linux/PulseAudioUnit.h"

#include <optional>
#include <utility>

#include "lib/platform/linux/PcmFormat.h"

namespace lirvox::platform {
namespace {

pa_sample_format_t sampleFormatOf(const AudioStreamBasicDescription& format) {
  const std::uint32_t bytes = format.bytesPerFrame / format.channelsPerFrame;
  if (format.formatFlags & audioFormatFlagIsFloat) {
    return bytes == 4 ? PA_SAMPLE_FLOAT32NE : PA_SAMPLE_INVALID;
  }
  if (bytes == 2) return PA_SAMPLE_S16NE;
  if (bytes == 3) return PA_SAMPLE_S24NE;
  return format.bitsPerChannel == 24 ? PA_SAMPLE_S24_32NE : PA_SAMPLE_S32NE;
}

std::optional<pa_sample_spec> specOf(const AudioStreamBasicDescription& format) {
  const auto pcm = PcmFormat::of(format);
  if (!pcm || pcm->numberBuffers() != 1) return std::nullopt;
  const pa_sample_spec spec{sampleFormatOf(format), pcm->sampleRateHz(),
                            static_cast<std::uint8_t>(pcm->channels())};
  if (pa_sample_spec_valid(&spec) == 0) return std::nullopt;
  return spec;
}

}  // namespace

PulseAudioUnit::PulseAudioUnit(std::shared_ptr<PulseAudioSession> session)
    : session_(std::move(session)), stream_(std::make_shared<PulseStream>(session_)) {
  session_->addStream(stream_);
}

AudioStatus PulseAudioUnit::inputStreamFormat(AudioStreamBasicDescription& format) {
  const auto source = session_->currentSource();
  if (!source) return audioServerError;
  format = source->format;
  return audioNoError;
}

// Nothing is played here.
AudioStatus PulseAudioUnit::setClientStreamFormat(const AudioStreamBasicDescription&) {
  return audioNoError;
}

AudioStatus PulseAudioUnit::setDeliveredStreamFormat(const AudioStreamBasicDescription& format) {
  const auto spec = specOf(format);
  if (!spec) return audioFormatError;
  if (stream_->isRunning()) return audioStateError;
  stream_->close();
  stream_->sampleSpec = *spec;
  return audioNoError;
}

AudioStatus PulseAudioUnit::maximumFramesPerSlice(std::uint32_t& frames) {
  frames = PulseStream::maximumFrames;
  return audioNoError;
}

AudioStatus PulseAudioUnit::setInputCallback(InputCallback callback) {
  if (stream_->isRunning()) return audioStateError;
  stream_->close();
  stream_->callback = std::move(callback);
  return audioNoError;
}

AudioStatus PulseAudioUnit::initialize() {
  return pa_sample_spec_valid(&stream_->sampleSpec) != 0 ? audioNoError : audioStateError;
}

AudioStatus PulseAudioUnit::uninitialize() {
  stream_->close();
  return audioNoError;
}

AudioStatus PulseAudioUnit::start() {
  return stream_->start();
}

AudioStatus PulseAudioUnit::stop() {
  stream_->stop();
  return audioNoError;
}

AudioStatus PulseAudioUnit::render(RenderActionFlags&, const AudioTimeStamp&, std::uint32_t,
                                   std::uint32_t numberFrames, AudioBufferList& list) {
  PulseConnection::assertServing();
  return stream_->render(numberFrames, list);
}

}  // namespace lirvox::platform
