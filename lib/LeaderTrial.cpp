// Trials of orders around the leader.
#include "lib/LeaderTrial.h"

#include <algorithm>
#include <utility>

namespace lirvox {

bool ranksBelow(std::int32_t count, std::int32_t other) {
  return count != other && DecimalString(count) < DecimalString(other);
}

LeaderTrial::LeaderTrial(const HitsByTrack& hits, const TrackStatistics& statistics,
                         std::int32_t minimum)
    : statistics_(statistics),
      leaderHits_(hits.tracks()[statistics.leader()]),
      minimum_(minimum),
      trial_(hits) {}

void LeaderTrial::restart(std::int32_t count) {
  trial_.restart();
  count_ = count;
  best_ = DecimalString(0);
}

bool LeaderTrial::isHarmlessBefore(const VoteTrial::Visit& visit) const {
  const OffsetHistogram::Peak leader = statistics_[statistics_.leader()].peak;
  // The leader must still be able to raise the peak.
  if (visit.peak.height >= trial_.votes(leader.bin) + leader.height) return false;
  if (!visit.isCandidate) return true;
  // A window that overlaps the leader's takes its votes away.
  const bool isApart = visit.peak.bin > leader.bin + 2 || visit.peak.bin + 2 < leader.bin;
  return isApart && ranksBelow(visit.count, count_);
}

bool LeaderTrial::acceptBefore(const VoteTrial::Visit& visit) {
  if (!isHarmlessBefore(visit)) return false;
  if (visit.isCandidate) best_ = std::max(best_, DecimalString(visit.count));
  return true;
}

bool LeaderTrial::visitBefore(std::size_t track, Peak peak) {
  const std::int32_t height = trial_.peak().height;
  const auto keepsRule = [&](const VoteTrial::Visit& visit) {
    if (peak == Peak::kept) return !visit.isCandidate || visit.peak.height == height;
    return visit.isCandidate && visit.peak.height > height;
  };
  return !trial_.isVisited(track) && trial_.visit(track, [&](const VoteTrial::Visit& visit) {
    return keepsRule(visit) && acceptBefore(visit);
  });
}

std::vector<std::size_t> LeaderTrial::visitBefore(std::vector<std::size_t> tracks) {
  return trial_.visitAll(std::move(tracks),
                         [&](const VoteTrial::Visit& visit) { return acceptBefore(visit); });
}

bool LeaderTrial::visitLeader() {
  return trial_.visit(statistics_.leader(), [&](const VoteTrial::Visit& visit) {
    // Of equal counts the earlier candidate would win.
    const DecimalString count(visit.count);
    if (!visit.isCandidate || visit.count <= minimum_ || !(best_ < count)) return false;
    // In looped music, others may tip the balance to another place that is as right.
    if (OffsetHistogram::windowVotes(leaderHits_, visit.peak.bin) <= minimum_) return false;
    best_ = count;
    return true;
  });
}

bool LeaderTrial::isHarmlessBehind(const VoteTrial::Visit& visit) const {
  return !visit.isCandidate || !(best_ < DecimalString(visit.count));
}

std::vector<std::size_t> LeaderTrial::visitRest() {
  return trial_.visitAll(statistics_.ranking(),
                         [&](const VoteTrial::Visit& visit) { return isHarmlessBehind(visit); });
}

LeaderTrial::Bin LeaderTrial::placeOf(std::size_t refused) {
  Bin place = 0;
  trial_.visit(refused, [&](const VoteTrial::Visit& visit) {
    place = visit.peak.bin;
    return false;
  });
  return place;
}

std::int32_t LeaderTrial::windowVotes(Bin peak) const {
  std::int32_t votes = 0;
  for (Bin bin = OffsetHistogram::windowStart(peak); bin <= peak; ++bin) votes += trial_.votes(bin);
  return votes;
}

}  // namespace lirvox
