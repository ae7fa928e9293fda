// The fingerprint of one track for a database.
#include "catalog/TrackFingerprinter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"
#include "lib/ProcessingPass.h"

namespace lirvox::catalog {
namespace {

// A landmark ends at most this many frames after its anchor.
constexpr std::int32_t kLongestLandmark = 62;
constexpr std::int32_t kFramesToPair = 2048;
constexpr std::int32_t kFramesToSelect = 4096;
constexpr std::size_t kSightingsToRead = 256;
constexpr std::int32_t kEnd = std::numeric_limits<std::int32_t>::max();

// Sightings of one alignment, in the order of their times.
class SightingReader {
 public:
  explicit SightingReader(const Spool<Sighting>& spool) : spool_(spool) {}

  bool atEnd() const { return next_ == buffer_.size() && read_ == spool_.size(); }

  // Moves those of frames before `end` to `sightings`.
  void takeBefore(std::int32_t end, std::vector<Sighting>& sightings) {
    while (refill() && buffer_[next_].row.time < end) sightings.push_back(buffer_[next_++]);
  }

 private:
  bool refill() {
    if (next_ < buffer_.size()) return true;
    buffer_.resize(std::min(kSightingsToRead, spool_.size() - read_));
    spool_.read(read_, buffer_.size(), buffer_.data());
    read_ += buffer_.size();
    next_ = 0;
    return !buffer_.empty();
  }

  const Spool<Sighting>& spool_;
  std::vector<Sighting> buffer_;
  std::size_t next_ = 0;
  std::size_t read_ = 0;
};

// Frames of half an hour: mixes and long movements are worth the memory, since computing
// frames again takes half as much time again.
std::size_t framesToHold(std::size_t samplesInMemory) {
  return samplesInMemory / 2 * 5 / static_cast<std::size_t>(LirvoxSettings::settingNHop());
}

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

TrackFingerprinter::TrackFingerprinter(const RowRule& rule, std::size_t samplesInMemory,
                                       const std::function<void()>& checkpoint)
    : rule_(rule),
      checkpoint_(checkpoint),
      samples_(samplesInMemory * sizeof(float)),
      spectrogram_(framesToHold(samplesInMemory), checkpoint),
      selection_(rule.rowsPerHour > 0, samplesInMemory) {
  for (int i = 0; i < rule.alignments; ++i) sightings_.emplace_back(samplesInMemory / 8);
}

void TrackFingerprinter::add(const std::int32_t* words, std::size_t count) {
  converted_.resize(count);
  convertSamples(words, count, converted_.data());
  samples_.append(converted_.data(), count);
}

void TrackFingerprinter::clear() {
  samples_.clear();
  for (Spool<Sighting>& sightings : sightings_) sightings.clear();
  selection_.clear();
}

// Gathers what one alignment of the frame grid shows, the one that starts at `offset`.
void TrackFingerprinter::look(std::size_t offset, Spool<Sighting>& sightings) {
  spectrogram_.analyse(samples_, offset);
  if (spectrogram_.isSilent()) return;
  constexpr std::size_t kStep = kFramesAtOnce;
  PeakPicker picker(spectrogram_.meanLogarithm());
  std::vector<PickedPeak> picked;
  for (std::size_t first = 0; first < spectrogram_.frameCount(); first += kStep) {
    checkpoint_();
    if (first % kFramesToPair == 0) pair(picked, static_cast<std::int32_t>(first), sightings);
    const std::size_t count = std::min(kStep, spectrogram_.frameCount() - first);
    picker.filterAndPick(spectrogram_.logarithms(first, count), count, picked);
  }
  pair(picked, kEnd, sightings);
}

// Pairs the anchors that no peak at or after `end` can reach, and forgets their peaks.
void TrackFingerprinter::pair(std::vector<PickedPeak>& picked, std::int32_t end,
                              Spool<Sighting>& sightings) {
  const std::vector<Peak> peaks = withoutStrengths(picked);
  const std::vector<Landmark> landmarks =
      LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size()));
  const std::vector<QueryHash> hashes = LirvoxUtilities::landmarks2hashes(landmarks);
  std::vector<Sighting> found;
  const std::int32_t endOfAnchors = end - kLongestLandmark;
  for (std::size_t i = 0; i < landmarks.size() && landmarks[i].t1 < endOfAnchors; ++i) {
    const auto& [t1, f1, f2, dt] = landmarks[i];
    const double strength = std::min(strengthAt(picked, t1, f1), strengthAt(picked, t1 + dt, f2));
    found.push_back({hashes[i], static_cast<float>(strength)});
  }
  sightings.append(found.data(), found.size());
  const auto rest = std::find_if(picked.begin(), picked.end(), [&](const PickedPeak& one) {
    return one.peak.frame >= endOfAnchors;
  });
  picked.erase(picked.begin(), rest);
}

// Hands the sightings of all alignments over, a stretch of the track at a time.
std::vector<QueryHash> TrackFingerprinter::select() {
  std::vector<SightingReader> readers(sightings_.begin(), sightings_.end());
  const auto more = [](const SightingReader& reader) { return !reader.atEnd(); };
  std::vector<Sighting> stretch;
  for (std::int32_t end = kFramesToSelect; std::any_of(readers.begin(), readers.end(), more);
       end += kFramesToSelect) {
    checkpoint_();
    stretch.clear();
    for (SightingReader& reader : readers) reader.takeBefore(end, stretch);
    selection_.add(stretch, end);
  }
  const double hours =
      static_cast<double>(samples_.size()) / LirvoxSettings::settingSampleRate() / 3600.0;
  return selection_.finish(static_cast<std::size_t>(std::ceil(hours * rule_.rowsPerHour)));
}

std::vector<QueryHash> TrackFingerprinter::finish() {
  const auto hop = static_cast<std::size_t>(LirvoxSettings::settingNHop());
  for (std::size_t i = 0; i < sightings_.size(); ++i) {
    look(i * hop / sightings_.size(), sightings_[i]);
  }
  std::vector<QueryHash> rows = select();
  clear();
  return rows;
}

}  // namespace lirvox::catalog
