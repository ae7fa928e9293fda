// Passes that are written down as the votes of their tracks.
#pragma once

#include "Test.h"
#include "lib/Hits.h"
#include "lib/HitsByTrack.h"

namespace lirvox::test {

/// Hits of one track at one offset.
struct Votes {
  std::int32_t track;
  std::int32_t offset;
  std::int32_t count;
};

/// The hits of a pass, in the order of `votes`.
inline PassHits passOf(const std::vector<Votes>& votes) {
  std::vector<LirvoxDBRow> rows;
  std::vector<QueryHash> hashes;
  for (const auto& [track, offset, count] : votes) {
    const auto hash = static_cast<std::int32_t>(rows.size());
    rows.push_back({DecimalString(track), DecimalString(offset + 100), DecimalString(hash)});
    hashes.insert(hashes.end(), static_cast<std::size_t>(count), {100, hash});
  }
  const LirvoxRowMap map(rows);
  return formHits(&map, hashes);
}

/// The tracks in the order of their first hits.
inline std::vector<std::size_t> firstHitFirst(const HitsByTrack& hits) {
  std::vector<std::size_t> order(hits.tracks().size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

}  // namespace lirvox::test
