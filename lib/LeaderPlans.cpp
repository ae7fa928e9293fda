// Orders under which the vote answers with the leader.
#include "lib/LeaderPlans.h"

#include <algorithm>
#include <utility>

namespace lirvox {
namespace {

// The most fronts that go before the supporters, and how many tracks are tried as the first
// of one, two and three. The strongest serve best.
constexpr std::size_t kMostFronts = 3;
constexpr std::size_t kFirst[] = {0, 24, 8, 8};

// Lineups beyond the smallest one.
constexpr std::size_t kLifts = 4;

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
      trial_(hits, statistics, minimum),
      fronts_(hits, statistics, trial_) {}

std::optional<std::vector<std::size_t>> LeaderPlans::find() {
  for (const Lineup& lineup : lineups()) {
    if (tryLineup(lineup)) return trial_.order();
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

std::vector<std::size_t> LeaderPlans::frontsFor(const Lineup& lineup) const {
  std::vector<std::size_t> fronts;
  for (const std::size_t track : statistics_.ranking()) {
    const TrackStatistics::Alignment& alignment = statistics_[track];
    if (fronts.size() == kFirst[1] || !alignment.peak.isCandidate()) break;
    if (track != statistics_.leader() && Fronts::canBeFront(alignment.count, lineup.count)) {
      fronts.push_back(track);
    }
  }
  return fronts;
}

bool LeaderPlans::tryLineup(const Lineup& lineup) {
  const auto opening = open(lineup);
  if (!opening) return false;
  if (trial_.visitLeader()) {
    const std::vector<std::size_t> refused = trial_.visitRest();
    if (refused.empty()) return true;
    if (trial_.isExhausted()) return false;
    const std::vector<Fronts::Crowd> crowds = fronts_.crowdsOf(refused);
    if (!crowds.empty() && reopen(lineup, *opening, crowds) && finish()) return true;
  }
  if (!reopen(lineup, *opening, {})) return false;
  fill();
  return finish();
}

// Visits as few fronts as it takes, and the supporters. Returns the fronts, or nothing if
// supporters are refused whatever the fronts.
std::optional<std::vector<std::size_t>> LeaderPlans::open(const Lineup& lineup) {
  const std::vector<std::size_t> fronts = frontsFor(lineup);
  for (std::size_t count = 0; count <= kMostFronts; ++count) {
    const std::size_t tried = count == 0 ? 1 : std::min(kFirst[count], fronts.size());
    for (std::size_t first = 0; first < tried && !trial_.isExhausted(); ++first) {
      trial_.restart(lineup.count);
      const std::vector<std::size_t> raised = raiseFrom(fronts, first, count);
      if (raised.size() == count && visitSupporters(lineup)) return raised;
    }
  }
  return std::nullopt;
}

std::vector<std::size_t> LeaderPlans::raiseFrom(const std::vector<std::size_t>& fronts,
                                                std::size_t first, std::size_t count) {
  std::vector<std::size_t> raised;
  if (count == 0 || !fronts_.raise(fronts[first])) return raised;
  raised.push_back(fronts[first]);
  for (std::size_t i = 0; i < fronts.size() && raised.size() < count; ++i) {
    if (fronts_.raise(fronts[i])) raised.push_back(fronts[i]);
  }
  return raised;
}

bool LeaderPlans::reopen(const Lineup& lineup, const std::vector<std::size_t>& fronts,
                         const std::vector<Fronts::Crowd>& crowds) {
  trial_.restart(lineup.count);
  for (const Fronts::Crowd& crowd : crowds) {
    if (!fronts_.clear(crowd)) return false;
  }
  for (const std::size_t front : fronts) {
    if (!fronts_.raise(front)) return false;
  }
  return visitSupporters(lineup);
}

bool LeaderPlans::visitSupporters(const Lineup& lineup) {
  return trial_.visitBefore(lineup.supporters).empty();
}

bool LeaderPlans::finish() {
  return trial_.visitLeader() && trial_.visitRest().empty();
}

void LeaderPlans::fill() {
  std::vector<std::size_t> fill;
  for (const std::size_t track : statistics_.ranking()) {
    if (statistics_.votesForLeader(track) == 0) fill.push_back(track);
  }
  std::reverse(fill.begin(), fill.end());
  trial_.visitBefore(std::move(fill));
}

}  // namespace lirvox
