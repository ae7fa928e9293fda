// Fingerprint files that were made to do harm: real ones, built with SQLite and altered.
#include <algorithm>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "lib/LirvoxDatabase.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

class HostileDatabase : public testing::Test {
 protected:
  void run(const std::string& sql) const {
    sqlite3* file = nullptr;
    sqlite3_open(path_.c_str(), &file);
    EXPECT_EQ(sqlite3_exec(file, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(file);
    sqlite3_close(file);
  }

  // Rows that a lookup of the hash 3 gives; -1 for no answer.
  int rowsFound() {
    const auto rows = LirvoxDatabase(path_).selectFingerprints({{0, 3}});
    return rows ? static_cast<int>(rows->rowCount()) : -1;
  }

  TestPlatform platform_;
  const std::string path_ = platform_.folder.path("db1.sqlite");
};

TEST_F(HostileDatabase, AnswersFromATableAndNeverRunsWhatItsSchemaHolds) {
  const std::string columns = "CREATE TABLE db(track_id, num1, num2";
  const std::string row = "; INSERT INTO db(track_id, num1, num2) VALUES(1, 2, 3);";
  const struct {
    const char* name;
    std::string sql;
    int rows;
  } files[] = {
      {"a trigger", columns + "); CREATE TRIGGER t AFTER INSERT ON db BEGIN SELECT 1; END" + row,
       1},
      {"an index on an expression", columns + "); CREATE INDEX i ON db(abs(num2))" + row, 1},
      {"a long column", columns + ", x DEFAULT(zeroblob(3000000)))" + row, 1},
      {"a view without end",
       "CREATE VIEW db AS WITH RECURSIVE n(i) AS (SELECT 3 UNION ALL SELECT i FROM n) "
       "SELECT 1 AS track_id, 2 AS num1, i AS num2 FROM n",
       -1},
      {"a virtual table", "CREATE VIRTUAL TABLE db USING fts4(track_id, num1, num2)" + row, -1},
      {"much memory",
       "CREATE TABLE db(track_id, num1, a, num2 AS (length(hex(zeroblob(a)))));"
       "INSERT INTO db VALUES(1, 2, 1000000)",
       0},
      {"a hard pattern",
       "CREATE TABLE db(track_id, num1, a, num2 AS (3 + (a LIKE '" +
           [] {
             std::string p;
             for (int i = 0; i < 20; ++i) p += "%a";
             return p;
           }() +
           "b'))); INSERT INTO db VALUES(1, 2, hex(zeroblob(8000)))",
       0},
  };
  for (const auto& file : files) {
    std::filesystem::remove(path_);
    run(file.sql);
    EXPECT_EQ(rowsFound(), file.rows) << file.name;
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

TEST_F(HostileDatabase, StopsReadingATreeWhoseBranchesAllLeadToOneLeaf) {
  run("PRAGMA page_size = 512; "
      "CREATE TABLE db(track_id INTEGER, num1 INTEGER, num2 INTEGER); WITH RECURSIVE n(i) AS "
      "(VALUES(0) UNION ALL SELECT i + 1 FROM n WHERE i < 1500) INSERT INTO db SELECT 1, 2, 3 FROM "
      "n");
  std::string bytes = readFile(path_);
  constexpr std::size_t kRoot = 2;
  constexpr std::size_t kLevels = 10;
  const std::string inner = bytes.substr((kRoot - 1) * 512, 512);
  const std::size_t pages = bytes.size() / 512;
  for (std::size_t i = 0; i < kLevels; ++i) bytes += inner;
  leadTo(bytes, kRoot, pages + 1);
  for (std::size_t i = 1; i <= kLevels; ++i)
    leadTo(bytes, pages + i, i < kLevels ? pages + i + 1 : 3);
  putNumber(bytes, 28, pages + kLevels);
  writeFile(path_, bytes);

  EXPECT_GT(rowsFound(), 1000);
  EXPECT_LT(rowsFound(), 2 * static_cast<int>(bytes.size()));
  EXPECT_TRUE(platform_.log->has("more work than its size explains"));
  EXPECT_TRUE(LirvoxDatabase(path_).databaseInfo());
}

// A journal that is played back ends with the removal of the file that it names at its end.
TEST_F(HostileDatabase, NeverPlaysBackAJournalThatLiesBesideIt) {
  writeFingerprintFile(path_, std::vector<FingerprintRow>(2000, {1, 2, 3}));
  const std::string victim = platform_.folder.path("victim");
  writeFile(victim, "precious");
  sqlite3* file = nullptr;
  sqlite3_open(path_.c_str(), &file);
  sqlite3_exec(file, "PRAGMA cache_size = 1; BEGIN; UPDATE db SET num1 = 9", nullptr, nullptr,
               nullptr);
  const std::string journal = readFile(path_ + "-journal");
  sqlite3_close(file);
  std::string tail(8, '\0');
  putNumber(tail, 0, 0x40000000 / 4096 + 1);
  putNumber(tail, 4, victim.size());
  tail.insert(4, victim);
  std::size_t sum = 0;
  for (const char c : victim) sum += static_cast<unsigned char>(c);
  tail += std::string(4, '\0');
  putNumber(tail, tail.size() - 4, sum);
  writeFile(path_ + "-journal", journal + tail + journal.substr(0, 8));
  const std::string before = readFile(path_);

  EXPECT_EQ(rowsFound(), -1);
  EXPECT_EQ(readFile(victim), "precious");
  EXPECT_EQ(readFile(path_), before);
}

}  // namespace
}  // namespace lirvox::test
