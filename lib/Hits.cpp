// Rows and query hashes to time-aligned hits.
#include "lib/Hits.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "lib/TrackPlaces.h"

namespace lirvox {
namespace {

// The difference of two 32-bit integers, wrapped around where it does not fit.
std::int32_t difference(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// The rows of each query hash that has any.
struct Match {
  QueryHash query;
  LirvoxRowMap::Rows rows;
};

// Those of them that make no more than `mostHits` hits, and how many they make.
struct Matches {
  std::vector<Match> list;
  std::size_t hits = 0;
  bool complete = true;
};

Matches match(const LirvoxRowMap& rows, const std::vector<QueryHash>& hashes,
              std::size_t mostHits) {
  Matches matches;
  for (const QueryHash& query : hashes) {
    const LirvoxRowMap::Rows found = rows.find(DecimalString(query.hash));
    if (found.size() > mostHits - matches.hits) {
      matches.complete = false;
    } else if (found.size() > 0) {
      matches.list.push_back({query, found});
      matches.hits += found.size();
    }
  }
  return matches;
}

}  // namespace

PassHits formHits(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes,
                  std::size_t mostHits) {
  PassHits pass;
  if (!rows) return pass;
  const Matches matches = match(*rows, hashes, mostHits);
  pass.complete = matches.complete;
  pass.hits.reserve(matches.hits);
  pass.trackOfHit.reserve(matches.hits);
  TrackPlaces places;
  for (const auto& [query, found] : matches.list) {
    for (const LirvoxDBRow& row : found) {
      const std::int32_t offset = difference(row.time_in_track.intValue(), query.time);
      pass.hits.push_back(
          {row.track_id, DecimalString(offset), row.hash1, DecimalString(query.time)});
      pass.minimumOffset = std::min(pass.minimumOffset, offset);
      const std::uint32_t place = places.of(row.track_id.intValue());
      pass.trackOfHit.push_back(place);
      if (place == pass.trackHitCounts.size()) pass.trackHitCounts.push_back({row.track_id, 0});
      ++pass.trackHitCounts[place].count;
    }
  }
  for (LirvoxHit& hit : pass.hits) {
    hit.hit_time = DecimalString(difference(hit.hit_time.intValue(), pass.minimumOffset));
  }
  return pass;
}

}  // namespace lirvox
