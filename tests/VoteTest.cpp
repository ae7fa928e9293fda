// Rows and query hashes to hits, and the vote over their offsets, worked out by hand.
#include "lib/Vote.h"
#include "tests/support/Votes.h"

namespace lirvox::test {
namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

LirvoxDBRow row(std::int32_t track, std::int32_t time, std::int32_t hash) {
  return {DecimalString(track), DecimalString(time), DecimalString(hash)};
}

TEST(FormHits, FormsOneHitPerQueryHashAndRowInOrder) {
  using Rows = std::vector<LirvoxDBRow>;
  using Hits = std::vector<std::array<std::int32_t, 4>>;  // track, time, hash, time in query
  const std::tuple<const char*, Rows, std::vector<QueryHash>, Hits, std::int32_t> cases[] = {
      {"nothing", {}, {{3, 4}}, {}, kMax},
      {"two times", {row(3, 20, 8)}, {{5, 8}, {9, 8}}, {{3, 4, 8, 5}, {3, 0, 8, 9}}, 11},
      {"a row before the query, an unknown hash",
       {row(3, 20, 8), row(4, 1, 9)},
       {{5, 7}, {5, 9}, {5, 8}},
       {{4, 0, 9, 5}, {3, 19, 8, 5}},
       -4},
      {"the same pair of two shifts, rows in their order",
       {row(6, 1, 8), row(2, 9, 8), row(6, 3, 8)},
       {{0, 8}, {0, 8}},
       {{6, 0, 8, 0}, {2, 8, 8, 0}, {6, 2, 8, 0}, {6, 0, 8, 0}, {2, 8, 8, 0}, {6, 2, 8, 0}},
       1},
      {"the ends of the range", {row(kMin, kMax, 8)}, {{0, 8}}, {{kMin, 0, 8, 0}}, kMax},
      {"an offset that wraps around", {row(1, kMin, 8)}, {{1, 8}}, {{1, 0, 8, 1}}, kMax},
  };
  for (const auto& [what, rows, hashes, expected, minimumOffset] : cases) {
    const LirvoxRowMap map(rows);
    const PassHits pass = formHits(&map, hashes);
    Hits hits;
    for (const LirvoxHit& hit : pass.hits) {
      hits.push_back({hit.hit_id.intValue(), hit.hit_time.intValue(), hit.hit_hash.intValue(),
                      hit.hit_time_in_query.intValue()});
    }
    EXPECT_EQ(hits, expected) << what;
    EXPECT_EQ(pass.minimumOffset, minimumOffset) << what;
  }
}

// The ids were chosen: a table that spreads them by the golden ratio, as many do, meets all of
// them in a row, and takes minutes.
TEST(FormHits, CountsTheHitsOfTracksWhoseIdsWereMadeToCollide) {
  constexpr std::int32_t kTracks = 400000;
  const auto id = [](std::int32_t i) {
    constexpr std::uint32_t kInverseOfGoldenRatio = 0x144cbc89;
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(i) * kInverseOfGoldenRatio);
  };
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

using Candidate = std::array<std::int32_t, 4>;  // id, count, time, value

// The candidates, with the tracks in the order of their first hits.
std::vector<Candidate> candidatesOf(const std::vector<Votes>& votes) {
  const HitsByTrack hits(passOf(votes));
  std::vector<Candidate> candidates;
  for (const LirvoxResult& result : vote(hits, firstHitFirst(hits)).candidates) {
    candidates.push_back({result.result_id.intValue(), result.result_count.intValue(),
                          result.result_time.intValue(), result.result_value.intValue()});
  }
  return candidates;
}

TEST(Vote, PlacesItsWindowAtThePeakOfAllTracks) {
  const std::tuple<const char*, std::vector<Votes>, std::vector<Candidate>> cases[] = {
      {"nothing", {}, {}},
      {"four votes do not make a peak", {{1, 50, 4}, {1, 60, 4}}, {}},
      {"five do", {{1, 50, 5}}, {{1, 5, 50, 5}}},
      {"the window is the peak and two below",
       {{3, 0, 1}, {3, 7, 9}, {3, 8, 3}, {3, 9, 2}, {3, 10, 40}, {3, 11, 30}},
       {{3, 45, 10, 85}}},
      {"it ends at the smallest offset", {{1, -7, 2}, {1, -6, 6}}, {{1, 8, -6, 8}}},
      {"the first of equal peaks stays", {{1, 90, 6}, {1, 30, 6}}, {{1, 6, 90, 12}}},
      {"a later track is judged by the peak before it",
       {{1, 20, 7}, {2, 20, 3}, {2, 50, 4}, {3, 50, 1}},
       {{1, 7, 20, 7}, {2, 3, 20, 7}, {3, 0, 20, 1}}},
      {"unless it beats it",
       {{1, 20, 7}, {2, 50, 8}, {3, 20, 2}},
       {{1, 7, 20, 7}, {2, 8, 50, 8}, {3, 0, 50, 2}}},
      {"votes of tracks before it count for a track",
       {{1, 20, 3}, {1, 19, 2}, {2, 20, 2}},
       {{2, 7, 20, 2}}},
      {"but not those that a window took",
       {{1, 20, 6}, {1, 18, 1}, {2, 20, 6}, {3, 20, 7}, {3, 18, 1}},
       {{1, 7, 20, 7}, {2, 6, 20, 6}, {3, 8, 20, 8}}},
      {"a window may leave votes to the next",
       {{1, 20, 6}, {1, 21, 5}, {2, 21, 3}},
       {{1, 6, 20, 11}, {2, 8, 21, 3}}},
  };
  for (const auto& [what, votes, found] : cases) EXPECT_EQ(candidatesOf(votes), found) << what;
}

TEST(Vote, FindsTheSameFarApart) {
  // The last track stretches the offsets so far that they are numbered, gaps cut short.
  const std::vector<Votes> votes = {{1, 20, 6},       {1, 18, 2},      {1, 17, 4},     {1, 21, 1},
                                    {2, 400, 9},      {2, 398, 3},     {2, 397, 1},    {3, 400, 2},
                                    {4, 7000000, 11}, {4, 6999999, 1}, {4, 6999996, 1}};
  const std::vector<Candidate> expected = {
      {1, 8, 20, 13}, {2, 12, 400, 13}, {3, 2, 400, 2}, {4, 12, 7000000, 13}};
  EXPECT_EQ(candidatesOf(votes), expected);
  for (const std::int32_t far : {-4194304, -100000000, -2147483000}) {
    std::vector<Votes> stretched = votes;
    stretched.push_back({9, far, 1});
    std::vector<Candidate> all = expected;
    all.push_back({9, 0, 7000000, 1});
    EXPECT_EQ(candidatesOf(stretched), all) << far;
  }
}

TEST(Vote, VisitsTheTracksInTheOrderGiven) {
  const HitsByTrack hits(passOf({{5, 20, 7}, {6, 50, 8}, {7, 20, 8}}));
  const VoteOutcome outcome = vote(hits, {2, 0, 1});
  std::vector<std::int32_t> ids;
  for (const LirvoxResult& result : outcome.candidates) ids.push_back(result.result_id.intValue());
  EXPECT_EQ(ids, (std::vector<std::int32_t>{7, 5, 6}));
  // Of tracks with equally many hits the first visited.
  EXPECT_EQ(outcome.rawBestTrack, 7);
  EXPECT_EQ(outcome.rawBestCount, 8);
  EXPECT_EQ(vote(hits, {1, 2}).rawBestTrack, 6);
  EXPECT_EQ(vote(hits, {}).rawBestTrack, 0);
}

TEST(ChooseResult, ComparesCountsAsTextAndWithTheMinimumAsNumbers) {
  // With the index of the chosen one, -1 for none.
  const std::tuple<std::vector<std::int32_t>, std::int32_t, std::int32_t> cases[] = {
      {{}, 0, -1},           {{9, 120}, 5, 0},   {{120, 9}, 30, -1},
      {{30}, 30, -1},        {{31}, 30, 0},      {{100, 31, 4}, 3, 2},
      {{45, 45, 44}, 30, 0}, {{177, 2}, 30, -1}, {{35, 350, 34}, 30, 1},
      {{0}, -1, 0},
  };
  for (const auto& [counts, minimum, chosen] : cases) {
    std::vector<LirvoxResult> candidates;
    for (const std::int32_t count : counts) {
      const auto id = static_cast<std::int32_t>(candidates.size());
      candidates.push_back({DecimalString(id), DecimalString(count), {}, {}});
    }
    const auto result = chooseResult(candidates, minimum);
    EXPECT_EQ(result ? result->result_id.intValue() : -1, chosen) << testing::PrintToString(counts);
  }
}

}  // namespace
}  // namespace lirvox::test
