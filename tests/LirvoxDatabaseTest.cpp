// The fingerprint store, on real SQLite files.
#include <sqlite3.h>
#include <sys/stat.h>

#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/SqlTrace.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using Lines = std::vector<std::string>;
using Times = std::vector<std::pair<std::int32_t, std::int32_t>>;  // track and time

struct Database : testing::Test {
  // The store of a file with `rows`.
  LirvoxDatabase& store(const std::vector<FingerprintRow>& rows) {
    writeFingerprintFile(path_, rows);
    return store_;
  }

  static Times times(const LirvoxRowMap& map, std::int32_t hash) {
    Times result;
    for (const LirvoxDBRow& row : map.find(DecimalString(hash))) {
      EXPECT_EQ(row.hash1.intValue(), hash);
      result.emplace_back(row.track_id.intValue(), row.time_in_track.intValue());
    }
    return result;
  }

  TestPlatform platform_;
  const std::string path_ = platform_.folder.path("store.sqlite");
  LirvoxDatabase store_{path_};
};

TEST_F(Database, GivesTheRowsOfEachHashInTheFilesOrder) {
  const std::vector<FingerprintRow> rows = {{7, 4, 100},
                                            {3, 5, 200},
                                            {7, 2, 100},
                                            {1, -9, 100},
                                            {9, 9, 300},
                                            {3, 5, 200},
                                            {2147483647, 0, 1048575}};
  store(rows);
  const std::string before = readFile(path_);
  const auto map = store_.selectFingerprints({{50, 1048575}, {1, 200}, {2, 100}, {3, 5}, {4, 200}});
  ASSERT_TRUE(map);
  EXPECT_EQ(times(*map, 100), (Times{{7, 4}, {7, 2}, {1, -9}}));
  EXPECT_EQ(times(*map, 200), (Times{{3, 5}, {3, 5}}));
  EXPECT_EQ(times(*map, 1048575), (Times{{2147483647, 0}}));
  EXPECT_EQ(times(*map, 5), Times());
  EXPECT_EQ(times(*map, 300), Times());
  EXPECT_EQ(map->size(), 3U);
  EXPECT_EQ(map->rowCount(), 6U);
  EXPECT_EQ(readFile(path_), before);
}

TEST_F(Database, AsksOncePerDistinctPairAndInOneStatement) {
  LirvoxDatabase& store = this->store({{1, 2, 7}});
  SqlTrace trace;
  const auto map = store.selectFingerprints({{9, 7}, {0, 7}, {9, 7}, {9, 7}});
  EXPECT_EQ(times(map.value(), 7), (Times{{1, 2}}));
  EXPECT_TRUE(store.selectFingerprints({}).value().empty());
  const std::string select =
      "SELECT track_id AS id, num1 AS  time_in_track, num2 AS hash FROM db WHERE num2 IN (";
  EXPECT_EQ(trace.takeStatements(), (Lines{select + "7,7)", select + ")"}));
}

TEST_F(Database, TakesTheHashesOfTheLongestCapture) {
  std::vector<QueryHash> hashes;
  for (std::int32_t i = 0; i < 400000; ++i) hashes.push_back({i / 16, i * 911 % 1048576});
  LirvoxDatabase& store = this->store({{1, 2, 0}, {1, 3, 911}, {1, 4, 399999 * 911 % 1048576}});
  EXPECT_EQ(store.selectFingerprints(hashes).value().rowCount(), 3U);
}

TEST_F(Database, AnswersNothingWithoutATable) {
  LirvoxDatabase inMemory(std::nullopt);
  LirvoxDatabase temporary("");
  runSql(path_, "CREATE TABLE other(a)");
  EXPECT_EQ(inMemory.sqlitePath(), ":memory:");
  EXPECT_EQ(temporary.sqlitePath(), "");
  for (LirvoxDatabase* const store : {&inMemory, &temporary, &store_}) {
    EXPECT_FALSE(store->selectFingerprints({{0, 1}})) << store->sqlitePath();
    EXPECT_FALSE(store->databaseInfo()) << store->sqlitePath();
    EXPECT_FALSE(store->databaseExists()) << "is closed again";
  }
  EXPECT_EQ(platform_.log->lines().at(0), "The Database <LirvoxDatabase: :memory:> is not open.");
}

TEST_F(Database, LogsErrorsOnlyWhenTracing) {
  writeFile(path_, "");
  EXPECT_FALSE(store_.databaseInfo());
  EXPECT_EQ(platform_.log->lines(), Lines());
  store_.setTraceExecution(true);
  EXPECT_FALSE(store_.databaseInfo());
  const std::string query = "SELECT track_id FROM db GROUP BY track_id";
  EXPECT_EQ(platform_.log->lines(),
            (Lines{"executeQuery: " + query, "DB Error: 1 \"no such table: db\"",
                   "DB Query: " + query, "DB Path: " + path_}));
  // A lookup sets tracing back to what the settings say.
  EXPECT_FALSE(store_.selectFingerprints({{0, 1}}));
  EXPECT_FALSE(store_.traceExecution());
  EXPECT_EQ(platform_.log->lines().size(), 4U);
}

