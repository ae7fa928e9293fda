// The spectral history of one capture.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "LirvoxAudioFFT.h"
#include "LirvoxExport.h"
#include "Spectrogram.h"

namespace lirvox {

/// Four power spectrograms of the audio so far, one per shift of the frame grid,
/// and what joins one block to the next. Frame t of shift s starts at sample
/// 64 s + 256 t of the capture. After k blocks shift 0 holds 10 k - 1 frames and
/// the others hold 10 k - 2.
///
/// Made by `LirvoxUtilities::initHistoryInfo`; used by one thread at a time.
struct LIRVOX_EXPORT HistoryInfo {
  Spectrogram specgram0;  ///< shift 0
  Spectrogram specgram1;  ///< shift 1
  Spectrogram specgram2;  ///< shift 2
  Spectrogram specgram3;  ///< shift 3
  /// True until the first block has been processed.
  bool firstBlock = true;
  /// True once `tail` holds the end of the previous block.
  bool hasTail = false;
  /// The last 512 samples of the previous block.
  std::vector<float> tail;
  /// The spectrum of the most recent frame; it belongs to the FFT engine.
  DoubleSplitComplex lastSpectrum;

  /// Frames of the spectrogram of that shift.
  std::int32_t frameCount0() const { return specgram0.frameCount(); }
  std::int32_t frameCount1() const { return specgram1.frameCount(); }
  std::int32_t frameCount2() const { return specgram2.frameCount(); }
  std::int32_t frameCount3() const { return specgram3.frameCount(); }

  /// The spectrogram of shift s in [0, 4).
  Spectrogram& specgram(std::int32_t s) {
    const std::array<Spectrogram*, 4> all = {&specgram0, &specgram1, &specgram2, &specgram3};
    return *all[static_cast<std::size_t>(s)];
  }
};

}  // namespace lirvox
