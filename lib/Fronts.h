// Tracks that go first, and draw the counting to places of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "HitsByTrack.h"
#include "LeaderTrial.h"
#include "TrackStatistics.h"
#include "TracksByBin.h"

namespace lirvox {

/// Raises the peak of a trial away from the leader. As long as no bin gets higher, every
/// later track is counted at the front's place, where little is left.
///
/// A front's own count seldom is a harmless text: a "7" beats "233". So tracks that have
/// votes at its place go before it, until its count is a "10", or as high a text as does
/// no harm, for they make the peak higher too.
class Fronts {
 public:
  using Bin = HitsByTrack::Bin;

  /// A place where the tracks behind the leader have more votes together than it has.
  struct Crowd {
    Bin bin;
    std::int32_t excess;  ///< votes too many
  };

  Fronts(const HitsByTrack& hits, const TrackStatistics& statistics, LeaderTrial& trial)
      : hits_(hits), statistics_(statistics), trial_(trial) {}

  /// Whether a track with `count` votes of its own can be a front for a leader with
  /// `leaderCount`.
  static bool canBeFront(std::int32_t count, std::int32_t leaderCount);

  /// Raises the peak by `front`, at the place where it has most votes. Says whether it did;
  /// if not, others may have been visited in vain.
  bool raise(std::size_t front) { return raise(front, statistics_[front].peak.bin); }

  /// The crowds that keep `refused` from following the leader.
  std::vector<Crowd> crowdsOf(const std::vector<std::size_t>& refused);

  /// Raises the peak at a crowded place and visits tracks behind it whose votes there are
  /// taken at once, until no more than the excess is gone. Says whether it all is.
  bool clear(const Crowd& crowd);

 private:
  bool raise(std::size_t front, Bin bin);
  bool raiseAt(Bin bin, const std::vector<TracksByBin::Voter>& voters);
  bool pad(std::size_t front, Bin bin);
  std::vector<TracksByBin::Voter> votersApart(Bin bin);

  const HitsByTrack& hits_;
  const TrackStatistics& statistics_;
  LeaderTrial& trial_;
  std::optional<TracksByBin> tracksByBin_;  // made when it is first needed
};

}  // namespace lirvox
