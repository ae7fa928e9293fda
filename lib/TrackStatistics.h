// How well each track of a pass is aligned with the query.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"
#include "OffsetHistogram.h"

namespace lirvox {

/// What each track earns by its own hits, with no other track in the histogram. A
/// recording that is really heard puts most of its hits at one offset; chance does not.
class TrackStatistics {
 public:
  struct Alignment {
    OffsetHistogram::Peak peak;  // at the first bin to get the most votes
    std::int32_t count;          // votes in the window around it: the track's own result
  };

  /// `hits` has at least one track.
  explicit TrackStatistics(const HitsByTrack& hits);

  const Alignment& operator[](std::size_t track) const { return alignments_[track]; }

  /// All tracks, the best aligned first.
  const std::vector<std::size_t>& ranking() const { return ranking_; }

  /// The best aligned track: the one that should be the answer, if any should.
  std::size_t leader() const { return ranking_.front(); }

  /// The votes of `track` in the leader's window.
  std::int32_t votesForLeader(std::size_t track) const { return votesForLeader_[track]; }

  /// The `place`-th largest count (from 1) of the tracks behind the leader, 0 if there
  /// are fewer.
  std::int32_t countBehindLeader(std::size_t place) const;

 private:
  void align(const HitsByTrack& hits);
  void rank(const HitsByTrack& hits);

  std::vector<Alignment> alignments_;
  std::vector<std::size_t> ranking_;
  std::vector<std::int32_t> votesForLeader_;
};

}  // namespace lirvox
