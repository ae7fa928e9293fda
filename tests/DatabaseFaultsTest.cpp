// Databases that are strange, without end, or changed while they are read; SQLite without memory.
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "lib/Hits.h"
#include "lib/LirvoxSettings.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/Faults.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/SqlTrace.h"

namespace lirvox {
namespace {

namespace fs = std::filesystem;
using Calls = std::vector<test::RecordedDelegate::Call>;

sqlite3_mem_methods usualMemory;

// SQLite's requests for memory count from the start of the program.
const bool memoryIsFaulty = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usualMemory);
  sqlite3_mem_methods faulty = usualMemory;
  faulty.xMalloc = [](int size) {
    return test::faultIsDue() ? nullptr : usualMemory.xMalloc(size);
  };
  faulty.xRealloc = [](void* memory, int size) {
    return test::faultIsDue() ? nullptr : usualMemory.xRealloc(memory, size);
  };
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &faulty) == SQLITE_OK;
}();

class DatabaseFaults : public test::ControllerTest {
 protected:
  // A database whose table is what `sql` makes.
  void installTable(const std::string& sql) const {
    fs::create_directories(fs::path(path_).parent_path());
    fs::remove(path_);
    sqlite3* file = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &file), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(file, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    sqlite3_close(file);
  }
  Calls outcome() {
    start();
    deliver(song_);
    platform_.scheduler.run();
    return delegate_->takeCalls();
  }

  const std::string path_ = LirvoxSettings::databasePath();
  LirvoxDatabase store_{path_};
};

TEST_F(DatabaseFaults, TablesOfAnyKindAreAnswered) {
  for (const char* const sql : {
           "CREATE TABLE db(track_id, num1, num2)",
           "CREATE TABLE db(track_id TEXT, num1 BLOB, num2 REAL);"
           "INSERT INTO db SELECT 'x', zeroblob(1000000), value FROM json_each('[0,1,2.5]')",
           "CREATE TABLE db(track_id, num1, num2);"
           "INSERT INTO db VALUES(NULL, NULL, NULL), (1e300, -1e300, 9223372036854775807)",
           "CREATE VIEW db AS SELECT 7 AS track_id, 5 AS num1, 5 AS num2",
           "CREATE VIEW db AS SELECT * FROM missing",
           "CREATE VIEW db AS SELECT x AS track_id, x AS num1, x AS num2 FROM "
           "(SELECT randomblob(1 << 31) AS x)",
       }) {
    SCOPED_TRACE(sql);
    installTable(sql);
    EXPECT_EQ(outcome(), Calls{{}});
    lirvox_->databaseInfo();
  }
  fs::remove(path_);
  install();
  EXPECT_EQ(outcome(), Calls{foundSong_});
}

TEST_F(DatabaseFaults, HitsBeyondTheLimitAreLeftOut) {
  const LirvoxRowMap few({{DecimalString(1), DecimalString(2), DecimalString(5)}});
  EXPECT_TRUE(formHits(&few, {{0, 5}, {1, 5}}, 2).complete);
  const PassHits cut = formHits(&few, {{0, 5}, {1, 5}, {2, 6}}, 1);
  EXPECT_EQ(cut.hits.size(), 1U);
  EXPECT_FALSE(cut.complete);
}

TEST_F(DatabaseFaults, AFileMayBeChangedWhileItIsRead) {
  // `act` is called for each row, far apart in the file.
  static std::function<void()> action = [] {};
  const test::SqlTrace trace([](sqlite3* connection) {
    const auto act = [](sqlite3_context* context, int, sqlite3_value** values) {
      if (sqlite3_value_int(values[0]) == 100) action();
      sqlite3_result_int(context, 5);
    };
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    sqlite3_create_function(connection, "act", 1, kFlags, nullptr, act, nullptr, nullptr);
  });
  installTable(
      "CREATE TABLE db(track_id, num1, fill, num2 AS (act(track_id))); WITH RECURSIVE c(x) AS "
      "(SELECT 0 UNION ALL SELECT x + 1 FROM c LIMIT 2000) "
      "INSERT INTO db SELECT x, x, zeroblob(1000) FROM c;");
  const std::string whole = test::readFile(path_);
  const struct {
    const char* what;
    std::function<void()> action;
    bool readsAll;
  } cases[] = {
      {"nothing", [] {}, true},
      {"removed", [this] { fs::remove(path_); }, true},
      {"replaced",
       [&] {
         test::writeFile(path_ + ".new", "other");
         fs::rename(path_ + ".new", path_);
       },
       true},
      {"truncated", [this] { fs::resize_file(path_, 500'000); }, false},
      {"emptied", [this] { fs::resize_file(path_, 0); }, false},
      {"overwritten", [&] { test::writeFile(path_, std::string(whole.size(), '\xA5')); }, false},
  };
  for (const auto& [what, act, readsAll] : cases) {
    SCOPED_TRACE(what);
    test::writeFile(path_, whole);
    action = act;
    const auto map = store_.selectFingerprints({{0, 5}});
    ASSERT_TRUE(map);
    EXPECT_GE(map->rowCount(), 100U);
    EXPECT_EQ(map->rowCount() == 2000, readsAll) << map->rowCount();
    EXPECT_FALSE(store_.databaseExists()) << "is closed again";
  }
}

TEST_F(DatabaseFaults, WithoutMemoryForSQLiteALookupFailsAndTheNextOneWorks) {
  ASSERT_TRUE(memoryIsFaulty);
  test::writeFingerprintFile(path_, std::vector<test::FingerprintRow>(3000, {1, 2, 3}));
  for (const test::Failing failing : {test::Failing::once, test::Failing::onwards}) {
    std::optional<LirvoxRowMap> map;
    std::optional<std::string> info;
    EXPECT_GT(test::failEach(
                  failing,
                  [&] {
                    map = store_.selectFingerprints({{0, 3}});
                    info = store_.databaseInfo();
                  },
                  [&] {
                    EXPECT_EQ(store_.selectFingerprints({{0, 3}})->rowCount(), 3000U);
                  }),
              50);
    EXPECT_EQ(map->rowCount(), 3000U);
    EXPECT_EQ(info, "DB size: " + info->substr(9, 8) + " Mb\nVideo id's: 1");
  }
}

}  // namespace
}  // namespace lirvox
