// A spectrogram: one value per frequency bin and frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "LirvoxExport.h"

namespace lirvox {

/// Values of 257 bins (0 is DC, 256 the Nyquist frequency) by any number of frames.
///
/// Frames lie one after the other, each with its bins side by side: frames are
/// what is appended, and every later stage walks them in time with all bins abreast.
class LIRVOX_EXPORT Spectrogram {
 public:
  /// An empty spectrogram of `LirvoxSettings::settingNumFreqs()` bins.
  Spectrogram();

  /// How much it holds.
  std::size_t binCount() const { return binCount_; }
  std::int32_t frameCount() const { return static_cast<std::int32_t>(values_.size() / binCount_); }

  /// Frame t in [0, frameCount()), as `binCount()` values.
  double* frame(std::int32_t t) { return values_.data() + static_cast<std::size_t>(t) * binCount_; }
  const double* frame(std::int32_t t) const {
    return values_.data() + static_cast<std::size_t>(t) * binCount_;
  }

  /// All values, frame after frame.
  std::vector<double>& values() { return values_; }
  const std::vector<double>& values() const { return values_; }

  /// Makes room for `count` more frames and returns the first of them, zero-filled.
  /// The room grows by doubling: a recording of any length costs linear time.
  double* appendFrames(std::int32_t count);

  /// Removes all frames and gives their memory back, except as much as a capture of the
  /// default length needs: the next one finds it ready.
  void clear();

 private:
  std::size_t binCount_;
  std::vector<double> values_;
};

}  // namespace lirvox
