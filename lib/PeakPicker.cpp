// Peaks of frames that come in parts.
#include "lib/PeakPicker.h"

#include <algorithm>
#include <array>

#include "lib/LirvoxSettings.h"

namespace lirvox {
namespace {

constexpr std::size_t kFramesOfFirstEnvelope = 10;

// The threshold that the first frames leave behind.
PeakPickingThreshold initialThreshold(const double* frames, std::size_t count, std::size_t bins) {
  PeakPickingThreshold threshold;
  std::array<double, PeakPickingThreshold::kBins> envelope;
  std::copy_n(frames, envelope.size(), envelope.begin());
  for (std::size_t t = 1; t < std::min(kFramesOfFirstEnvelope, count); ++t) {
    for (std::size_t b = 0; b < envelope.size(); ++b) {
      envelope[b] = std::max(envelope[b], frames[t * bins + b]);
    }
  }
  for (std::size_t b = 0; b < envelope.size(); ++b) {
    if (PeakPickingThreshold::isLocalMaximum(envelope.data(), b)) threshold.lift(b, envelope[b]);
  }
  return threshold;
}

}  // namespace

void PeakPicker::filterAndPick(double* frames, std::size_t count, std::vector<PickedPeak>& peaks) {
  const auto bins = static_cast<std::size_t>(LirvoxSettings::settingNumFreqs());
  for (std::size_t i = 0; i < count * bins; ++i) frames[i] -= mean_;
  filter_.apply(frames, count, frames, bins);
  pick(frames, count, peaks);
}

void PeakPicker::pick(const double* frames, std::size_t count, std::vector<PickedPeak>& peaks) {
  const auto bins = static_cast<std::size_t>(LirvoxSettings::settingNumFreqs());
  if (frame_ == 0 && count > 0) threshold_ = initialThreshold(frames, count, bins);
  for (std::size_t t = 0; t < count; ++t) pickFrame(frames + t * bins, peaks);
}

void PeakPicker::pickFrame(const double* frame, std::vector<PickedPeak>& peaks) {
  const auto firstOfFrame = static_cast<std::ptrdiff_t>(peaks.size());
  for (const auto& [bin, excess] : threshold_.accept(frame)) {
    peaks.push_back({{frame_, static_cast<std::int32_t>(bin)}, excess});
  }
  std::sort(peaks.begin() + firstOfFrame, peaks.end(),
            [](const PickedPeak& a, const PickedPeak& b) { return a.peak.bin < b.peak.bin; });
  threshold_.decay();
  ++frame_;
}

}  // namespace lirvox
