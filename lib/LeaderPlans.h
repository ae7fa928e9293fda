// Orders under which the vote answers with the leader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Fronts.h"
#include "HitsByTrack.h"
#include "LeaderTrial.h"
#include "TrackStatistics.h"

namespace lirvox {

/// Looks for an order of the tracks in which the leader wins the vote.
///
/// The vote takes the count that comes last as text, and it carries the peak: a track
/// whose bins do not beat the highest one so far is counted at that peak's place. So
/// tracks get into the leader's way from both sides:
/// - Behind it, a track with 2 votes in the leader's window is counted there. The window
///   was emptied, so the count is "2", and that beats "177".
/// - Before it, a track that raises the peak inside the leader's window is counted there
///   too, and takes out of the window what the leader would be counted with.
///
/// What an order is made of:
/// - supporters: the tracks that would hide the leader go before it. Their votes stay in
///   its window and add to its count. Other tracks may hide the larger count, so it takes
///   a set that is complete for its own sum; with the leader that makes a lineup. A
///   larger set than necessary can lift the count to a better text: few tracks hide the
///   "200" of 130 votes of the leader and 70 of others.
/// - fronts, visited first, if supporters are strong enough to raise the peak by
///   themselves: with a higher peak than theirs, they are counted at its place.
/// - cleared crowds: where the tracks behind the leader have more votes together than it
///   has, some are visited behind a front that stands there.
/// - fill: tracks without votes for the leader that go before it. What they have in common
///   elsewhere is counted early, in small portions, and is not in the way later.
class LeaderPlans {
 public:
  LeaderPlans(const HitsByTrack& hits, const TrackStatistics& statistics, std::int32_t minimum);

  /// An order in which the leader, or nothing if none was found, wins with a count above
  /// the minimum.
  std::optional<std::vector<std::size_t>> find();

 private:
  // Supporters and the count that the leader gets with them.
  struct Lineup {
    std::vector<std::size_t> supporters;
    std::int32_t count;
  };

  std::vector<std::size_t> voters() const;
  std::vector<Lineup> lineups() const;
  std::vector<std::size_t> frontsFor(const Lineup& lineup) const;
  bool tryLineup(const Lineup& lineup);
  std::optional<std::vector<std::size_t>> open(const Lineup& lineup);
  std::vector<std::size_t> raiseFrom(const std::vector<std::size_t>& fronts, std::size_t first,
                                     std::size_t count);
  bool reopen(const Lineup& lineup, const std::vector<std::size_t>& fronts,
              const std::vector<Fronts::Crowd>& crowds);
  bool visitSupporters(const Lineup& lineup);
  void fill();
  bool finish();

  const TrackStatistics& statistics_;
  LeaderTrial trial_;
  Fronts fronts_;
};

}  // namespace lirvox
