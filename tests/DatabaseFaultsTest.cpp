// Databases that are strange, without end, made to do harm, or changed while they are read; SQLite
// without memory.
#include <sqlite3.h>

#include "tests/support/ControllerTest.h"
#include "tests/support/Faults.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/SqlTrace.h"

namespace lirvox::test {
namespace {

namespace fs = std::filesystem;

sqlite3_mem_methods usualMemory;

// SQLite's requests for memory count from the start of the program.
const bool memoryIsFaulty = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usualMemory);
  sqlite3_mem_methods faulty = usualMemory;
  faulty.xMalloc = [](int size) { return faultIsDue() ? nullptr : usualMemory.xMalloc(size); };
  faulty.xRealloc = [](void* memory, int size) {
    return faultIsDue() ? nullptr : usualMemory.xRealloc(memory, size);
  };
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &faulty) == SQLITE_OK;
}();

struct DatabaseFaults : ControllerTest {
  // A database whose table is what `sql` makes.
  void installTable(const std::string& sql) const {
    fs::remove(databasePath_);
    runSql(databasePath_, sql);
  }
  // Rows that a lookup of the hash 3 gives; -1 for no answer.
  int rowsFound() {
    const auto rows = store_.selectFingerprints({{0, 3}});
    return rows ? static_cast<int>(rows->rowCount()) : -1;
  }

  LirvoxDatabase store_{databasePath_};
};

