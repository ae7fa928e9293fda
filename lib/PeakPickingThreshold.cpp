// The masking threshold of peak picking: what a value must exceed to be a peak.
#include "lib/PeakPickingThreshold.h"

#include <algorithm>
#include <cmath>

#include "lib/Lanes.h"

namespace lirvox {
namespace {

constexpr float kSpreadingWidthInBins = 30.0F;
constexpr double kDecay = 0.995132369029;
constexpr std::size_t kBinsPerLook = 16;

using Kernel = std::array<double, 2 * PeakPickingThreshold::kBins + 1>;

// A Gaussian around index 256, rounded to single precision as the format wants it. That
// also makes it the same on every processor: none of these values lies so near the middle
// of two floats that the last bit of the exponential function could decide between them.
Kernel makeKernel() {
  Kernel kernel{};
  for (std::size_t j = 0; j < kernel.size(); ++j) {
    const double distance = (static_cast<double>(j) - PeakPickingThreshold::kBins) /
                            static_cast<double>(kSpreadingWidthInBins);
    kernel[j] = static_cast<double>(static_cast<float>(std::exp(-0.5 * distance * distance)));
  }
  return kernel;
}

const Kernel& spreadingKernel() {
  static const Kernel kernel = makeKernel();
  return kernel;
}

// Whether any of a few bins exceeds its threshold: seldom enough to look at many at once.
bool anyAbove(const double* column, const double* threshold) {
  auto above = load<Lanes>(column) > load<Lanes>(threshold);
  for (std::size_t i = kLanes; i < kBinsPerLook; i += kLanes) {
    above |= load<Lanes>(column + i) > load<Lanes>(threshold + i);
  }
  return (above[0] | above[1]) != 0;
}

}  // namespace

PeakPickingThreshold::AcceptedPeaks PeakPickingThreshold::accept(const double* column) {
  // The list is fixed before the first of its peaks lifts the threshold: a later one is
  // not tested again.
  const AcceptedPeaks accepted = strongestAbove(column);
  for (const Accepted& peak : accepted) lift(peak.bin, column[peak.bin]);
  return accepted;
}

// Where values are equal, the lower bin goes first: any order would do, as long as it is
// always the same.
PeakPickingThreshold::AcceptedPeaks PeakPickingThreshold::strongestAbove(
    const double* column) const {
  AcceptedPeaks strongest;
  const auto insert = [&](std::size_t bin) {
    std::size_t rank = strongest.count_;
    while (rank > 0 && column[bin] > column[strongest.peaks_[rank - 1].bin]) --rank;
    if (rank == kPeaksPerFrame) return;
    if (strongest.count_ < kPeaksPerFrame) ++strongest.count_;
    const auto place = strongest.peaks_.begin() + static_cast<std::ptrdiff_t>(rank);
    const auto end = strongest.peaks_.begin() + static_cast<std::ptrdiff_t>(strongest.count_);
    std::copy_backward(place, end - 1, end);
    *place = {bin, column[bin] - values_[bin]};
  };
  for (std::size_t begin = 0; begin < kBins; begin += kBinsPerLook) {
    if (!anyAbove(column + begin, &values_[begin])) continue;
    for (std::size_t b = begin; b < begin + kBinsPerLook; ++b) {
      if (column[b] > values_[b] && isLocalMaximum(column, b)) insert(b);
    }
  }
  return strongest;
}

void PeakPickingThreshold::lift(std::size_t bin, double value) {
  const double* const kernel = &spreadingKernel()[kBins - bin];
  for (std::size_t k = 0; k < kBins; ++k) values_[k] = std::max(values_[k], kernel[k] * value);
}

void PeakPickingThreshold::decay() {
  for (double& value : values_) value *= kDecay;
}

}  // namespace lirvox