TEST_F(Database, AnswersNothingWhenSQLiteCannotOpenTheFile) {
  store_.setDatabasePath(platform_.folder.path("nowhere/store.sqlite"));
  EXPECT_FALSE(store_.selectFingerprints({{0, 1}}));
  EXPECT_EQ(platform_.log->lines(), Lines{"error opening!: 14"});
  EXPECT_FALSE(store_.selectFingerprints({{0, 1}}));
  store_.setDatabasePath(path_);
  EXPECT_TRUE(store({{1, 2, 3}}).selectFingerprints({{0, 3}}));
}

TEST_F(Database, NobodyWaitsForAPipeInThePlaceOfAFile) {
  store({{1, 2, 3}});
  for (const char* const ending : {"-wal", "-journal", ""}) {
    const std::string pipe = path_ + ending;
    std::filesystem::remove(pipe);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(store_.selectFingerprints({{0, 3}}));
    EXPECT_FALSE(store_.databaseInfo());
    EXPECT_TRUE(platform_.log->has(pipe + ": a pipe or a device in the place of a file"));
    std::filesystem::remove(pipe);
  }
}

TEST_F(Database, SummarisesItsTracksAndTheInstalledFile) {
  writeFile(LirvoxSettings::databasePath(), std::string(3 * 512 * 1024, 'x'));
  LirvoxDatabase& store = this->store({{12, 0, 1}, {7, 0, 1}, {12, 5, 2}, {7, 1, 9}});
  EXPECT_EQ(store.databaseInfo(), "DB size: 1.500000 Mb\nVideo id's: 7,12");
  std::filesystem::remove(LirvoxSettings::databasePath());
  EXPECT_EQ(store.databaseInfo(), "DB size: 0.000000 Mb\nVideo id's: 7,12");
}

// Another connection that holds the file for itself.
class Lock {
 public:
  explicit Lock(const std::string& path) {
    sqlite3_open(path.c_str(), &connection_);
    EXPECT_EQ(sqlite3_exec(connection_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  }
  ~Lock() { sqlite3_close(connection_); }

 private:
  sqlite3* connection_ = nullptr;
};

TEST_F(Database, GivesUpALockedFileAfterItsRetryTime) {
  LirvoxDatabase& store = this->store({{1, 2, 3}});
  EXPECT_EQ(store.maxBusyRetryTimeInterval(), 2.0);
  const Lock lock(path_);
  for (const double seconds : {-1.0, 0.0, 0.1}) {
    store.setMaxBusyRetryTimeInterval(seconds);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(store.selectFingerprints({{0, 3}})) << seconds;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed.count(), seconds);
    EXPECT_LT(elapsed.count(), 1.9) << "not the usual 2 s";
  }
  store.setMaxBusyRetryTimeInterval(30.0);
  ASSERT_TRUE(store.open());
  store.setMaxBusyRetryTimeInterval(0.0);  // takes the handler off the open file
  EXPECT_FALSE(store.selectFingerprints({{0, 3}}));
}

TEST_F(Database, WaitsForALockedFileToBeReleased) {
  LirvoxDatabase& store = this->store({{1, 2, 3}});
  store.setMaxBusyRetryTimeInterval(60.0);
  auto lock = std::make_unique<Lock>(path_);
  std::promise<void> opened;
  const SqlTrace trace([&](sqlite3*) { opened.set_value(); });
  auto answer = std::async(std::launch::async, [&] { return store.selectFingerprints({{0, 3}}); });
  opened.get_future().wait();
  lock.reset();
  EXPECT_EQ(answer.get().value().rowCount(), 1U);
}

TEST_F(Database, FinalizesLeakedStatementsWhenClosed) {
  const SqlTrace trace([](sqlite3* connection) {
    for (int i = 0; i < 2; ++i) {
      sqlite3_stmt* leaked = nullptr;
      sqlite3_prepare_v2(connection, "SELECT 1", -1, &leaked, nullptr);
    }
  });
  ASSERT_TRUE(store_.open());
  ASSERT_TRUE(store_.open());
  EXPECT_TRUE(store_.databaseExists());
  EXPECT_TRUE(store_.close());
  EXPECT_TRUE(store_.close());
  EXPECT_EQ(platform_.log->lines(), (Lines(2, "Closing leaked statement")));
}

}  // namespace
}  // namespace lirvox::test
