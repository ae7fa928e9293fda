// The rows of tracks, and which hashes are common.
#include "catalog/CatalogError.h"
#include "catalog/HashCounts.h"
#include "catalog/TrackFingerprinter.h"
#include "tests/support/Tune.h"
#include "tools/QueryPass.h"

namespace lirvox::catalog {
namespace {

Sighting sighting(std::int32_t hash, std::int32_t time, float strength = 0.5F) {
  return {{time, hash}, strength};
}

// What is selected of `sightings` that come in stretches of `step` frames.
std::vector<QueryHash> select(const std::vector<Sighting>& sightings, bool best, std::size_t count,
                              std::int32_t step = 1000, std::size_t memory = 1 << 20) {
  RowSelection selection(best, memory);
  for (std::int32_t end = step; end < 1000 + step; end += step) {
    std::vector<Sighting> stretch;
    std::copy_if(sightings.begin(), sightings.end(), std::back_inserter(stretch),
                 [&](const Sighting& s) { return s.row.time < end && s.row.time >= end - step; });
    selection.add(stretch, end);
  }
  return selection.finish(count);
}

TEST(HashCounts, SurvivePackingAndDamageIsNoticed) {
  HashCounts counts(kHashes);
  counts[0] = 1;
  counts[129] = 4'000'000'000U;
  counts[kHashes - 1] = 300;
  const std::string packed = pack(counts);
  EXPECT_EQ(unpack(packed), counts);
  EXPECT_LT(packed.size(), 20U);
  EXPECT_THROW(unpack(packed.substr(0, packed.size() - 1)), std::invalid_argument);
  EXPECT_THROW(unpack(packed + packed), std::invalid_argument);
  EXPECT_THROW(unpack("\xff\xff\xff\xff\xff\xff"), std::invalid_argument);
}

TEST(CommonHashes, AreThoseFarAboveTheMeanOfWhatOccurs) {
  HashCounts counts(kHashes);
  for (std::size_t hash = 0; hash < 99; ++hash) counts[hash] = 10;
  counts[99] = 1010;  // the mean is 20
  EXPECT_EQ(commonHashLimit(counts, {5.0, 0}), 100U);
  EXPECT_EQ(commonHashLimit(counts, {5.0, 400}), 400U);
  EXPECT_GT(commonHashLimit(counts, {0.0, 0}), 1'000'000'000U);
  EXPECT_GT(commonHashLimit(HashCounts(kHashes), {5.0, 0}), 1'000'000'000U);
}

TEST(RowSelection, PrefersRowsThatManyAlignmentsShowAndStrongOnes) {
  const std::vector<Sighting> sightings = {sighting(1, 10),       sighting(2, 50),
                                           sighting(2, 50),       sighting(2, 50),
                                           sighting(3, 70, 3.0F), sighting(3, 70, 0.1F)};
  EXPECT_EQ(select(sightings, true, 1), (std::vector<QueryHash>{{70, 3}}));
  EXPECT_EQ(select(sightings, true, 2), (std::vector<QueryHash>{{50, 2}, {70, 3}}));
  EXPECT_EQ(select(sightings, false, 0), (std::vector<QueryHash>{{10, 1}, {50, 2}, {70, 3}}));
  // Of equal hashes one within a window.
  const std::vector<Sighting> sustained = {sighting(7, 20, 0.1F), sighting(7, 21, 0.9F),
                                           sighting(7, 23, 0.8F), sighting(7, 24, 0.7F),
                                           sighting(8, 22, 0.1F)};
  EXPECT_EQ(select(sustained, true, 10), (std::vector<QueryHash>{{21, 7}, {24, 7}, {22, 8}}));
}

TEST(RowSelection, IsTheSameWhateverTheStretchesAndTheMemory) {
  std::mt19937 random(3);
  std::vector<Sighting> sightings;
  for (int i = 0; i < 4000; ++i) {
    const auto bits = static_cast<std::uint32_t>(random());
    // Few hashes and strengths, so that rows are close, and equally good, again and again.
    sightings.push_back(sighting(static_cast<std::int32_t>(bits % 16),
                                 static_cast<std::int32_t>(bits / 16 % 1000),
                                 static_cast<float>(bits >> 28)));
  }
  for (const std::size_t count : {0U, 1U, 700U, 1500U, 9999U}) {
    const std::vector<QueryHash> rows = select(sightings, true, count);
    for (const std::int32_t step : {1, 7, 500}) {
      EXPECT_EQ(select(sightings, true, count, step, 2000), rows) << count << ' ' << step;
    }
  }
}

TEST(TrackFingerprinter, GivesTheSameRowsWhateverTheMemory) {
  const RowRule rule{4, 100'000};
  TrackFingerprinter plain(rule);
  TrackFingerprinter frugal(rule, 1000);
  // Around one frame, the frames of one step, and long enough for all that is done in stretches.
  for (const int samples : {0, 511, 512, 575, 576, 8447, 8448, 8703, 8704, 11'025 * 120}) {
    const std::vector<std::int32_t> tune =
        test::makeTune(6, static_cast<double>(samples) / 11025.0);
    plain.add(tune.data(), tune.size());
    frugal.add(tune.data(), tune.size());
    const std::vector<QueryHash> rows = plain.finish();
    EXPECT_EQ(frugal.finish(), rows) << samples;
    EXPECT_EQ(rows.size() > 3000, samples > 11'025) << rows.size();
  }
}

TEST(TrackFingerprinter, SaysWhenThereIsNoRoomForATemporaryFile) {
  ::setenv("TMPDIR", "/proc/nowhere", 1);
  const std::vector<std::int32_t> tune = test::makeTune(6, 1.0);
  TrackFingerprinter frugal({1, 0}, 1000);
  EXPECT_THROW(frugal.add(tune.data(), tune.size()), CatalogError);
  ::unsetenv("TMPDIR");
  frugal.clear();
  EXPECT_TRUE(frugal.finish().empty());
}

TEST(TrackFingerprinter, CanBeStoppedAnywhereAndStartsAnew) {
  const std::vector<std::int32_t> tune = test::makeTune(6, 120.0);
  const RowRule rule{2, 0};
  int steps = 0;  // left to go
  TrackFingerprinter fingerprinter(rule, 1000, [&] {
    if (steps-- == 0) throw CatalogError("stopped");
  });
  for (const int most : {0, 300, 600, 1203}) {
    steps = most;
    fingerprinter.add(tune.data(), tune.size());
    EXPECT_THROW(fingerprinter.finish(), CatalogError) << most;
    fingerprinter.clear();
  }
  steps = -1;
  TrackFingerprinter fresh(rule);
  for (TrackFingerprinter* one : {&fingerprinter, &fresh}) one->add(tune.data(), tune.size());
  EXPECT_EQ(fingerprinter.finish(), fresh.finish());
}

TEST(TrackFingerprinter, SeesWhatAQuerySeesWhateverThePieces) {
  const std::vector<std::int32_t> tune = test::makeTune(5, 2560 * 20 / 11025.0);
  tools::QueryPass pass;
  pass.add(tune.data(), tune.size());
  const auto shifts = pass.hashesByShift();
  std::set<std::pair<std::int32_t, std::int32_t>> expected;
  for (const std::size_t shift : {0UL, 2UL}) {
    for (const QueryHash& query : shifts[shift]) expected.insert({query.hash, query.time});
  }

  TrackFingerprinter fingerprinter({2, 0});
  for (const std::size_t piece : {1UL, 700UL, 4096UL, 1'000'000UL}) {
    for (std::size_t i = 0; i < tune.size(); i += piece) {
      fingerprinter.add(tune.data() + i, std::min(piece, tune.size() - i));
    }
    std::vector<std::pair<std::int32_t, std::int32_t>> rows;
    for (const QueryHash& row : fingerprinter.finish()) rows.push_back({row.hash, row.time});
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), expected.begin(), expected.end())) << piece;
  }
  EXPECT_TRUE(fingerprinter.finish().empty());
}

}  // namespace
}  // namespace lirvox::catalog
