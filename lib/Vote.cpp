// The vote over offsets.
#include "lib/Vote.h"

#include <algorithm>

#include "lib/OffsetHistogram.h"

namespace lirvox {
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
    histogram.add(track);
    if (!histogram.peak().isCandidate()) continue;
    const DecimalString time(hits.offset(histogram.peak().bin));
    const DecimalString votes(histogram.windowVotes());
    histogram.clearWindow();
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
