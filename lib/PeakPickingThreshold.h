// The masking threshold of peak picking: what a value must exceed to be a peak.
#pragma once

#include <array>
#include <cstddef>

namespace lirvox {

/// One threshold per bin, lifted by each accepted peak in the shape of a Gaussian around
/// its bin, and decaying from frame to frame. Begins at 0. Allocates nothing.
class PeakPickingThreshold {
 public:
  static constexpr std::size_t kBins = 256;
  static constexpr std::size_t kPeaksPerFrame = 5;

  /// A peak of one frame, and by how much it exceeds the threshold that it met.
  struct Accepted {
    std::size_t bin;
    double excess;
  };

  /// The peaks of one frame, strongest first.
  class AcceptedPeaks {
   public:
    const Accepted* begin() const { return peaks_.data(); }
    const Accepted* end() const { return peaks_.data() + count_; }

   private:
    friend class PeakPickingThreshold;
    std::array<Accepted, kPeaksPerFrame> peaks_{};
    std::size_t count_ = 0;
  };

  /// Whether bin `i` of the 256 values `v` is a local maximum: of two equal neighbours,
  /// the upper one is.
  static bool isLocalMaximum(const double* v, std::size_t i) {
    return (i == 0 || v[i] >= v[i - 1]) && (i == kBins - 1 || v[i + 1] < v[i]);
  }

  /// Finds the local maxima of `column` above the threshold, lets the 5 strongest lift
  /// it, and returns them.
  AcceptedPeaks accept(const double* column);

  /// Lifts the threshold by a peak.
  void lift(std::size_t bin, double value);

  /// To be called after each frame.
  void decay();

 private:
  AcceptedPeaks strongestAbove(const double* column) const;

  std::array<double, kBins> values_{};
};

}  // namespace lirvox