TEST_F(DatabaseFaults, AFileMayBeChangedWhileItIsRead) {
  // `act` is called for each row, far apart in the file.
  static std::function<void()> action = [] {};
  const SqlTrace trace([](sqlite3* connection) {
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
  const std::string whole = readFile(databasePath_);
  const std::tuple<const char*, std::function<void()>, bool> cases[] = {
      {"nothing", [] {}, true},
      {"removed", [this] { fs::remove(databasePath_); }, true},
      {"replaced",
       [&] {
         writeFile(databasePath_ + ".new", "other");
         fs::rename(databasePath_ + ".new", databasePath_);
       },
       true},
      {"truncated", [this] { fs::resize_file(databasePath_, 500'000); }, false},
      {"emptied", [this] { fs::resize_file(databasePath_, 0); }, false},
      {"overwritten", [&] { writeFile(databasePath_, std::string(whole.size(), '\xA5')); }, false},
  };
  for (const auto& [what, act, readsAll] : cases) {
    SCOPED_TRACE(what);
    writeFile(databasePath_, whole);
    action = act;
    const auto map = store_.selectFingerprints({{0, 5}});
    ASSERT_TRUE(map);
    EXPECT_GE(map->rowCount(), 100U);
    EXPECT_EQ(map->rowCount() == 2000, readsAll) << map->rowCount();
    EXPECT_FALSE(store_.databaseExists()) << "is closed again";
  }
}

TEST_F(DatabaseFaults, AnswersFromTablesOfAnyKindAndNeverRunsWhatTheirSchemaHolds) {
  const std::string columns = "CREATE TABLE db(track_id, num1, num2";
  const std::string row = "; INSERT INTO db(track_id, num1, num2) VALUES(1, 2, 3);";
  std::string doubling = "CREATE TABLE db(num1, num2, c0";
  for (int i = 0; i < 60; ++i) {
    const std::string last = "c" + std::to_string(i);
    doubling += ", c" + std::to_string(i + 1) + " AS (" + last + " + " + last + ")";
  }
  std::string list = "1";  // whose tree is fifty times as large
  for (int i = 0; i < 130000; ++i) list += ",1";
  std::string trees;
  for (const char name : std::string("abcdefghijklmn")) {
    trees += std::string("; CREATE TRIGGER ") + name + " AFTER INSERT ON db BEGIN SELECT 1 IN (" +
             list + "); END";
  }
  const struct {
    std::string sql;
    int rows;
    const char* said = "";
  } files[] = {
      {columns + ")", 0},
      // A long text, one of a size that none has, and a schema of trees.
      {columns + std::string(17000, ' ') + ")" + row, 1},
      {columns + std::string(270000, ' ') + ")" + row, -1, "a text of more than 256 KiB"},
      {columns + ")" + row + trees, -1, "more memory than"},
      {"CREATE TABLE db(track_id TEXT, num1 BLOB, num2 REAL);"
       "INSERT INTO db SELECT 'x', zeroblob(100), value FROM json_each('[0,3,2.5]')",
       1},
      {columns + "); INSERT INTO db VALUES(NULL, NULL, 3), (1e300, -1e300, 3), (1, 2, 1e300)", 2},
      {columns + "); INSERT INTO db VALUES(1, zeroblob(1000000), 3)", 0},
      {"CREATE VIEW db AS SELECT 7 AS track_id, 5 AS num1, 3 AS num2", -1},
      {"CREATE VIEW db AS SELECT * FROM missing", -1},
      {"CREATE VIEW db AS SELECT x AS track_id, x AS num1, x AS num2 FROM "
       "(SELECT randomblob(1 << 31) AS x)",
       -1},
      {columns + "); CREATE TRIGGER t AFTER INSERT ON db BEGIN SELECT 1; END" + row, 1},
      {columns + "); CREATE INDEX i ON db(abs(num2))" + row, 1},
      {columns + ", x DEFAULT(zeroblob(3000000)))" + row, 1},
      // Rows without end.
      {"CREATE VIEW db AS WITH RECURSIVE n(i) AS (SELECT 3 UNION ALL SELECT i FROM n) "
       "SELECT 1 AS track_id, 2 AS num1, i AS num2 FROM n",
       -1},
      {"CREATE VIRTUAL TABLE db USING fts4(track_id, num1, num2)" + row, -1},
      // Much memory, also where it is sorted.
      {"CREATE TABLE db(track_id, num1, a, num2 AS (length(hex(zeroblob(a)))));"
       "INSERT INTO db VALUES(1, 2, 1000000)",
       0},
      {"CREATE TABLE db(a, num1, num2, track_id AS (hex(zeroblob(a))));"
       "INSERT INTO db VALUES(1000, 2, 3)",
       0},
      // A column of 2^60 terms, and a hard pattern.
      {doubling + ", track_id AS (c60))", -1},
      {"CREATE TABLE db(track_id, num1, a, num2 AS (3 + (a LIKE "
       "'%a%a%a%a%a%a%a%a%a%a%a%a%a%a%a%a%a%a%a%ab'))); "
       "INSERT INTO db VALUES(1, 2, hex(zeroblob(100)))",
       0},
  };
  for (const auto& [sql, rows, said] : files) {
    SCOPED_TRACE(sql.substr(0, 200));
    installTable(sql);
    EXPECT_EQ(rowsFound(), rows);
    EXPECT_TRUE(!*said || platform_.log->has(said));
    EXPECT_EQ(outcomeOf(song_), Calls{{}});
    lirvox_->databaseInfo();
  }
}

// Four bytes of a file, the most significant first.
void putNumber(std::string& bytes, std::size_t at, std::size_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes.at(at + i) = static_cast<char>(value >> (24 - 8 * i));
}

// Makes all children of page `page` (from 1), an inner one of a table, the page `child`.
void leadTo(std::string& bytes, std::size_t page, std::size_t child) {
  const std::size_t start = (page - 1) * 512;
  const auto byte = [&](std::size_t at) {
    return static_cast<unsigned char>(bytes.at(start + at));
  };
  ASSERT_EQ(byte(0), 5);
  putNumber(bytes, start + 8, child);
  for (std::size_t cell = 0; cell < byte(4); ++cell) {
    putNumber(bytes, start + std::size_t{byte(12 + 2 * cell)} * 256 + byte(13 + 2 * cell), child);
  }
}

TEST_F(DatabaseFaults, StopsReadingATreeWhoseBranchesAllLeadToOneLeaf) {
  installTable(
      "PRAGMA page_size = 512; "
      "CREATE TABLE db(track_id INTEGER, num1 INTEGER, num2 INTEGER); WITH RECURSIVE n(i) AS "
      "(VALUES(0) UNION ALL SELECT i + 1 FROM n WHERE i < 1500) INSERT INTO db SELECT 1, 2, 3 FROM "
      "n");
  std::string bytes = readFile(databasePath_);
  constexpr std::size_t kRoot = 2;
  constexpr std::size_t kLevels = 10;
  const std::string inner = bytes.substr((kRoot - 1) * 512, 512);
  const std::size_t pages = bytes.size() / 512;
  for (std::size_t i = 0; i < kLevels; ++i) bytes += inner;
  leadTo(bytes, kRoot, pages + 1);
  for (std::size_t i = 1; i <= kLevels; ++i)
    leadTo(bytes, pages + i, i < kLevels ? pages + i + 1 : 3);
  // The larger the file, the more rows it may have, up to a limit for all.
  const std::tuple<std::size_t, int, const char*> sizes[] = {
      {pages + kLevels, 2 * static_cast<int>(bytes.size()), "more work than its size"},
      {30000, 1 << 22, "only the first 4194304 are used"}};
  for (const auto& [size, mostRows, said] : sizes) {
    bytes.resize(size * 512);
    putNumber(bytes, 28, size);
    writeFile(databasePath_, bytes);
    const int found = rowsFound();
    EXPECT_GT(found, mostRows / 100);
    EXPECT_LE(found, mostRows);
    EXPECT_TRUE(platform_.log->has(said));
    EXPECT_TRUE(store_.databaseInfo());
  }
}

TEST_F(DatabaseFaults, NeverPlaysBackAJournalThatLiesBesideIt) {
  writeFingerprintFile(databasePath_, std::vector<FingerprintRow>(2000, {1, 2, 3}));
  const std::string victim = platform_.folder.path("victim");
  writeFile(victim, "precious");
  writeJournalThatRemoves(victim, databasePath_);
  const std::string before = readFile(databasePath_);

  EXPECT_EQ(rowsFound(), -1);
  EXPECT_EQ(readFile(victim), "precious");
  EXPECT_EQ(readFile(databasePath_), before);
}

TEST_F(DatabaseFaults, WithoutMemoryForSQLiteALookupFailsAndTheNextOneWorks) {
  ASSERT_TRUE(memoryIsFaulty);
  writeFingerprintFile(databasePath_, std::vector<FingerprintRow>(3000, {1, 2, 3}));
  for (const Failing failing : {Failing::once, Failing::onwards}) {
    std::optional<LirvoxRowMap> map;
    std::optional<std::string> info;
    EXPECT_GT(failEach(
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
}  // namespace lirvox::test
