// The order in which the vote visits the tracks.
#include "lib/TrackOrder.h"

#include "lib/LeaderPlans.h"
#include "lib/SilencePlans.h"

namespace lirvox {
namespace {

// Whether another track has as many votes in the leader's window as make a result.
bool hasTwin(const TrackStatistics& statistics, std::int32_t minimum) {
  for (const std::size_t track : statistics.ranking()) {
    if (track != statistics.leader() && statistics.votesForLeader(track) > minimum) return true;
  }
  return false;
}

}  // namespace

bool LeaderStanding::standsOut() const {
  if (!exceedsMinimum()) return false;
  if (count() >= kTimesFourth * fourth()) return true;
  const std::int32_t noise = seventeenth();
  return noise > 0 && count() >= kTimesSeventeenth * noise;
}

PlannedOrder chooseTrackOrder(const HitsByTrack& hits, std::int32_t minimum) {
  if (hits.tracks().empty()) return {};
  const TrackStatistics statistics(hits);
  if (LeaderStanding(statistics, minimum).standsOut()) {
    const auto order = LeaderPlans(hits, statistics, minimum).find();
    if (order) return {*order, OrderAim::leaderWins};
    if (hasTwin(statistics, minimum)) return {statistics.ranking(), OrderAim::copyWins};
  }
  const auto silent = findSilentOrder(hits, statistics, minimum);
  if (silent) return {*silent, OrderAim::silence};
  return {statistics.ranking(), OrderAim::none};
}

}  // namespace lirvox
