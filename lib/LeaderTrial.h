// Trials of orders around the leader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"
#include "TrackStatistics.h"
#include "VoteTrial.h"

namespace lirvox {

/// Whether the text of `count` comes before that of `other`, so that it loses against it.
bool ranksBelow(std::int32_t count, std::int32_t other);

/// Puts an order together in which the leader wins the vote: visits before it, the leader,
/// visits behind it. Each is refused if it would do harm.
class LeaderTrial {
 public:
  using Bin = HitsByTrack::Bin;

  /// What a visit must do with the peak. It is kept, too, while it is too low for candidates.
  enum class Peak { kept, raised };

  LeaderTrial(const HitsByTrack& hits, const TrackStatistics& statistics, std::int32_t minimum);

  /// Begins anew, for an order in which the leader is to get `count` votes.
  void restart(std::int32_t count);
  std::int32_t count() const { return count_; }

  /// Visits a track before the leader unless it was visited already or does harm: it must
  /// leave the leader its votes, a peak to raise, and a count that wins. Says whether it did.
  bool visitBefore(std::size_t track, Peak peak);
  /// As many as possible of `tracks`; returns the others.
  std::vector<std::size_t> visitBefore(std::vector<std::size_t> tracks);

  /// Says whether the leader gets a count that wins so far and exceeds the minimum.
  bool visitLeader();

  /// Visits all other tracks behind the leader; returns those that would win instead, or that
  /// there was no work left for.
  std::vector<std::size_t> visitRest();
  /// Where a refused track would be counted.
  Bin placeOf(std::size_t refused);

  OffsetHistogram::Peak peak() const { return trial_.peak(); }
  /// Votes in the window whose last bin is `peak`, of all tracks visited and not yet taken.
  std::int32_t windowVotes(Bin peak) const;
  bool isVisited(std::size_t track) const { return trial_.isVisited(track); }
  const std::vector<std::size_t>& order() const { return trial_.order(); }

  /// Counts work that was done elsewhere, in votes looked at.
  void spend(std::size_t work) { trial_.spend(work); }
  bool isExhausted() const { return trial_.isExhausted(); }

 private:
  bool isHarmlessBefore(const VoteTrial::Visit& visit) const;
  bool isHarmlessBehind(const VoteTrial::Visit& visit) const;
  bool acceptBefore(const VoteTrial::Visit& visit);

  const TrackStatistics& statistics_;
  const HitsByTrack::Track& leaderHits_;
  const std::int32_t minimum_;
  VoteTrial trial_;
  std::int32_t count_ = 0;
  DecimalString best_;  // of the trial's candidates
};

}  // namespace lirvox
