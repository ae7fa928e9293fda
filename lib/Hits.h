// Rows and query hashes to time-aligned hits.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "Landmark.h"
#include "LirvoxHit.h"
#include "LirvoxRowMap.h"

namespace lirvox {

/// How many hits a track has.
struct TrackHitCount {
  DecimalString track_id;
  std::int32_t count;
};

/// The hits of one pass.
struct PassHits {
  /// In the order of formation, `hit_time` normalized: 0 or more, at least one 0.
  std::vector<LirvoxHit> hits;
  /// One entry per track that has hits, in the order of their first hits.
  std::vector<TrackHitCount> trackHitCounts;
  /// The smallest offset before normalization; the largest integer without hits.
  std::int32_t minimumOffset = std::numeric_limits<std::int32_t>::max();
};

/// Forms one hit for each row of each query hash, in list order. A pair that occurs
/// k times in `hashes` counts k times: votes of several shifts add up, as is meant.
/// `rows` may be null, which stands for no rows. Offsets wrap around at 32 bits.
PassHits formHits(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes);

}  // namespace lirvox
