// Decoded frames to samples of the capture format.
#pragma once

#include <memory>
#include <vector>

#include "lib/platform/Resampler.h"
#include "tools/AudioDecoder.h"
#include "tools/AvHandles.h"

namespace lirvox::tools {

/// Mixes decoded frames to one channel and resamples them as a capture is. Begins anew
/// when the stream changes its format on the way. Throws `AudioError`.
///
/// libswresample mixes only: its resampling costs 1.5 to 1.9 times that of libsoxr
/// (44.1 kHz, MP3 and Vorbis).
class MonoConverter {
 public:
  /// `sink` outlives the converter.
  explicit MonoConverter(const SampleSink& sink) : sink_(sink) {}

  /// False when the sink has had enough.
  bool add(const AVFrame& frame);
  /// Gives out what the resampler holds back.
  bool finish();

 private:
  bool matches(const AVFrame& frame) const;
  void configure(const AVFrame& frame);
  void mix(const AVFrame& frame);
  bool resample();
  bool giveOut();

  const SampleSink& sink_;
  av::Mixer mixer_;
  std::unique_ptr<platform::Resampler> resampler_;
  int rate_ = 0;
  AVSampleFormat format_ = AV_SAMPLE_FMT_NONE;
  AVChannelLayout layout_{};
  std::vector<double> mono_;
  std::vector<double> resampled_;
  std::vector<std::int32_t> words_;
};

}  // namespace lirvox::tools
