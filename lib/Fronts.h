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
/// A front's own count seldom is a harmless text: a "7" beats "233". So it is padded: weak
/// tracks with votes at its place are visited before it. They are not counted, or counted at
/// an older peak, and their votes wait at the place until the front comes. Then both are
/// counted together, as a "10", and together they make a higher peak.
class Fronts {
 public:
  using Bin = HitsByTrack::Bin;

  /// A place where tracks behind the leader would be counted instead of at its own.
  struct Crowd {
    Bin bin;
    /// Votes that must go to let them pass: all of the refused tracks' and one more, as if
    /// the others had made the place as high as the leader is.
    std::int32_t excess;
  };

  Fronts(const HitsByTrack& hits, const TrackStatistics& statistics, LeaderTrial& trial)
      : hits_(hits), statistics_(statistics), trial_(trial) {}

  /// Whether a track with `count` votes of its own can be a front for a leader with
  /// `leaderCount`.
  static bool canBeFront(std::int32_t count, std::int32_t leaderCount);

  /// Raises the peak by `front`, at the place where it has most votes. Says whether it did;
  /// if not, others may have been visited in vain.
  bool raise(std::size_t front) { return raiseAt(statistics_[front].peak.bin, front); }

  /// The crowds that keep `refused` from following the leader. Asks the trial as it stands:
  /// to be called before it is restarted.
  std::vector<Crowd> crowdsOf(const std::vector<std::size_t>& refused);

  /// Raises the peak at a crowd's place and visits tracks behind it whose votes there are
  /// taken at once, until the excess is gone. Says whether it is.
  bool clear(const Crowd& crowd);

 private:
  bool raiseAt(Bin bin, std::size_t front);
  bool raiseAt(Bin bin, const std::vector<TracksByBin::Voter>& voters);
  void pad(Bin bin, std::size_t front);
  std::vector<TracksByBin::Voter> votersApart(Bin bin);

  const HitsByTrack& hits_;
  const TrackStatistics& statistics_;
  LeaderTrial& trial_;
  std::optional<TracksByBin> tracksByBin_;  // made when it is first needed
};

}  // namespace lirvox
