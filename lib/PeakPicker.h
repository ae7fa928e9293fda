// Peaks of frames that come in parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Filter.h"
#include "Landmark.h"
#include "PeakPickingThreshold.h"

namespace lirvox {

/// A peak and how far it stood above the threshold when it was accepted.
struct PickedPeak {
  Peak peak;
  double strength;
};

/// The last stages of peak picking, which look back but never ahead: the high-pass and
/// the threshold. The first part must hold the frames of the first envelope, 10, or all
/// there are.
class PeakPicker {
 public:
  /// `mean` is that of all logarithms of the spectrogram.
  explicit PeakPicker(double mean) : mean_(mean), filter_(PeakPickingThreshold::kBins) {}

  /// Filters the logarithms of the next `count` frames in place, 257 values each, and
  /// appends their peaks to `peaks`, ordered by frame, then bin.
  void filterAndPick(double* frames, std::size_t count, std::vector<PickedPeak>& peaks);

  /// The same for frames that are filtered already.
  void pick(const double* frames, std::size_t count, std::vector<PickedPeak>& peaks);

 private:
  void pickFrame(const double* frame, std::vector<PickedPeak>& peaks);

  const double mean_;
  HighPass filter_;
  PeakPickingThreshold threshold_;
  std::int32_t frame_ = 0;  // the next one
};

}  // namespace lirvox
