// Rows and query hashes to hits.
#include <array>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "lib/Hits.h"

namespace lirvox {
namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

LirvoxDBRow row(std::int32_t track, std::int32_t time, std::int32_t hash) {
  return {DecimalString(track), DecimalString(time), DecimalString(hash)};
}

TEST(FormHits, FormsOneHitPerQueryHashAndRowInOrder) {
  struct Case {
    const char* what;
    std::vector<LirvoxDBRow> rows;
    std::vector<QueryHash> hashes;
    std::vector<std::array<std::int32_t, 4>> hits;    // track, time, hash, time in query
    std::vector<std::array<std::int32_t, 2>> counts;  // track, hits
    std::int32_t minimumOffset;
  };
  const std::vector<Case> cases = {
      {"nothing", {}, {{3, 4}}, {}, {}, kMax},
      {"one row, two times",
       {row(3, 20, 8)},
       {{5, 8}, {9, 8}},
       {{3, 4, 8, 5}, {3, 0, 8, 9}},
       {{3, 2}},
       11},
      {"a row before the query, an unknown hash",
       {row(3, 20, 8), row(4, 1, 9)},
       {{5, 7}, {5, 9}, {5, 8}},
       {{4, 0, 9, 5}, {3, 19, 8, 5}},
       {{4, 1}, {3, 1}},
       -4},
      {"the same pair of two shifts, rows in their order",
       {row(6, 1, 8), row(2, 9, 8), row(6, 3, 8)},
       {{0, 8}, {0, 8}},
       {{6, 0, 8, 0}, {2, 8, 8, 0}, {6, 2, 8, 0}, {6, 0, 8, 0}, {2, 8, 8, 0}, {6, 2, 8, 0}},
       {{6, 4}, {2, 2}},
       1},
      {"the ends of the number range",
       {row(kMin, kMax, 8)},
       {{0, 8}},
       {{kMin, 0, 8, 0}},
       {{kMin, 1}},
       kMax},
      {"an offset that wraps around", {row(1, kMin, 8)}, {{1, 8}}, {{1, 0, 8, 1}}, {{1, 1}}, kMax},
  };
  for (const Case& c : cases) {
    const LirvoxRowMap map(c.rows);
    const PassHits pass = formHits(&map, c.hashes);
    std::vector<std::array<std::int32_t, 4>> hits;
    for (const LirvoxHit& hit : pass.hits) {
      hits.push_back({hit.hit_id.intValue(), hit.hit_time.intValue(), hit.hit_hash.intValue(),
                      hit.hit_time_in_query.intValue()});
    }
    std::vector<std::array<std::int32_t, 2>> counts;
    for (const auto& [track, count] : pass.trackHitCounts)
      counts.push_back({track.intValue(), count});
    EXPECT_EQ(hits, c.hits) << c.what;
    EXPECT_EQ(counts, c.counts) << c.what;
    EXPECT_EQ(pass.minimumOffset, c.minimumOffset) << c.what;
  }
}

TEST(FormHits, CountsTheHitsOfThousandsOfTracks) {
  constexpr std::int32_t kTracks = 5000;
  const auto id = [](std::int32_t i) { return (i - kTracks / 2) * 65536; };
  std::vector<LirvoxDBRow> rows;
  for (std::int32_t i = 0; i < 2 * kTracks; ++i) rows.push_back(row(id(i % kTracks), i, 8));
  const LirvoxRowMap map(rows);
  const PassHits pass = formHits(&map, {{0, 8}});
  ASSERT_EQ(pass.trackHitCounts.size(), kTracks);
  for (std::int32_t i = 0; i < kTracks; ++i) {
    const TrackHitCount& counted = pass.trackHitCounts[static_cast<std::size_t>(i)];
    EXPECT_EQ(counted.track_id.intValue(), id(i));
    EXPECT_EQ(counted.count, 2);
  }
}

TEST(DecimalString, BehavesAsItsText) {
  const std::vector<std::int32_t> inTextOrder = {-1, -12, kMin, -9, 0, 1, 10, 100, 12, kMax, 9, 99};
  for (std::size_t i = 0; i < inTextOrder.size(); ++i) {
    const DecimalString number(inTextOrder[i]);
    EXPECT_EQ(number.string(), std::to_string(inTextOrder[i]));
    for (std::size_t j = 0; j < inTextOrder.size(); ++j) {
      EXPECT_EQ(number < DecimalString(inTextOrder[j]), i < j) << i << ' ' << j;
    }
  }
  EXPECT_EQ(DecimalString(16777217).floatValue(), 16777216.0F);
}

}  // namespace
}  // namespace lirvox
