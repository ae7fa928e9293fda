// The fingerprint of one track for a database.
#include "catalog/TrackFingerprinter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"
#include "lib/ProcessingPass.h"
#include "lib/Spectrogram.h"

namespace lirvox::catalog {
namespace {

// The strength of the peak at (frame, bin), which is one of `picked`.
double strengthAt(const std::vector<PickedPeak>& picked, std::int32_t frame, std::int32_t bin) {
  return std::lower_bound(picked.begin(), picked.end(), Peak{frame, bin},
                          [](const PickedPeak& a, const Peak& b) {
                            return a.peak.frame != b.frame ? a.peak.frame < b.frame
                                                           : a.peak.bin < b.bin;
                          })
      ->strength;
}

}  // namespace

void TrackFingerprinter::add(const std::int32_t* words, std::size_t count) {
  const std::size_t old = samples_.size();
  samples_.resize(old + count);
  convertSamples(words, count, samples_.data() + old);
}

// Adds what one alignment of the frame grid shows, the one that starts at `offset`.
void TrackFingerprinter::look(std::size_t offset, std::vector<Sighting>& sightings) {
  const auto size = static_cast<std::size_t>(LirvoxSettings::settingNFFT());
  const auto hop = static_cast<std::size_t>(LirvoxSettings::settingNHop());
  if (samples_.size() < offset + size) return;
  const std::size_t frames = (samples_.size() - offset - size) / hop + 1;
  Spectrogram specgram;
  DoubleSplitComplex ignored;
  appendPowerFrames(samples_.data() + offset, 0, static_cast<std::int32_t>(frames), fft_, specgram,
                    ignored);
  const std::vector<PickedPeak> picked = findPeaksWithStrength(std::move(specgram));
  const std::vector<Peak> peaks = withoutStrengths(picked);
  const std::vector<Landmark> landmarks =
      LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size()));
  const std::vector<QueryHash> hashes = LirvoxUtilities::landmarks2hashes(landmarks);
  for (std::size_t i = 0; i < landmarks.size(); ++i) {
    const auto& [t1, f1, f2, dt] = landmarks[i];
    sightings.push_back(
        {hashes[i], std::min(strengthAt(picked, t1, f1), strengthAt(picked, t1 + dt, f2))});
  }
}

std::vector<QueryHash> TrackFingerprinter::finish() {
  std::vector<Sighting> sightings;
  const auto alignments = static_cast<std::size_t>(rule_.alignments);
  const auto hop = static_cast<std::size_t>(LirvoxSettings::settingNHop());
  for (std::size_t i = 0; i < alignments; ++i) look(i * hop / alignments, sightings);
  const double hours =
      static_cast<double>(samples_.size()) / LirvoxSettings::settingSampleRate() / 3600.0;
  samples_.clear();
  if (rule_.rowsPerHour == 0) return allRows(std::move(sightings));
  return bestRows(std::move(sightings),
                  static_cast<std::size_t>(std::ceil(hours * rule_.rowsPerHour)));
}

}  // namespace lirvox::catalog
