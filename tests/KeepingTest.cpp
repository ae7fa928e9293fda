// Keeping a catalogue: adding, listing, removing, renaming, merging, verifying, duplicates.
#include "catalog/Catalog.h"
#include "catalog/CatalogError.h"
#include "catalog/CatalogFile.h"
#include "catalog/CatalogSummary.h"
#include "catalog/DeviceDatabase.h"
#include "catalog/Duplicates.h"
#include "catalog/Merge.h"
#include "catalog/TrackChanges.h"
#include "catalog/Verify.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Test.h"

namespace lirvox::catalog {
namespace {

using Row = std::tuple<std::string, std::int32_t, std::int32_t>;  // title, time, hash

void ignoreProgress(double) {}

NewTrack track(const std::string& title, std::vector<QueryHash> rows, std::int64_t size = 1) {
  return {{title, "artist", "/music/" + title, 60.0}, {size, 1}, std::move(rows)};
}

std::vector<QueryHash> rowsOf(std::int32_t hash, std::int32_t count) {
  std::vector<QueryHash> rows;
  for (std::int32_t time = 0; time < count; ++time) rows.push_back({time, hash});
  return rows;
}

void expectError(const std::string& says, const std::function<void()>& operation) {
  try {
    operation();
    ADD_FAILURE() << says;
  } catch (const CatalogError& error) {
    EXPECT_NE(std::string(error.what()).find(says), std::string::npos) << error.what();
  }
}

// Has hashes with more than one and a half times the mean of rows held.
const CatalogOptions kHoldsCommon{{}, {}, 1.5};

struct Keeping : ::testing::Test {
  using Titles = std::map<std::int32_t, std::string>;

  std::string make(const std::string& name, std::vector<NewTrack> tracks,
                   CatalogOptions options = {}) const {
    Catalog catalog(path(name), options);
    for (NewTrack& track : tracks) catalog.add(std::move(track));
    catalog.commit();
    return path(name);
  }

  std::string path(const std::string& name) const { return folder_.path(name).string(); }

  static std::set<Row> rows(const std::string& path, const std::string& table) {
    const auto database = openForReading(path);
    SQLite::Statement query(
        *database, "SELECT title, num1, num2 FROM tracks JOIN " + table + " USING(track_id)");
    std::set<Row> rows;
    while (query.executeStep()) {
      rows.insert({query.getColumn(0).getString(), query.getColumn(1).getInt(),
                   query.getColumn(2).getInt()});
    }
    return rows;
  }

  static Titles titles(const std::string& path) {
    Titles titles;
    for (const ListedTrack& track : listTracks(path)) titles[track.id] = track.info.title;
    return titles;
  }

  static std::vector<std::string> violations(const std::string& path) {
    std::vector<std::string> all;
    for (const auto& found : verify(path, ignoreProgress).violations) all.push_back(found.what);
    return all;
  }

