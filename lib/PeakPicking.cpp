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

constexpr double kDynamicRange = 1e6;

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

// Calls `work(first, count)` for all frames of `specgram`, a few at a time.
template <typename Work>
void forFewFrames(const Spectrogram& specgram, Work work) {
  for (std::int32_t first = 0; first < specgram.frameCount(); first += kFramesAtOnce) {
    work(first, static_cast<std::size_t>(std::min(kFramesAtOnce, specgram.frameCount() - first)));
  }
}

// Takes the logarithms, given the largest value, and returns their mean. Of silence there
// is nothing to take, and its mean is 0.
double takeLogarithmsBelow(double largest, Spectrogram& specgram) {
  if (!(largest > 0.0)) return 0.0;
  double sum = 0.0;
  forFewFrames(specgram, [&](std::int32_t first, std::size_t count) {
    sum += takeLogarithmsOfFrames(specgram.frame(first), count, largest);
  });
  return sum / static_cast<double>(specgram.values().size());
}

// All stages that follow the scaling, in the memory of `density`.
std::vector<PickedPeak> findPeaksOfDensity(Spectrogram& density, double largest) {
  std::vector<PickedPeak> peaks;
  PeakPicker picker(takeLogarithmsBelow(largest, density));
  forFewFrames(density, [&](std::int32_t first, std::size_t count) {
    picker.filterAndPick(density.frame(first), count, peaks);
  });
  return peaks;
}

}  // namespace

double scaleToDensity(double* frames, std::size_t count) {
  const double once = 1.0 / (analysisWindowEnergy() * LirvoxSettings::settingSampleRate());
  const double twice = 2.0 * once;
  const auto bins = static_cast<std::size_t>(LirvoxSettings::settingNumFreqs());
  double largest = 0.0;
  for (double* values = frames; values != frames + count * bins; values += bins) {
    // DC and Nyquist have no mirror image, all others count twice.
    values[0] *= once;
    for (std::size_t b = 1; b < bins - 1; ++b) values[b] *= twice;
    values[bins - 1] *= once;
    largest = std::max(largest, largestOf(values, bins));
  }
  return largest;
}

double scaleToDensity(Spectrogram& specgram) {
  return scaleToDensity(specgram.values().data(), static_cast<std::size_t>(specgram.frameCount()));
}

double takeLogarithmsOfFrames(double* frames, std::size_t count, double largest) {
  const auto bins = static_cast<std::size_t>(LirvoxSettings::settingNumFreqs());
  return takeLogarithms(frames, count * bins, largest / kDynamicRange);
}

void takeLogarithm(Spectrogram& specgram) {
  std::vector<double>& values = specgram.values();
  const double mean = takeLogarithmsBelow(largestOf(values.data(), values.size()), specgram);
  for (double& value : values) value -= mean;
}

void highPass(Spectrogram& specgram) {
  double* const values = specgram.values().data();
  lfilter(values, static_cast<std::size_t>(specgram.frameCount()), values, specgram.binCount(),
          PeakPickingThreshold::kBins);
}

std::vector<Peak> withoutStrengths(const std::vector<PickedPeak>& picked) {
  std::vector<Peak> peaks;
  peaks.reserve(picked.size());
  for (const PickedPeak& one : picked) peaks.push_back(one.peak);
  return peaks;
}

std::vector<Peak> pickPeaks(const Spectrogram& filtered) {
  std::vector<PickedPeak> peaks;
  PeakPicker(0.0).pick(filtered.values().data(), static_cast<std::size_t>(filtered.frameCount()),
                       peaks);
  return withoutStrengths(peaks);
}

std::vector<Peak> findPeaks(Spectrogram& power) {
  const double largest = scaleToDensity(power);
  Spectrogram density = power;
  return withoutStrengths(findPeaksOfDensity(density, largest));
}

}  // namespace lirvox
