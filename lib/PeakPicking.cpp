// Power spectrogram to peaks, stage by stage.
#include "lib/PeakPicking.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "lib/Filter.h"
#include "lib/LirvoxSettings.h"
#include "lib/Window.h"

namespace lirvox {
namespace {

constexpr std::size_t kBins = 256;
constexpr std::size_t kPeaksPerFrame = 5;
constexpr std::int32_t kFramesOfFirstEnvelope = 10;
constexpr double kDynamicRange = 1e6;
constexpr float kSpreadingWidthInBins = 30.0F;
constexpr double kDecay = 0.995132369029;

using Column = std::array<double, kBins>;

// A Gaussian around index 256, rounded to single precision as the format wants it.
const std::array<double, 2 * kBins + 1>& spreadingKernel() {
  static const auto kernel = [] {
    std::array<double, 2 * kBins + 1> values{};
    for (std::size_t j = 0; j < values.size(); ++j) {
      const double distance =
          (static_cast<double>(j) - static_cast<double>(kBins)) / kSpreadingWidthInBins;
      values[j] = static_cast<float>(std::exp(-0.5 * distance * distance));
    }
    return values;
  }();
  return kernel;
}

// Of two equal neighbours the upper one is the maximum.
bool isLocalMaximum(const double* v, std::size_t i) {
  return (i == 0 || v[i] >= v[i - 1]) && (i == kBins - 1 || v[i + 1] < v[i]);
}

struct Candidate {
  std::size_t bin;
  double value;
};

// The masking threshold of the forward pass.
class Threshold {
 public:
  void lift(const Candidate& peak) {
    const double* const kernel = spreadingKernel().data() + kBins - peak.bin;
    for (std::size_t k = 0; k < kBins; ++k) {
      values_[k] = std::max(values_[k], kernel[k] * peak.value);
    }
  }

  void decay() {
    for (double& value : values_) value *= kDecay;
  }

  double operator[](std::size_t bin) const { return values_[bin]; }

 private:
  Column values_{};
};

// The threshold that the first frames leave behind.
Threshold initialThreshold(const Spectrogram& filtered) {
  Threshold threshold;
  if (filtered.frameCount() == 0) return threshold;
  Column envelope;
  std::copy_n(filtered.frame(0), kBins, envelope.begin());
  for (std::int32_t t = 1; t < std::min(kFramesOfFirstEnvelope, filtered.frameCount()); ++t) {
    for (std::size_t b = 0; b < kBins; ++b) {
      envelope[b] = std::max(envelope[b], filtered.frame(t)[b]);
    }
  }
  for (std::size_t b = 0; b < kBins; ++b) {
    if (isLocalMaximum(envelope.data(), b)) threshold.lift({b, envelope[b]});
  }
  return threshold;
}

// The strongest local maxima of a frame above the threshold. Where values are equal,
// the lower bin goes first: any order would do, as long as it is always the same.
std::vector<Candidate> strongestAbove(const Threshold& threshold, const double* column) {
  std::vector<Candidate> candidates;
  for (std::size_t b = 0; b < kBins; ++b) {
    if (column[b] > threshold[b] && isLocalMaximum(column, b)) candidates.push_back({b, column[b]});
  }
  const std::size_t kept = std::min(kPeaksPerFrame, candidates.size());
  std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(kept),
                    candidates.end(), [](const Candidate& a, const Candidate& b) {
                      return a.value != b.value ? a.value > b.value : a.bin < b.bin;
                    });
  candidates.resize(kept);
  return candidates;
}

}  // namespace

void scaleToDensity(Spectrogram& specgram) {
  const double energy = analysisWindowEnergy();
  const double sampleRate = LirvoxSettings::settingSampleRate();
  const std::size_t last = specgram.binCount() - 1;
  for (std::int32_t t = 0; t < specgram.frameCount(); ++t) {
    double* const values = specgram.frame(t);
    // DC and Nyquist have no mirror image, all others count twice.
    values[0] = values[0] / energy / sampleRate;
    for (std::size_t b = 1; b < last; ++b) values[b] = values[b] / energy * 2.0 / sampleRate;
    values[last] = values[last] / energy / sampleRate;
  }
}

void takeLogarithm(Spectrogram& specgram) {
  std::vector<double>& values = specgram.values();
  const double largest = std::accumulate(values.begin(), values.end(), 0.0,
                                         [](double a, double b) { return std::max(a, b); });
  if (largest > 0.0) {
    const double floor = largest / kDynamicRange;
    for (double& value : values) value = std::log(std::max(value, floor));
  }
  if (values.empty()) return;
  const double mean =
      std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
  for (double& value : values) value -= mean;
}

void highPass(Spectrogram& specgram) {
  double* const values = specgram.values().data();
  lfilter(values, static_cast<std::size_t>(specgram.frameCount()), values, specgram.binCount(),
          kBins);
}

std::vector<PickedPeak> pickPeaksWithStrength(const Spectrogram& filtered) {
  std::vector<PickedPeak> peaks;
  Threshold threshold = initialThreshold(filtered);
  for (std::int32_t t = 0; t < filtered.frameCount(); ++t) {
    const auto firstOfFrame = static_cast<std::ptrdiff_t>(peaks.size());
    // The list is fixed before the first of its peaks lifts the threshold: a later one
    // is not tested again.
    const std::vector<Candidate> accepted = strongestAbove(threshold, filtered.frame(t));
    for (const Candidate& peak : accepted) {
      peaks.push_back({{t, static_cast<std::int32_t>(peak.bin)}, peak.value - threshold[peak.bin]});
    }
    for (const Candidate& peak : accepted) threshold.lift(peak);
    std::sort(peaks.begin() + firstOfFrame, peaks.end(),
              [](const PickedPeak& a, const PickedPeak& b) { return a.peak.bin < b.peak.bin; });
    threshold.decay();
  }
  return peaks;
}

std::vector<Peak> pickPeaks(const Spectrogram& filtered) {
  std::vector<Peak> peaks;
  for (const PickedPeak& picked : pickPeaksWithStrength(filtered)) peaks.push_back(picked.peak);
  return peaks;
}

std::vector<PickedPeak> findPeaksWithStrength(Spectrogram&& power) {
  scaleToDensity(power);
  takeLogarithm(power);
  highPass(power);
  return pickPeaksWithStrength(power);
}

std::vector<Peak> findPeaks(Spectrogram& power) {
  scaleToDensity(power);
  Spectrogram work = power;
  takeLogarithm(work);
  highPass(work);
  return pickPeaks(work);
}

}  // namespace lirvox
