// Orders under which the vote answers with the leader.
#include "lib/LeaderPlans.h"

#include <algorithm>
#include <utility>

namespace lirvox {
namespace {

// The rounds of the search, each over all lineups: no front, the strongest ones, which
// serve best, and many. Ends of ranges over the choices of a front, the first being none.
constexpr std::size_t kRounds[] = {1, 4, 49};

// Lineups beyond the smallest one.
constexpr std::size_t kLifts = 4;

bool ranksBelow(std::int32_t count, std::int32_t other) {
  return count != other && DecimalString(count) < DecimalString(other);
}

std::int32_t firstDigit(std::int32_t count) {
  while (count >= 10) count /= 10;
  return count;
}

// Whether more supporters are worth it: they must win the count a new first digit.
bool isLift(std::int32_t smallest, std::int32_t latest, std::int32_t count) {
  return ranksBelow(smallest, count) && firstDigit(latest) != firstDigit(count);
}

}  // namespace

LeaderPlans::LeaderPlans(const HitsByTrack& hits, const TrackStatistics& statistics,
                         std::int32_t minimum)
    : statistics_(statistics),
      leaderHits_(hits.tracks()[statistics.leader()]),
      minimum_(minimum),
      trial_(hits) {}

std::optional<std::vector<std::size_t>> LeaderPlans::find() {
  const std::vector<Lineup> all = lineups();
  std::size_t begin = 0;
  for (const std::size_t end : kRounds) {
    for (const Lineup& lineup : all) {
      if (tryFronts(lineup, begin, end, false) || tryFronts(lineup, begin, end, true)) {
        return trial_.order();
      }
    }
    begin = end;
  }
  return std::nullopt;
}

std::vector<std::size_t> LeaderPlans::voters() const {
  std::vector<std::size_t> voters;
  for (const std::size_t track : statistics_.ranking()) {
    if (statistics_.votesForLeader(track) > 0 && track != statistics_.leader()) {
      voters.push_back(track);
    }
  }
  std::stable_sort(voters.begin(), voters.end(), [&](std::size_t a, std::size_t b) {
    return ranksBelow(statistics_.votesForLeader(b), statistics_.votesForLeader(a));
  });
  return voters;
}

std::vector<LeaderPlans::Lineup> LeaderPlans::lineups() const {
  const std::vector<std::size_t> all = voters();
  std::vector<Lineup> lineups;
  std::int32_t count = statistics_[statistics_.leader()].count;
  for (std::size_t size = 0; size <= all.size(); ++size) {
    const std::int32_t next = size < all.size() ? statistics_.votesForLeader(all[size]) : 0;
    const bool isComplete = !ranksBelow(count, next);
    if (isComplete &&
        (lineups.empty() || isLift(lineups.front().count, lineups.back().count, count))) {
      lineups.push_back({{all.begin(), all.begin() + static_cast<std::ptrdiff_t>(size)}, count});
    }
    count += next;
  }
  std::stable_sort(lineups.begin() + 1, lineups.end(),
                   [](const Lineup& a, const Lineup& b) { return ranksBelow(b.count, a.count); });
  lineups.resize(std::min(lineups.size(), 1 + kLifts));
  return lineups;
}

std::vector<std::optional<std::size_t>> LeaderPlans::fronts(const Lineup& lineup,
                                                            std::size_t most) const {
  std::vector<std::optional<std::size_t>> fronts{std::nullopt};
  for (const std::size_t track : statistics_.ranking()) {
    const TrackStatistics::Alignment& alignment = statistics_[track];
    if (fronts.size() == most || !alignment.peak.isCandidate()) break;
    if (track != statistics_.leader() && ranksBelow(alignment.count, lineup.count)) {
      fronts.emplace_back(track);
    }
  }
  return fronts;
}

bool LeaderPlans::tryFronts(const Lineup& lineup, std::size_t begin, std::size_t end,
                            bool isFilled) {
  const auto choices = fronts(lineup, end);
  for (std::size_t i = begin; i < choices.size() && !trial_.isExhausted(); ++i) {
    if (tryOrder(lineup, choices[i], isFilled)) return true;
  }
  return false;
}

bool LeaderPlans::tryOrder(const Lineup& lineup, std::optional<std::size_t> front, bool isFilled) {
  trial_.restart();
  best_ = DecimalString(0);
  if (front && !visitBefore({*front}, lineup).empty()) return false;
  return visitSupporters(lineup, isFilled) && visitLeader() && visitRest();
}

bool LeaderPlans::visitSupporters(const Lineup& lineup, bool isFilled) {
  std::vector<std::size_t> refused = visitBefore(lineup.supporters, lineup);
  if (!isFilled) return refused.empty();
  std::vector<std::size_t> fill;
  for (const std::size_t track : statistics_.ranking()) {
    if (statistics_.votesForLeader(track) == 0) fill.push_back(track);
  }
  std::reverse(fill.begin(), fill.end());
  visitBefore(std::move(fill), lineup);
  return visitBefore(std::move(refused), lineup).empty();
}

std::vector<std::size_t> LeaderPlans::visitBefore(std::vector<std::size_t> tracks,
                                                  const Lineup& lineup) {
  const OffsetHistogram::Peak leader = statistics_[statistics_.leader()].peak;
  return trial_.visitAll(std::move(tracks), [&](const VoteTrial::Visit& visit) {
    // The leader must still be able to raise the peak.
    if (visit.peak.height >= trial_.votes(leader.bin) + leader.height) return false;
    if (!visit.isCandidate) return true;
    // A window that overlaps the leader's takes its votes away.
    const bool isApart = visit.peak.bin > leader.bin + 2 || visit.peak.bin + 2 < leader.bin;
    if (!isApart || !ranksBelow(visit.count, lineup.count)) return false;
    best_ = std::max(best_, DecimalString(visit.count));
    return true;
  });
}

bool LeaderPlans::visitLeader() {
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

bool LeaderPlans::visitRest() {
  const auto isHarmless = [&](const VoteTrial::Visit& visit) {
    return !visit.isCandidate || !(best_ < DecimalString(visit.count));
  };
  return trial_.visitAll(statistics_.ranking(), isHarmless).empty();
}

}  // namespace lirvox
