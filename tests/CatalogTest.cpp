// Building databases: rows, common hashes, files that grow.
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "catalog/Catalog.h"
#include "catalog/CatalogError.h"
#include "catalog/CatalogSummary.h"
#include "catalog/HashCounts.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/LirvoxDatabase.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"
#include "tools/QueryPass.h"

namespace lirvox::catalog {

namespace {

using test::TemporaryFolder;

Sighting sighting(std::int32_t hash, std::int32_t time, double strength = 0.5) {
  return {{time, hash}, strength};
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
  const std::vector<Sighting> sightings = {sighting(1, 10),      sighting(2, 50),
                                           sighting(2, 50),      sighting(2, 50),
                                           sighting(3, 70, 3.0), sighting(3, 70, 0.1)};
  EXPECT_EQ(bestRows(sightings, 1), (std::vector<QueryHash>{{70, 3}}));
  EXPECT_EQ(bestRows(sightings, 2), (std::vector<QueryHash>{{50, 2}, {70, 3}}));
  EXPECT_EQ(allRows(sightings), (std::vector<QueryHash>{{10, 1}, {50, 2}, {70, 3}}));
}

TEST(RowSelection, KeepsOneOfEqualHashesWithinAWindow) {
  const std::vector<Sighting> sustained = {sighting(7, 20, 0.1), sighting(7, 21, 0.9),
                                           sighting(7, 23, 0.8), sighting(7, 24, 0.7),
                                           sighting(8, 22, 0.1)};
  EXPECT_EQ(bestRows(sustained, 10), (std::vector<QueryHash>{{21, 7}, {24, 7}, {22, 8}}));
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

class CatalogFileTest : public ::testing::Test {
 protected:
  static NewTrack track(const std::string& path, std::vector<QueryHash> rows) {
    return {{path, "", path, 60.0}, {1, 1}, std::move(rows)};
  }

  // hash -> tracks that a recognition would find.
  std::map<std::int32_t, std::vector<std::int32_t>> found(std::vector<QueryHash> hashes) const {
    LirvoxDatabase database(path_);
    const auto rows = database.selectFingerprints(hashes);
    std::map<std::int32_t, std::vector<std::int32_t>> tracks;
    for (const QueryHash& query : hashes) {
      for (const LirvoxDBRow& row : rows->find(DecimalString(query.hash))) {
        tracks[query.hash].push_back(row.track_id.intValue());
      }
    }
    return tracks;
  }

  using Found = std::map<std::int32_t, std::vector<std::int32_t>>;
  TemporaryFolder folder_;
  const std::string path_ = folder_.path("music.sqlite").string();
};

TEST_F(CatalogFileTest, ChangesAreWholeAndAppearWithTheCommit) {
  {
    Catalog dropped(path_, {});
    dropped.add(track("a", {{1, 100}}));
  }
  EXPECT_TRUE(test::contents(folder_.path()).empty());

  Catalog catalog(path_, {});
  catalog.add(track("b", {{4, 100}, {9, 100}, {2, 300}}));
  catalog.add(track("a", {{1, 100}}));
  catalog.commit();
  EXPECT_EQ(found({{0, 100}, {0, 300}}), (Found{{100, {1, 2, 2}}, {300, {2}}}));
  EXPECT_TRUE(catalog.contains("a", {1, 1}));
  EXPECT_FALSE(catalog.contains("a", {1, 2}));
  EXPECT_FALSE(catalog.contains("c", {1, 1}));

  const std::string before = test::readFile(path_);
  {
    Catalog dropped(path_, {});
    dropped.add(track("c", {{1, 100}}));
  }
  EXPECT_EQ(test::readFile(path_), before);
  EXPECT_EQ(test::contents(folder_.path()).size(), 1U) << "side files";
}

TEST_F(CatalogFileTest, AChangedTrackKeepsItsIdAndLosesItsRows) {
  Catalog catalog(path_, {});
  catalog.add(track("a", {{1, 100}, {5, 100}}));
  catalog.add(track("b", {{1, 100}}));
  catalog.commit();
  catalog.add(track("a", {{1, 200}}));
  catalog.commit();
  EXPECT_EQ(found({{0, 100}, {0, 200}}), (Found{{100, {2}}, {200, {1}}}));
  EXPECT_EQ(summarize(path_).tracks, 2);
}

TEST_F(CatalogFileTest, CommonHashesAreHeldAndComeBackWhenTheyAreNoLongerCommon) {
  const auto rowsOf = [](std::int32_t hash, std::int32_t count) {
    std::vector<QueryHash> rows;
    for (std::int32_t time = 0; time < count; ++time) rows.push_back({time, hash});
    return rows;
  };
  CatalogOptions options;
  options.commonHashes = 1.5;
  Catalog catalog(path_, options);
  catalog.add(track("a", rowsOf(100, 300)));
  catalog.add(track("b", rowsOf(200, 10)));
  catalog.commit();  // the mean is 155
  EXPECT_EQ(found({{0, 100}, {0, 200}}).size(), 1U);
  EXPECT_EQ(summarize(path_).heldRows, 300);

  catalog.add(track("c", rowsOf(300, 400)));
  catalog.commit();  // the mean is 237
  const Found tracks = found({{0, 100}, {0, 200}, {0, 300}});
  EXPECT_EQ(tracks.at(100).size(), 300U);
  EXPECT_EQ(tracks.count(300), 0U);
  EXPECT_EQ(summarize(path_).heldRows, 400);
}

TEST_F(CatalogFileTest, RefusesWhatItHasNotMadeOrCannotContinue) {
  test::writeFile(path_, "no database at all, whatever its name says");
  EXPECT_THROW(Catalog(path_, {}), CatalogError);
  EXPECT_EQ(test::readFile(path_).rfind("no database", 0), 0U);

  const std::string other = folder_.path("other.sqlite").string();
  Catalog(other, {4, 0, {}}).commit();
  EXPECT_EQ(Catalog(other, {}).rowRule().alignments, 4);
  EXPECT_THROW(Catalog(other, {8, {}, {}}), CatalogError);
  EXPECT_THROW(Catalog("/proc/nowhere/new.sqlite", {}), CatalogError);
}

}  // namespace
}  // namespace lirvox::catalog
