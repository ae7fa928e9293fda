// From rows and query hashes to the outcome of a pass.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Hits.h"
#include "HitsByTrack.h"
#include "LirvoxResult.h"
#include "TrackOrder.h"
#include "Vote.h"

namespace lirvox {

/// The last steps of a pass, taken one after the other by the constructor and kept for who
/// wants to know how the result came about.
struct Decision {
  /// `rows` may be null, which stands for no rows; `minimum` is the count that a result
  /// must exceed.
  Decision(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes, std::int32_t minimum);

  const PassHits pass;
  const HitsByTrack hits;
  const PlannedOrder order;
  const VoteOutcome votes;
  const std::optional<LirvoxResult> result;
};

/// An offset in frames as seconds, in the precision in which the delegate is told.
float secondsOf(DecimalString frames);

}  // namespace lirvox
