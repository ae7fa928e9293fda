// Power spectrogram to peaks, stage by stage.
#include "lib/PeakPicking.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "lib/Filter.h"
#include "lib/Lanes.h"
#include "lib/LirvoxSettings.h"
#include "lib/Logarithm.h"
#include "lib/PeakPickingThreshold.h"
#include "lib/Window.h"

namespace lirvox {
namespace {

constexpr std::int32_t kFramesOfFirstEnvelope = 10;
constexpr double kDynamicRange = 1e6;

// Frames that one stage hands to the next while they are in the processor's cache. The
// first of them must hold the frames of the first envelope.
constexpr std::int32_t kFramesAtOnce = 32;
static_assert(kFramesAtOnce >= kFramesOfFirstEnvelope);

double largestOf(const double* values, std::size_t count) {
  constexpr std::size_t kStep = 4 * kLanes;
  std::array<double, kStep> largest{};
  std::size_t i = 0;
  for (; i + kStep <= count; i += kStep) {
    for (std::size_t k = 0; k < kStep; k += kLanes) {
      store(larger(load<Lanes>(&largest[k]), load<Lanes>(values + i + k)), &largest[k]);
    }
  }
  for (; i < count; ++i) largest[0] = std::max(largest[0], values[i]);
  return *std::max_element(largest.begin(), largest.end());
}

// Scales to a density and returns the largest value, at least 0.
double scaleAndFindLargest(Spectrogram& specgram) {
  const double once = 1.0 / (analysisWindowEnergy() * LirvoxSettings::settingSampleRate());
  const double twice = 2.0 * once;
  const std::size_t last = specgram.binCount() - 1;
  double largest = 0.0;
  for (std::int32_t t = 0; t < specgram.frameCount(); ++t) {
    double* const values = specgram.frame(t);
    // DC and Nyquist have no mirror image, all others count twice.
    values[0] *= once;
    for (std::size_t b = 1; b < last; ++b) values[b] *= twice;
    values[last] *= once;
    largest = std::max(largest, largestOf(values, specgram.binCount()));
  }
  return largest;
}

// Takes the logarithms, given the largest value, and returns their mean. Of silence there
// is nothing to take, and its mean is 0.
double takeLogarithmsBelow(double largest, std::vector<double>& values) {
  if (!(largest > 0.0)) return 0.0;
  return takeLogarithms(values.data(), values.size(), largest / kDynamicRange) /
         static_cast<double>(values.size());
}

void subtract(double mean, double* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) values[i] -= mean;
}

// The threshold that the first frames leave behind.
PeakPickingThreshold initialThreshold(const Spectrogram& filtered) {
  PeakPickingThreshold threshold;
  std::array<double, PeakPickingThreshold::kBins> envelope;
  std::copy_n(filtered.frame(0), envelope.size(), envelope.begin());
  for (std::int32_t t = 1; t < std::min(kFramesOfFirstEnvelope, filtered.frameCount()); ++t) {
    const double* const column = filtered.frame(t);
    for (std::size_t b = 0; b < envelope.size(); ++b) {
      envelope[b] = std::max(envelope[b], column[b]);
    }
  }
  for (std::size_t b = 0; b < envelope.size(); ++b) {
    if (PeakPickingThreshold::isLocalMaximum(envelope.data(), b)) threshold.lift(b, envelope[b]);
  }
  return threshold;
}

// Appends the peaks of frame t.
void pickFrame(const double* column, std::int32_t t, PeakPickingThreshold& threshold,
               std::vector<PickedPeak>& peaks) {
  const auto firstOfFrame = static_cast<std::ptrdiff_t>(peaks.size());
  for (const auto& [bin, excess] : threshold.accept(column)) {
    peaks.push_back({{t, static_cast<std::int32_t>(bin)}, excess});
  }
  std::sort(peaks.begin() + firstOfFrame, peaks.end(),
            [](const PickedPeak& a, const PickedPeak& b) { return a.peak.bin < b.peak.bin; });
  threshold.decay();
}

// Picks the peaks of a spectrogram, a few frames of which `filter(first, last)` makes
// ready at a time.
template <typename Filter>
std::vector<PickedPeak> pickPeaksAfter(Filter filter, const Spectrogram& specgram) {
  std::vector<PickedPeak> peaks;
  PeakPickingThreshold threshold;
  for (std::int32_t first = 0; first < specgram.frameCount(); first += kFramesAtOnce) {
    const std::int32_t last = std::min(first + kFramesAtOnce, specgram.frameCount());
    filter(first, last);
    if (first == 0) threshold = initialThreshold(specgram);
    for (std::int32_t t = first; t < last; ++t) pickFrame(specgram.frame(t), t, threshold, peaks);
  }
  return peaks;
}

// All stages that follow the scaling, in the memory of `density`.
std::vector<PickedPeak> findPeaksOfDensity(Spectrogram& density, double largest) {
  const double mean = takeLogarithmsBelow(largest, density.values());
  const std::size_t bins = density.binCount();
  HighPass filter(PeakPickingThreshold::kBins);
  return pickPeaksAfter(
      [&](std::int32_t first, std::int32_t last) {
        const auto count = static_cast<std::size_t>(last - first);
        double* const values = density.frame(first);
        subtract(mean, values, count * bins);
        filter.apply(values, count, values, bins);
      },
      density);
}

}  // namespace

void scaleToDensity(Spectrogram& specgram) {
  scaleAndFindLargest(specgram);
}

void takeLogarithm(Spectrogram& specgram) {
  std::vector<double>& values = specgram.values();
  const double mean = takeLogarithmsBelow(largestOf(values.data(), values.size()), values);
  subtract(mean, values.data(), values.size());
}

void highPass(Spectrogram& specgram) {
  double* const values = specgram.values().data();
  lfilter(values, static_cast<std::size_t>(specgram.frameCount()), values, specgram.binCount(),
          PeakPickingThreshold::kBins);
}

std::vector<PickedPeak> pickPeaksWithStrength(const Spectrogram& filtered) {
  return pickPeaksAfter([](std::int32_t, std::int32_t) {}, filtered);
}

std::vector<Peak> withoutStrengths(const std::vector<PickedPeak>& picked) {
  std::vector<Peak> peaks;
  peaks.reserve(picked.size());
  for (const PickedPeak& one : picked) peaks.push_back(one.peak);
  return peaks;
}

std::vector<Peak> pickPeaks(const Spectrogram& filtered) {
  return withoutStrengths(pickPeaksWithStrength(filtered));
}

std::vector<PickedPeak> findPeaksWithStrength(Spectrogram&& power) {
  return findPeaksOfDensity(power, scaleAndFindLargest(power));
}

std::vector<Peak> findPeaks(Spectrogram& power) {
  const double largest = scaleAndFindLargest(power);
  Spectrogram density = power;
  return withoutStrengths(findPeaksOfDensity(density, largest));
}

}  // namespace lirvox
