// Which tracks have votes at an offset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"

namespace lirvox {

/// The hits of a pass bin by bin, where `HitsByTrack` has them track by track.
class TracksByBin {
 public:
  using Bin = HitsByTrack::Bin;

  /// A track with votes in a window.
  struct Voter {
    std::size_t track;
    std::int32_t votesAtPeak;    // in the last bin of the window
    std::int32_t votesInWindow;  // at least 1
  };

  explicit TracksByBin(const HitsByTrack& hits);

  /// The tracks with votes in the window whose last bin is `peak`, in the order of
  /// `HitsByTrack::tracks()`. Of each bin the first 512 votes are looked at.
  std::vector<Voter> voters(Bin peak) const;

 private:
  std::vector<std::uint32_t> ends_;    // of each bin in tracks_, behind a leading 0
  std::vector<std::uint32_t> tracks_;  // one for each vote
};

}  // namespace lirvox
