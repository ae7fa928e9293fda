// The order in which the vote visits the tracks.
#include "lib/TrackOrder.h"

#include "lib/LeaderPlans.h"
#include "lib/SilencePlans.h"
#include "lib/TrackStatistics.h"

namespace lirvox {
namespace {

// Sound that is in no track has a best aligned one too, but not far ahead of the others.
// Only far down the ranking are the others sure to be there by chance: the first places
// may hold copies of the recording, as large catalogues do. So the leader must be well
// above the fourth best, or far above the 17th: four copies are told from noise by the
// one and up to 16 by the other.
bool standsOut(const TrackStatistics& statistics, std::int32_t minimum) {
  const std::int64_t count = statistics[statistics.leader()].count;
  if (count <= minimum) return false;
  if (4 * count >= 7 * std::int64_t{statistics.countBehindLeader(3)}) return true;
  const std::int64_t noise = statistics.countBehindLeader(16);
  return noise > 0 && count >= 4 * noise;
}

// Whether another track has as many votes in the leader's window as make a result.
bool hasTwin(const TrackStatistics& statistics, std::int32_t minimum) {
  for (const std::size_t track : statistics.ranking()) {
    if (track != statistics.leader() && statistics.votesForLeader(track) > minimum) return true;
  }
  return false;
}

}  // namespace

std::vector<std::size_t> chooseTrackOrder(const HitsByTrack& hits, std::int32_t minimum) {
  if (hits.tracks().empty()) return {};
  const TrackStatistics statistics(hits);
  if (standsOut(statistics, minimum)) {
    const auto order = LeaderPlans(hits, statistics, minimum).find();
    if (order) return *order;
    if (hasTwin(statistics, minimum)) return statistics.ranking();
  }
  return findSilentOrder(hits, statistics, minimum).value_or(statistics.ranking());
}

}  // namespace lirvox
