// How well each track of a pass is aligned with the query.
#include "lib/TrackStatistics.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <tuple>

namespace lirvox {

TrackStatistics::TrackStatistics(const HitsByTrack& hits) {
  align(hits);
  rank(hits);
  const HitsByTrack::Bin peak = alignments_[leader()].peak.bin;
  votesForLeader_.reserve(hits.tracks().size());
  for (const HitsByTrack::Track& track : hits.tracks()) {
    votesForLeader_.push_back(OffsetHistogram::windowVotes(track, peak));
  }
}

void TrackStatistics::align(const HitsByTrack& hits) {
  OffsetHistogram histogram(hits.binCount());
  alignments_.reserve(hits.tracks().size());
  for (const HitsByTrack::Track& track : hits.tracks()) {
    histogram.add(track);
    alignments_.push_back({histogram.peak(), histogram.windowVotes()});
    histogram.clear(track);
    histogram.clearPeak();
  }
}

void TrackStatistics::rank(const HitsByTrack& hits) {
  const auto merit = [&](std::size_t track) {
    const HitsByTrack::Track& t = hits.tracks()[track];
    const Alignment& alignment = alignments_[track];
    // The smaller id decides last, so that the order does not depend on the hits'.
    return std::make_tuple(alignment.peak.height, alignment.count, t.hitCount(),
                           -std::int64_t{t.id.intValue()});
  };
  ranking_.resize(alignments_.size());
  std::iota(ranking_.begin(), ranking_.end(), std::size_t{0});
  std::sort(ranking_.begin(), ranking_.end(),
            [&](std::size_t a, std::size_t b) { return merit(a) > merit(b); });
}

std::int32_t TrackStatistics::countBehindLeader(std::size_t place) const {
  std::vector<std::int32_t> counts;
  for (const std::size_t track : ranking_) counts.push_back(alignments_[track].count);
  if (place >= counts.size()) return 0;
  const auto nth = counts.begin() + static_cast<std::ptrdiff_t>(place);
  std::nth_element(counts.begin() + 1, nth, counts.end(), std::greater<>());
  return *nth;
}

}  // namespace lirvox
