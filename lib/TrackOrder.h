// The order in which the vote visits the tracks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"
#include "TrackStatistics.h"

namespace lirvox {

/// How far the best aligned track is ahead of the others, and whether that is enough.
///
/// Sound that is in no track has a best aligned one too, but not far ahead. Only far down
/// the ranking are the others sure to be there by chance: the first places may hold copies
/// of the recording, as large catalogues do. So the leader must be well above the fourth
/// best, or far above the 17th: four copies are told from noise by the one and up to 16 by
/// the other.
class LeaderStanding {
 public:
  static constexpr double kTimesFourth = 1.75;
  static constexpr double kTimesSeventeenth = 4.0;

  LeaderStanding(const TrackStatistics& statistics, std::int32_t minimum)
      : statistics_(statistics), minimum_(minimum) {}

  /// The leader's own votes, and those of the fourth and of the 17th best; 0 if there are
  /// fewer tracks.
  std::int32_t count() const { return statistics_[statistics_.leader()].count; }
  std::int32_t fourth() const { return statistics_.countBehindLeader(3); }
  std::int32_t seventeenth() const { return statistics_.countBehindLeader(16); }

  bool exceedsMinimum() const { return count() > minimum_; }
  /// Whether the leader should be the answer. Asks for no more than it takes to tell.
  bool standsOut() const;

 private:
  const TrackStatistics& statistics_;
  const std::int32_t minimum_;
};

/// What an order is meant to bring about.
enum class OrderAim {
  leaderWins,  ///< the leader stands out, and wins under this order
  copyWins,    ///< the leader stands out, but hides behind a copy: one of them may win
  silence,     ///< nobody should win, and nobody does
  none,        ///< no order serves: the best aligned tracks go first
};

/// An order of all tracks, as indices into `HitsByTrack::tracks()`.
struct PlannedOrder {
  std::vector<std::size_t> tracks;
  OrderAim aim = OrderAim::none;
};

/// All tracks of `hits` in the order in which the vote serves the listener best.
/// Deterministic; `minimum` is the count that a result must exceed.
PlannedOrder chooseTrackOrder(const HitsByTrack& hits, std::int32_t minimum);

}  // namespace lirvox
