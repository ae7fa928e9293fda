// The order of the tracks: it shows the vote the track that is heard, and only that.
#include "lib/LeaderPlans.h"
#include "lib/SilencePlans.h"
#include "lib/TrackOrder.h"
#include "lib/Vote.h"
#include "tests/support/Votes.h"

namespace lirvox::test {
namespace {

constexpr std::int32_t kMinimum = 30;

// The id that the vote reports, 0 for none.
std::int32_t answer(const HitsByTrack& hits, const std::vector<std::size_t>& order) {
  const auto result = chooseResult(vote(hits, order).candidates, kMinimum);
  return result ? result->result_id.intValue() : 0;
}

// Tracks whose ids follow each other, with as many votes each as the first, `step` offsets apart.
std::vector<Votes> tracks(int count, const Votes& first, std::int32_t step) {
  std::vector<Votes> all;
  for (std::int32_t i = 0; i < count; ++i) {
    all.push_back({first.track + i, first.offset + step * i, first.count});
  }
  return all;
}

std::vector<Votes> copies(int count, std::int32_t votes) {
  return tracks(count, {1, 100, votes}, 100);
}

std::vector<Votes> operator+(std::vector<Votes> a, const std::vector<Votes>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::vector<Votes> noise(int count) {
  return tracks(count, {1000, 10000, 7}, 10);
}

// Tracks with a vote each at one place.
std::vector<Votes> crowd(int count, std::int32_t offset) {
  return tracks(count, {100 * offset, offset, 1}, 0);
}

// Two votes in the window of the first of the copies.
const std::vector<Votes> hiderOfFirst = {{999, 100, 2}};

TEST(TrackOrder, MakesTheVoteAnswerRight) {
  // With the answers of the order of the first hits and of the order that is chosen.
  const std::tuple<const char*, std::vector<Votes>, std::int32_t, std::int32_t> cases[] = {
      {"no tracks", {}, 0, 0},
      {"a count at the minimum", {{1, 10, 30}}, 0, 0},
      {"a count above the minimum", {{1, 10, 31}}, 1, 1},
      {"two late votes hide many", {{1, 10, 177}, {2, 10, 2}}, 0, 1},
      {"votes in the window hide too", {{1, 10, 177}, {2, 8, 2}}, 0, 1},
      {"votes of several add up to another text",
       {{1, 10, 140}, {2, 10, 2}, {3, 10, 2}, {4, 10, 1}},
       0,
       1},
      {"nine hide more and need a front", {{1, 10, 120}, {2, 10, 9}, {3, 500, 12}}, 0, 1},
      {"the front is padded",
       std::vector<Votes>{{1, 10, 233}, {2, 10, 7}, {3, 500, 8}} + crowd(2, 500), 0, 1},
      {"it takes two fronts",
       std::vector<Votes>{{1, 10, 233}, {2, 10, 7}, {3, 10, 7}, {4, 500, 8}, {5, 600, 8}} +
           crowd(4, 500) + crowd(12, 600),
       0, 1},
      {"more in a crowd than the leader has",
       std::vector<Votes>{{1, 10, 109}, {2, 500, 7}} + crowd(200, 500), 50102, 1},
      {"a loop heard elsewhere", {{1, 10, 100}, {1, 50, 99}, {2, 50, 4}}, 2, 1},
      {"many tracks share a later place",
       {{1, 10, 130}, {2, 90, 4}, {3, 90, 4}, {4, 90, 124}, {4, 10, 2}},
       4,
       1},
      {"nobody stands out", copies(4, 40) + noise(1), 1, 0},
      {"five copies among noise", copies(5, 120) + noise(20) + hiderOfFirst, 0, 1},
      {"a copy with another text", {{1, 10, 120}, {2, 10, 97}}, 2, 2},
  };
  for (const auto& [what, votes, firstHitAnswer, chosenAnswer] : cases) {
    const HitsByTrack hits(passOf(votes));
    EXPECT_EQ(answer(hits, firstHitFirst(hits)), firstHitAnswer) << what;
    EXPECT_EQ(answer(hits, chooseTrackOrder(hits, kMinimum).tracks), chosenAnswer) << what;
    const HitsByTrack turned(passOf({votes.rbegin(), votes.rend()}));
    EXPECT_EQ(answer(turned, chooseTrackOrder(turned, kMinimum).tracks), chosenAnswer) << what;
  }
}

// A pass as music makes them: a heard track with one strong place, others with chance
// votes, many of them where others have theirs.
HitsByTrack randomPass(std::mt19937& random) {
  const auto below = [&](std::uint32_t end) { return static_cast<std::int32_t>(random() % end); };
  std::vector<Votes> votes;
  const std::int32_t trackCount = 1 + below(60);
  const std::int32_t places = 3 + below(60);
  for (std::int32_t i = 0; i < trackCount; ++i) {
    votes.push_back({1 + i, below(400), 1});
    for (std::int32_t k = below(12); k > 0; --k) {
      votes.push_back({1 + i, 17 * below(static_cast<std::uint32_t>(places)), 1 + below(4)});
    }
  }
  const std::int32_t heard = 1 + below(static_cast<std::uint32_t>(trackCount));
  const std::int32_t offset = 17 * below(static_cast<std::uint32_t>(places));
  votes.push_back({heard, offset, below(250)});
  votes.push_back({heard, offset + 1, below(10)});
  return HitsByTrack(passOf(votes));
}

TEST(TrackOrder, HoldsEveryTrackOnceDependsOnNothingElseAndKeepsWhatItPromises) {
  std::mt19937 random(2);
  std::mt19937 same(2);
  int strong = 0;
  int served = 0;
  int silent = 0;
  for (int i = 0; i < 2000; ++i) {
    const HitsByTrack hits = randomPass(random);
    std::vector<std::size_t> chosen = chooseTrackOrder(hits, kMinimum).tracks;
    EXPECT_EQ(chosen, chooseTrackOrder(randomPass(same), kMinimum).tracks);
    std::sort(chosen.begin(), chosen.end());
    EXPECT_EQ(chosen, firstHitFirst(hits));

    const TrackStatistics statistics(hits);
    const auto order = LeaderPlans(hits, statistics, kMinimum).find();
    const auto silentOrder = findSilentOrder(hits, statistics, kMinimum);
    const std::int32_t leader = hits.tracks()[statistics.leader()].id.intValue();
    EXPECT_EQ(order ? answer(hits, *order) : leader, leader) << i;
    EXPECT_EQ(silentOrder ? answer(hits, *silentOrder) : 0, 0) << i;
    strong += statistics[statistics.leader()].count > kMinimum;
    served += order.has_value();
    silent += silentOrder.has_value();
  }
  EXPECT_GT(strong, 1500);
  EXPECT_GT(served, strong / 2);
  EXPECT_GT(silent, 1000);
}

TEST(TrackOrder, KeepsSilentWhereTheChanceVotesOfThousandsPileUp) {
  std::mt19937 random(1);
  for (const std::uint32_t places : {40000U, 22000U, 18000U, 12000U}) {
    std::vector<Votes> votes;
    for (std::int32_t i = 0; i < 300'000; ++i) {
      votes.push_back({1 + i / 100, static_cast<std::int32_t>(random() % places), 1});
    }
    const HitsByTrack hits(passOf(votes));
    EXPECT_EQ(answer(hits, chooseTrackOrder(hits, kMinimum).tracks), 0) << places;
  }
}

// Every plan fails here: 2,000 tracks hide the leader, and nothing can go before it.
TEST(TrackOrder, TakesBoundedWorkWhereNoOrderServes) {
  std::vector<Votes> all{{1, 5, 300}};
  for (std::int32_t i = 0; i < 2000; ++i) {
    all.push_back({2 + i, 5, 5 + i % 36});
    all.push_back({2 + i, 100 + 7 * i % 900, 30});
  }
  const HitsByTrack hits(passOf(all));
  VoteTrial trial(hits);
  std::size_t votes = 0;
  for (int rounds = 0; rounds < 1000 && !trial.isExhausted(); ++rounds) {
    for (std::size_t track = 0; track < hits.tracks().size(); ++track) {
      trial.visit(track, [](const VoteTrial::Visit&) { return false; });
    }
    votes += hits.hitCount();
  }
  EXPECT_LT(votes, 16 * hits.hitCount());
  EXPECT_EQ(chooseTrackOrder(hits, kMinimum).tracks.size(), hits.tracks().size());
}

}  // namespace
}  // namespace lirvox::test
