// The hits of a pass, laid out for the vote.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Hits.h"

namespace lirvox {

/// The offsets of each track's hits in hit-list order, track after track.
///
/// Offsets are numbered as bins: equal offsets have equal bins, larger offsets
/// larger ones, and offsets that differ by 1 or 2 have bins that differ as much, so
/// that a window of neighbouring offsets is the same window of bins.
class HitsByTrack {
 public:
  /// A bin of the offset histogram, in [0, binCount()).
  using Bin = std::uint32_t;

  struct Track {
    DecimalString id;
    const Bin* first;
    const Bin* last;
    const Bin* begin() const { return first; }
    const Bin* end() const { return last; }
    std::int32_t hitCount() const { return static_cast<std::int32_t>(last - first); }
  };

  explicit HitsByTrack(const PassHits& pass);

  HitsByTrack(const HitsByTrack&) = delete;
  HitsByTrack& operator=(const HitsByTrack&) = delete;

  /// The tracks in the order of their first hits.
  const std::vector<Track>& tracks() const { return tracks_; }

  /// Hits of all tracks.
  std::size_t hitCount() const { return bins_.size(); }

  std::size_t binCount() const { return binCount_; }
  /// The offset of `bin` before normalization: track frame at which the query starts.
  std::int32_t offset(Bin bin) const;

 private:
  std::vector<Bin> binsOf(const PassHits& pass);

  std::int32_t minimumOffset_;
  std::size_t binCount_ = 0;
  std::vector<std::int32_t> offsets_;  // normalized offset of each bin; empty: equal to the bin
  std::vector<Bin> bins_;
  std::vector<Track> tracks_;
};

}  // namespace lirvox
