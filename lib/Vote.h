// The vote over offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "HitsByTrack.h"
#include "LirvoxResult.h"

namespace lirvox {

/// What a vote finds.
struct VoteOutcome {
  /// In the order in which they were found.
  std::vector<LirvoxResult> candidates;
  /// The first visited track with the most hits of all; 0 and 0 without hits.
  std::int32_t rawBestCount = 0;
  std::int32_t rawBestTrack = 0;
};

/// Visits the tracks in `order` (indices into `hits.tracks()`, each at most once),
/// adds each one's votes to a histogram of offsets, and turns the peak into a
/// candidate once a bin has reached 5 votes. Takes time linear in the hits.
///
/// The histogram, the peak and its place are carried from track to track: a later
/// track is judged by the overall peak unless one of its bins beats it. That is how
/// this vote is meant, and why the outcome depends on the order.
VoteOutcome vote(const HitsByTrack& hits, const std::vector<std::size_t>& order);

/// The candidate whose count comes last as text (a 9 beats a 12, as is meant), the
/// earliest of equals, if that count exceeds `minimum` as a number.
std::optional<LirvoxResult> chooseResult(const std::vector<LirvoxResult>& candidates,
                                         std::int32_t minimum);

}  // namespace lirvox
