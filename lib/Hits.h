// Rows and query hashes to time-aligned hits.
#pragma once

#include <cstddef>
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
  /// For each hit the place of its track in `trackHitCounts`.
  std::vector<std::uint32_t> trackOfHit;
  /// One entry per track that has hits, in the order of their first hits.
  std::vector<TrackHitCount> trackHitCounts;
  /// The smallest offset before normalization; the largest integer without hits.
  std::int32_t minimumOffset = std::numeric_limits<std::int32_t>::max();
  /// False when the limit was reached and the rest left out.
  bool complete = true;
};

/// The most hits of a pass, 20 bytes each. Databases of any sense stay far below; a damaged
/// or hostile one must not take all memory.
constexpr std::size_t kMostHits = std::size_t{1} << 22;

/// Forms one hit for each row of each query hash, in list order. A pair that occurs
/// k times in `hashes` counts k times: votes of several shifts add up, as is meant.
/// `rows` may be null, which stands for no rows. Offsets wrap around at 32 bits. A
/// query hash that would make it more than `mostHits` is left out.
PassHits formHits(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes,
                  std::size_t mostHits = kMostHits);

}  // namespace lirvox
