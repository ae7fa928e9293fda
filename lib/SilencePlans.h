// Orders under which the vote answers with nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "HitsByTrack.h"
#include "TrackStatistics.h"
#include "VoteTrial.h"

namespace lirvox {

/// Looks for an order of the tracks in which nothing wins the vote: for sound that no
/// track stands out in.
///
/// The vote drops its best candidate if that does not exceed the minimum, and takes no
/// second one. So a count that comes late as text but is small, such as a "9", silences
/// all the others. A track with such a count goes first; the rest follows as it does no
/// harm.
std::optional<std::vector<std::size_t>> findSilentOrder(const HitsByTrack& hits,
                                                        const TrackStatistics& statistics,
                                                        std::int32_t minimum);

}  // namespace lirvox
