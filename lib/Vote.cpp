// The vote over offsets.
#include "lib/Vote.h"

#include <algorithm>

namespace lirvox {
namespace {

constexpr std::int32_t kPeakThreshold = 5;

// Votes per offset of all tracks visited so far, and where they peak.
class OffsetHistogram {
 public:
  explicit OffsetHistogram(std::size_t binCount) : votes_(binCount) {}

  void add(HitsByTrack::Bin bin) {
    const std::int32_t votes = ++votes_[bin];
    // The peak is kept one above the votes that set it.
    if (votes + 1 > peak_) {
      peak_ = votes + 1;
      peakBin_ = bin;
    }
  }

  bool hasPeak() const { return peak_ > kPeakThreshold; }
  HitsByTrack::Bin peakBin() const { return peakBin_; }

  // Takes the votes out of the window around the peak: the peak's bin and the two
  // below it, but not the one above, as is meant.
  std::int32_t takeWindow() {
    std::int32_t sum = 0;
    for (std::size_t bin = peakBin_ < 2 ? 0 : peakBin_ - 2; bin <= peakBin_; ++bin) {
      sum += votes_[bin];
      votes_[bin] = 0;
    }
    return sum;
  }

 private:
  std::vector<std::int32_t> votes_;
  std::int32_t peak_ = -1;
  HitsByTrack::Bin peakBin_ = 0;
};

}  // namespace

VoteOutcome vote(const HitsByTrack& hits, const std::vector<std::size_t>& order) {
  VoteOutcome outcome;
  OffsetHistogram histogram(hits.binCount());
  for (const std::size_t index : order) {
    const HitsByTrack::Track& track = hits.tracks()[index];
    const std::int32_t count = track.hitCount();
    if (count > outcome.rawBestCount) {
      outcome.rawBestCount = count;
      outcome.rawBestTrack = track.id.intValue();
    }
    for (const HitsByTrack::Bin bin : track) histogram.add(bin);
    if (!histogram.hasPeak()) continue;
    const DecimalString time(hits.offset(histogram.peakBin()));
    const DecimalString votes(histogram.takeWindow());
    outcome.candidates.push_back({track.id, votes, time, DecimalString(count)});
  }
  return outcome;
}

std::optional<LirvoxResult> chooseResult(const std::vector<LirvoxResult>& candidates,
                                         std::int32_t minimum) {
  const auto best = std::max_element(
      candidates.begin(), candidates.end(),
      [](const LirvoxResult& a, const LirvoxResult& b) { return a.result_count < b.result_count; });
  if (best == candidates.end() || best->result_count.intValue() <= minimum) return std::nullopt;
  return *best;
}

}  // namespace lirvox
