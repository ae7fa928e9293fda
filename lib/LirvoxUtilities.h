// The signal path's building blocks: history, windows, landmarks, hashes.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "HistoryInfo.h"
#include "Landmark.h"
#include "LirvoxAudioFFT.h"
#include "LirvoxExport.h"

namespace lirvox {

/// Stateless operations of the signal path. All may be called from any thread, on
/// data that no other thread uses meanwhile.
class LIRVOX_EXPORT LirvoxUtilities {
 public:
  LirvoxUtilities() = delete;

  /// A new, empty history record.
  static std::unique_ptr<HistoryInfo> initHistoryInfo();

  /// Empties the record for the next capture: no frames, no tail, first block.
  static void freeHistoryInfo(HistoryInfo& historyInfo);

  /// Does nothing, and must stay so: a record is emptied at the end of a pass by
  /// `freeHistoryInfo`, not at the start of the next one.
  static void clearHistoryInfo(HistoryInfo& historyInfo);

  /// Forwards to `LirvoxMiniSpectogram::do_4_mini_specgrams`.
  static void do_4_mini_specgrams(const float* samples, LirvoxAudioFFT& fft,
                                  HistoryInfo& historyInfo);

  /// The symmetric Hann window of n samples, w[i] = 0.5 - 0.5 cos(2 pi i / (n - 1))
  /// (Harris, "On the use of windows for harmonic analysis with the discrete
  /// Fourier transform", 1978). n = 1 gives one NaN.
  static std::vector<double> hanning(std::uint32_t n);

  /// `x` times the Hann window of its length.
  static std::vector<double> window_hanning(const std::vector<double>& x);

  /// Pairs peaks into landmarks: each anchor with up to three later peaks, 2 to 62
  /// frames ahead and at most 30 bins away, the earliest frames and lowest bins
  /// first (after Wang, "An industrial-strength audio search algorithm", 2003).
  /// `peaks` points to `rows_cnt` peaks ordered by frame, then bin.
  static std::vector<Landmark> peaks2landmarks(const Peak* peaks, std::int32_t rows_cnt);

  /// One hash per landmark, in their order: bits 19-12 hold f1, bits 11-6 hold
  /// f2 - f1 in two's complement, bits 5-0 hold dt.
  static std::vector<QueryHash> landmarks2hashes(const std::vector<Landmark>& landmarks);
};

}  // namespace lirvox