  test::TemporaryFolder folder_;
};

TEST_F(Keeping, PatternsFindWhatAPersonMeans) {
  const std::string file = make("a", {track("One [live]", {}), track("Two", {}), track("2", {})});
  const std::tuple<const char*, std::size_t, std::size_t> cases[] = {
      {"one [LIVE]", 1, 1}, {"one", 0, 1},           {"artist - *", 3, 3}, {"2", 2, 2},
      {"/music/Two", 1, 1}, {"/music/x/../2", 1, 1}, {"t?o", 1, 1},        {"", 0, 3},
      {"1", 1, 1},          {"*[live*", 1, 1}};
  for (const auto& [text, exactly, anywhere] : cases) {
    std::size_t found = 0;
    std::size_t foundAnywhere = 0;
    for (const ListedTrack& listed : listTracks(file)) {
      found += TrackPattern(text).matches(listed);
      foundAnywhere += TrackPattern::anywhere(text).matches(listed);
    }
    EXPECT_EQ(found, exactly) << text;
    EXPECT_EQ(foundAnywhere, anywhere) << text;
  }
}

TEST_F(Keeping, CommonHashesAreHeldAndComeBackWhenTheyAreNoLongerCommon) {
  const std::string file =
      make("a", {track("a", rowsOf(100, 300)), track("b", rowsOf(200, 10))}, kHoldsCommon);
  EXPECT_EQ(rows(file, "held").size(), 300U) << "the mean is 155";
  make("a", {track("c", rowsOf(300, 400))});
  EXPECT_EQ(rows(file, "held").size(), 400U) << "the mean is 237";
  EXPECT_EQ(rows(file, "db").size(), 310U);
}

TEST_F(Keeping, RemovedTracksAreGoneWithTheirRowsAndTheirIds) {
  const std::string file = make(
      "a", {track("a", rowsOf(100, 300)), track("b", rowsOf(200, 280)), track("c", rowsOf(7, 9))},
      kHoldsCommon);  // the mean is 196: rows of 100 are held
  auto tracks = listTracks(file);
  countRows(file, tracks, ignoreProgress);
  EXPECT_EQ(tracks[0].heldRows, 300);
  EXPECT_EQ(tracks[1].rows, 280);
  removeTracks(file, {tracks[0], tracks[2]});
  EXPECT_EQ(titles(file), (Titles{{2, "b"}}));
  EXPECT_EQ(rows(file, "db").size(), 280U);
  EXPECT_TRUE(rows(file, "held").empty());
  EXPECT_EQ(violations(file), std::vector<std::string>());
  EXPECT_THROW(removeTracks(file, {tracks[1], tracks[0]}), CatalogError);

  make("a", {track("d", rowsOf(5, 1))});
  EXPECT_EQ(titles(file), (Titles{{2, "b"}, {4, "d"}}));
}

TEST_F(Keeping, ARenamedTrackIsKnownByItsNewPath) {
  const std::string file = make("a", {track("a", rowsOf(1, 2)), track("b", rowsOf(1, 3))});
  renameTrack(file, listTracks(file)[0], {"A", "", "/new/a"});
  EXPECT_EQ(fullTitle(listTracks(file)[0].info), "A");
  EXPECT_TRUE(Catalog(file, {}).contains("/new/a", {1, 1}));
  EXPECT_EQ(violations(file), std::vector<std::string>());
  EXPECT_THROW(renameTrack(file, listTracks(file)[0], {{}, {}, "/music/b"}), CatalogError);
  EXPECT_THROW(renameTrack(path("none"), listTracks(file)[0], {"x", {}, {}}), CatalogError);
  EXPECT_EQ(test::contents(folder_.path()).size(), 1U);
}

TEST_F(Keeping, AMergeHoldsWhatOneCatalogueOfAllWouldHold) {
  const std::vector<NewTrack> all = {track("a", rowsOf(100, 150)), track("b", rowsOf(200, 10)),
                                     track("c", rowsOf(100, 150)), track("d", {{3, 9}, {1, 8}})};
  const std::string whole = make("whole", all, kHoldsCommon);
  const std::string first = make("first", {all[0], all[1]}, kHoldsCommon);
  const std::string second = make("second", {all[1], all[2]}, kHoldsCommon);
  const std::string third = make("third", {all[3]}, kHoldsCommon);
  const std::string out = path("out");
  const Merged merged = merge({first, second, third}, out, {}, ignoreProgress);
  EXPECT_EQ(merged.tracks, 4);
  EXPECT_EQ(merged.same, 1);
  EXPECT_EQ(merged.rows, 312);
  for (const char* const table : {"db", "held"}) EXPECT_EQ(rows(out, table), rows(whole, table));
  EXPECT_EQ(rows(out, "held").size(), 300U);
  EXPECT_EQ(titles(out), titles(whole));
  EXPECT_EQ(violations(out), std::vector<std::string>());

  const std::string atOnce = test::readFile(out);
  merge({second, third}, path("step"), {}, ignoreProgress);
  merge({first, path("step")}, out, {}, ignoreProgress);
  EXPECT_EQ(test::readFile(out), atOnce) << "in steps";
  merge({out, first}, out, {}, ignoreProgress);
  EXPECT_EQ(test::readFile(out), atOnce) << "into one of the parts";
}

TEST_F(Keeping, AMergeRefusesWhatDoesNotFitTogether) {
  const std::string first = make("first", {track("a", rowsOf(1, 2)), track("b", rowsOf(5, 5))});
  const std::string changed = make("changed", {track("a", rowsOf(3, 4), 2)});
  const std::map<std::string, std::string> bad = {
      {changed, "--replace"},
      {make("coarse", {track("z", {})}, {1, {}, {}}), "made with alignments = 1"},
      {make("few", {track("z", {})}, {{}, 9, {}}), "made with rows per hour = 9"},
      {make("rare", {track("z", {})}, {{}, {}, 3.0}), "--common"},
      {path("none"), "none"}};
  const auto before = test::contents(folder_.path());
  for (const auto& [part, says] : bad) {
    expectError(says, [&, part = part] { merge({first, part}, path("out"), {}, ignoreProgress); });
  }
  expectError("stop",
              [&] { merge({first}, path("out"), {}, [](double) { throw CatalogError("stop"); }); });
  EXPECT_EQ(test::contents(folder_.path()), before);

  EXPECT_EQ(merge({first, changed}, path("out"), {{}, true}, ignoreProgress).replaced, 1);
  EXPECT_EQ(titles(path("out")), titles(first));
  EXPECT_EQ(rows(path("out"), "db").count({"a", 0, 3}), 1U);
  EXPECT_EQ(rows(path("out"), "db").size(), 9U);
  EXPECT_EQ(violations(path("out")), std::vector<std::string>());
}

TEST_F(Keeping, VerifyTellsWhatIsWrong) {
  const std::pair<const char*, const char*> cases[] = {
      {"DELETE FROM tracks WHERE track_id = 1", "rows without a track"},
      {"INSERT INTO db VALUES(1, 0, 1048576)", "rows with hashes that cannot occur"},
      {"INSERT INTO db VALUES(1, -1, 5)", "rows with times that cannot be"},
      {"INSERT INTO db VALUES(1, 2600, 5)", "rows later than the end of their track"},
      {"INSERT INTO db VALUES(1, 'x', 5)", "values in rows that are no whole numbers"},
      {"INSERT INTO db VALUES(0, 1, 5)", "rows with ids that no recognition can return"},
      {"DELETE FROM db WHERE num1 = 1", "hashes with more or fewer rows than noted"},
      {"INSERT INTO held SELECT * FROM db; DELETE FROM db",
       "hashes whose rows are in the wrong table"},
      {"UPDATE config SET value = 3.0 WHERE key = 'alignments'", "notes that cannot be"},
      {"INSERT INTO config VALUES('colour', 1)", "notes that nobody knows"},
      {"DELETE FROM sources", "tracks without their file"},
      {"UPDATE sources SET track_id = 2", "files without their track"},
      {"ALTER TABLE held RENAME TO kept", "columns that are not there"},
      {"CREATE TABLE t AS SELECT * FROM db; DROP TABLE db; ALTER TABLE t RENAME TO db",
       "tables that are not clustered by hash"},
      {"PRAGMA user_version = 9", "versions that this lirvox does not know"},
      {"PRAGMA application_id = 0; CREATE TABLE t AS SELECT * FROM db; DROP TABLE db; "
       "ALTER TABLE t "
       "RENAME TO db; INSERT INTO db SELECT * FROM db",
       "rows that are there twice"}};
  const std::string file = make("a", {track("a", rowsOf(100, 3))});
  EXPECT_EQ(verify(file, ignoreProgress).kind, "catalogue");
  EXPECT_EQ(violations(DeviceDatabase(file, folder_.path()).path()), std::vector<std::string>());
  const std::string sound = test::readFile(file);
  for (const auto& [change, says] : cases) {
    test::writeFile(file, sound);
    EXPECT_EQ(violations(file), std::vector<std::string>());
    SQLite::Database(file, SQLite::OPEN_READWRITE).exec(change);
    const auto found = violations(file);
    EXPECT_EQ(std::count(found.begin(), found.end(), says), 1) << change;
  }
  test::writeFile(file, sound.substr(0, sound.size() / 2));
  EXPECT_EQ(violations(file).front(), "damages of the file");
  std::string damaged = sound;
  for (const std::size_t page : {1U, 2U}) damaged[page * 4096 + 7] = 9;  // free bytes that are not
  test::writeFile(file, damaged);
  EXPECT_EQ(verify(file, ignoreProgress).violations.front().count, 2);
  test::writeFile(file, "no database");
  EXPECT_EQ(violations(file).front(), "damages of the file");
}

// Asked without restraint, the view has no end, and the journal takes the victim away.
TEST_F(Keeping, RefusesFilesThatDoMoreThanHoldRows) {
  const auto expectRefused = [](const std::string& file, const std::string& reading,
                                const std::string& writing) {
    expectError(reading, [&] { summarize(file); });
    expectError(writing, [&] { expectWritableCatalog(file); });
  };
  const std::string file = make("a", {track("a", rowsOf(100, 3))});
  const std::string sound = test::readFile(file);
  const std::pair<const char*, const char*> cases[] = {
      {"DROP TABLE db; CREATE VIEW db AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i FROM "
       "n) SELECT i AS track_id, i AS num1, i AS num2 FROM n",
       "db is no ordinary table (view)"},
      {"DROP TABLE held; CREATE VIRTUAL TABLE held USING fts5(num1, num2)", "(virtual)"},
      {"ALTER TABLE tracks ADD COLUMN more AS (title || title)", "(generated columns)"},
      {"CREATE INDEX some ON db(num1) WHERE num1 > num2", "(a partial index)"},
      {"CREATE INDEX sums ON db(num1 + num2)", "(an index on expressions)"}};
  for (const auto& [change, says] : cases) {
    test::writeFile(file, sound);
    SQLite::Database(file, SQLite::OPEN_READWRITE).exec(change);
    expectRefused(file, says, says);
  }
  test::writeFile(path("victim"), "precious");
  test::writeFingerprintFile(path("hot"), std::vector<test::FingerprintRow>(2000, {1, 2, 3}));
  test::writeJournalThatRemoves(path("victim"), path("hot"));
  expectRefused(path("hot"), "a change of it was interrupted", "would remove a file");
  EXPECT_EQ(test::readFile(path("victim")), "precious");
}

// Rows as music has them: about 90 a second, any hash, from `from` to `to` seconds.
std::vector<QueryHash> passage(unsigned seed, int from, int to, std::int32_t shift) {
  std::mt19937 random(seed);
  std::set<std::pair<std::int32_t, std::int32_t>> rows;
  for (int i = 0; i < 90 * to; ++i) {
    const auto time = static_cast<std::int32_t>(i * 43 / 90);
    const auto hash = static_cast<std::int32_t>(random() % 20'000);
    if (time >= 43 * from) rows.insert({hash, time + shift});
  }
  std::vector<QueryHash> ordered;
  for (const auto& [hash, time] : rows) ordered.push_back({time, hash});
  return ordered;
}

TEST_F(Keeping, DuplicatesAreFoundWithTheirOffset) {
  std::vector<NewTrack> tracks;
  for (unsigned seed = 1; seed <= 8; ++seed) {
    tracks.push_back(track("track" + std::to_string(seed), passage(seed, 0, 60, 0)));
  }
  tracks.push_back(track("x-copy1", passage(1, 0, 60, 215)));
  tracks.push_back(track("y-cut2", passage(2, 20, 40, -860)));
  tracks.push_back(track("z-shares3", passage(3, 0, 12, 0)));
  for (const QueryHash& row : passage(33, 12, 60, 0)) tracks.back().rows.push_back(row);
  const std::string file = make("a", std::move(tracks));
  const auto found = findDuplicates(file, 10.0, ignoreProgress);
  ASSERT_EQ(found.size(), 3U);
  using enum Duplicate::Relation;
  const std::tuple<std::int32_t, std::int32_t, Duplicate::Relation, double, double> expected[] = {
      {1, 9, same, -215 * 256 / 11025.0, 1.0},
      {2, 10, contains, 860 * 256 / 11025.0, 0.33},
      {3, 11, shares, 0.0, 0.2}};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto& [track, other, relation, offset, share] = expected[i];
    EXPECT_EQ(std::tie(found[i].track, found[i].other, found[i].relation),
              std::tie(track, other, relation));
    EXPECT_NEAR(found[i].offsetInSeconds, offset, 0.05);
    EXPECT_NEAR(found[i].shareOfTrack, share, 0.1);
  }
  EXPECT_EQ(findDuplicates(file, 15.0, ignoreProgress).size(), 2U);
}

}  // namespace
}  // namespace lirvox::catalog
