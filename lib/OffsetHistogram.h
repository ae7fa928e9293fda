// Votes per offset, and the peak that is carried from track to track.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"

namespace lirvox {

/// The votes of the tracks visited so far, over the bins of their offsets.
class OffsetHistogram {
 public:
  using Bin = HitsByTrack::Bin;
  using Track = HitsByTrack::Track;

  /// The highest bin seen so far, also when its votes have been taken since. `height`
  /// is one above the votes that set it.
  struct Peak {
    std::int32_t height = -1;
    Bin bin = 0;

    /// Whether a bin has reached the 5 votes that make a candidate.
    bool isCandidate() const { return height > 5; }
  };

  explicit OffsetHistogram(std::size_t binCount) : votes_(binCount) {}

  void add(const Track& track) {
    for (const Bin bin : track) {
      const std::int32_t votes = ++votes_[bin];
      if (votes + 1 > peak_.height) peak_ = {votes + 1, bin};
    }
  }

  /// Takes back the latest `add`, before which the peak was `before`.
  void undo(const Track& track, Peak before) {
    for (const Bin bin : track) --votes_[bin];
    peak_ = before;
  }

  /// Empties every bin that `track` votes for.
  void clear(const Track& track) {
    for (const Bin bin : track) votes_[bin] = 0;
  }
  void clearPeak() { peak_ = {}; }

  Peak peak() const { return peak_; }
  std::int32_t votes(Bin bin) const { return votes_[bin]; }

  /// First bin of the window whose last bin is `peak`: the peak and the two bins below
  /// it, but not the one above, as is meant.
  static Bin windowStart(Bin peak) { return peak < 2 ? 0 : peak - 2; }

  /// The votes of `track` alone in the window whose last bin is `peak`.
  static std::int32_t windowVotes(const Track& track, Bin peak) {
    const Bin first = windowStart(peak);
    return static_cast<std::int32_t>(std::count_if(
        track.begin(), track.end(), [=](Bin bin) { return first <= bin && bin <= peak; }));
  }

  std::int32_t windowVotes() const {
    std::int32_t sum = 0;
    for (Bin bin = windowStart(peak_.bin); bin <= peak_.bin; ++bin) sum += votes_[bin];
    return sum;
  }
  void clearWindow() {
    for (Bin bin = windowStart(peak_.bin); bin <= peak_.bin; ++bin) votes_[bin] = 0;
  }

 private:
  std::vector<std::int32_t> votes_;
  Peak peak_;
};

}  // namespace lirvox
