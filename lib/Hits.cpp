// Rows and query hashes to time-aligned hits.
#include "lib/Hits.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace lirvox {
namespace {

// The difference of two 32-bit integers, wrapped around where it does not fit.
std::int32_t difference(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// Counts hits per track.
class TrackCounter {
 public:
  explicit TrackCounter(std::vector<TrackHitCount>& counts) : counts_(counts) {}

  void count(DecimalString track) {
    // Rows of one hash come track by track, so the last one is often asked for again.
    if (counts_.empty() || counts_[last_].track_id != track) {
      const auto [entry, isNew] = places_.try_emplace(track.intValue(), counts_.size());
      if (isNew) counts_.push_back({track, 0});
      last_ = entry->second;
    }
    ++counts_[last_].count;
  }

 private:
  std::vector<TrackHitCount>& counts_;
  std::unordered_map<std::int32_t, std::size_t> places_;
  std::size_t last_ = 0;
};

}  // namespace

PassHits formHits(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes) {
  PassHits pass;
  if (!rows) return pass;
  TrackCounter counter(pass.trackHitCounts);
  for (const QueryHash& query : hashes) {
    const DecimalString hash(query.hash);
    for (const LirvoxDBRow& row : rows->find(hash)) {
      const std::int32_t offset = difference(row.time_in_track.intValue(), query.time);
      pass.hits.push_back({row.track_id, DecimalString(offset), hash, DecimalString(query.time)});
      counter.count(row.track_id);
      pass.minimumOffset = std::min(pass.minimumOffset, offset);
    }
  }
  for (LirvoxHit& hit : pass.hits) {
    hit.hit_time = DecimalString(difference(hit.hit_time.intValue(), pass.minimumOffset));
  }
  return pass;
}

}  // namespace lirvox
