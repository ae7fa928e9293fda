// The order in which the vote visits the tracks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "HitsByTrack.h"

namespace lirvox {

/// All tracks of `hits`, as indices into `hits.tracks()`, in the order in which the
/// vote serves the listener best. Deterministic; `minimum` is the count that a result
/// must exceed.
std::vector<std::size_t> chooseTrackOrder(const HitsByTrack& hits, std::int32_t minimum);

}  // namespace lirvox
