// Blocks of audio to four shifted power spectrograms.
#pragma once

#include <cstddef>
#include <cstdint>

#include "HistoryInfo.h"
#include "LirvoxAudioFFT.h"
#include "LirvoxExport.h"

namespace lirvox {

/// Extends the spectrograms of a history record block by block, as if the whole
/// recording had been analysed at once.
class LIRVOX_EXPORT LirvoxMiniSpectogram {
 public:
  LirvoxMiniSpectogram() = delete;

  /// Appends the frames that `samples` (exactly 2560, full scale 1.0) completes to
  /// all four shifts: 9, 8, 8 and 8 frames for the first block of a capture, 10
  /// each for every later one. Each value is the power |X[b]|^2 of a Hann-windowed
  /// frame. One thread at a time per engine and record.
  static void do_4_mini_specgrams(const float* samples, LirvoxAudioFFT& fft,
                                  HistoryInfo& historyInfo);
};

/// One shift of it alone: appends to `specgram` the frames f in [first, last) that
/// start at `samples + 256 f`.
LIRVOX_EXPORT void appendPowerFrames(const float* samples, std::int32_t first, std::int32_t last,
                                     LirvoxAudioFFT& fft, Spectrogram& specgram,
                                     DoubleSplitComplex& lastSpectrum);

/// The `count` frames that start at `samples`, `samples + 256`, ...: 257 powers each,
/// one frame after the other from `out`.
void computePowerFrames(const float* samples, std::size_t count, LirvoxAudioFFT& fft, double* out,
                        DoubleSplitComplex& lastSpectrum);

}  // namespace lirvox
