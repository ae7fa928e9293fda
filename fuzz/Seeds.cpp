// Writes the inputs to begin with: one folder per fuzzer below the given one.
#include <cstdio>
#include <random>

#include <sqlite3.h>

#include "fuzz/Support.h"
#include "tests/ZipBytes.h"
#include "tests/support/FingerprintFile.h"

namespace lirvox::fuzz {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

void writeArchives(const fs::path& folder) {
  const std::string text(300, 'x');
  const std::string inner = test::zipBytes({{"db1.sqlite", text, true, 0644}});
  const std::string bomb = test::zipBytes({{"zeros", std::string(200000, '\0'), true}});
  test::ZipBytesEntry wide{"wide", text, true};
  wide.zip64 = true;
  test::ZipBytesEntry odd{"d/odd", text};
  odd.flags = 1;
  odd.dosDate = 0;
  test::ZipBytesEntry same{"same", text};
  same.overlaps = true;
  const std::pair<const char*, std::vector<test::ZipBytesEntry>> archives[] = {
      {"stored", {{"db1.sqlite", text}}},
      {"service", {{"home/", ""}, {"home/localhost/www/tmp/db1.sqlite", text, true}}},
      {"nested", {{"a/b.zip", inner, true}, {"c.ZIP", "no archive"}}},
      {"bombs", {{"a.zip", bomb, true}, {"b.zip", bomb}}},
      {"outside", {{"../x", text}, {"/x", text}, {"a\\b", "y"}}},
      {"link", {{"l", "/etc", false, 0120777}, {"l/x", text}}},
      {"wide", {wide}},
      {"odd", {odd}},
      {"overlapping", {{"once", text}, same}},
  };
  for (const auto& [name, entries] : archives) writeFile(folder / name, test::zipBytes(entries));
}

// A database after these statements, with whatever lies beside it while it is open.
void writeDatabase(const fs::path& seed, const std::string& sql) {
  const test::TemporaryFolder folder;
  const fs::path path = folder.path("db1.sqlite");
  const std::string rows =
      "WITH RECURSIVE n(i) AS (VALUES(0) UNION ALL SELECT i + 1 FROM n WHERE i < 199) "
      "INSERT INTO db(track_id, num1, num2) SELECT i % 7, i * 3, i % 64 FROM n;";
  sqlite3* database = nullptr;
  sqlite3_open(path.c_str(), &database);
  const std::string all = "PRAGMA page_size = 512; BEGIN; " + sql + "; " + rows + " COMMIT;";
  if (sqlite3_exec(database, all.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "%s: %s\n", seed.c_str(), sqlite3_errmsg(database));
  }
  // As a process leaves it that is killed while it writes.
  sqlite3_exec(database, "PRAGMA cache_size = 1; BEGIN; UPDATE db SET num1 = num1 + 1", nullptr,
               nullptr, nullptr);
  std::string input;
  for (const char* const ending : {"", "-journal", "-wal"}) {
    input += test::readFile(path.string() + ending) + std::string(kPartSeparator);
  }
  writeFile(seed, input);
  sqlite3_close(database);
}

void writeDatabases(const fs::path& folder) {
  const std::string table = "CREATE TABLE db(track_id INTEGER, num1 INTEGER, num2 INTEGER)";
  const std::pair<const char*, std::string> databases[] = {
      {"plain", table},
      {"index", table + "; CREATE INDEX hashes ON db(num2, track_id, num1)"},
      {"partial", table + "; CREATE INDEX hashes ON db(num2) WHERE num2 > 0"},
      {"key",
       "CREATE TABLE db(num2, track_id, num1, PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID"},
      {"generated",
       "CREATE TABLE db(track_id, num1, num2, x AS (hex(zeroblob(num1 % 8)))); CREATE INDEX e ON "
       "db(x)"},
      {"doubling",
       "CREATE TABLE db(track_id, num1, num2, a AS (num1 + num1), b AS (a + a), c AS (b + b))"},
      {"trigger",
       table + "; CREATE TRIGGER t AFTER INSERT ON db BEGIN DELETE FROM db WHERE num2 = 63; END"},
      {"texts", "CREATE TABLE db(track_id TEXT, num1 REAL, num2 BLOB)"},
      {"view",
       "CREATE TABLE t(track_id, num1, num2); CREATE VIEW db AS SELECT * FROM t; CREATE TRIGGER i "
       "INSTEAD OF INSERT ON db BEGIN INSERT INTO t VALUES(new.track_id, new.num1, new.num2); END"},
      {"virtual", "CREATE VIRTUAL TABLE db USING fts4(track_id, num1, num2)"},
      {"search", "CREATE VIRTUAL TABLE db USING fts5(track_id, num1, num2)"},
      {"log", "COMMIT; PRAGMA journal_mode = WAL; BEGIN; " + table},
  };
  for (const auto& [name, sql] : databases) writeDatabase(folder / name, sql);
}

void writeTexts(const fs::path& replies, const fs::path& defaults) {
  writeFile(replies / "good",
            R"({"Result": "OK", "dt": "2026-05-04 10:00", "url": "http://h/db.zip"})");
  writeFile(replies / "escapes",
            "{\"Result\":\"\\u004fK\",\"dt\":\"\\ud83d\\ude00\",\"url\":[1e9,null]}");
  writeFile(replies / "failed", R"({"Result": "Error", "code": -1.5e-300})");
  writeFile(defaults / "good", R"({"LirvoxDtDbGenerated": "2026-05-04 10:00", "number": 7})");
  writeFile(defaults / "nested", R"({"LirvoxDtDbGenerated": ["x", {"y": [true, 1e999]}]})");
  writeFile(defaults / "cut", R"({"LirvoxDtDbGenerated": "2026)");
}

// The generators of the other two read their input from its end: any bytes make sense.
void writeBytes(const fs::path& folder, std::size_t size) {
  std::mt19937 random(1);
  for (int i = 0; i < 20; ++i, size = size * 3 / 4) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    writeFile(folder / std::to_string(i), bytes);
  }
}

}  // namespace
}  // namespace lirvox::fuzz

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const std::filesystem::path folder = arguments[1];
  lirvox::fuzz::writeArchives(folder / "Archive");
  lirvox::fuzz::writeDatabases(folder / "Database");
  lirvox::fuzz::writeTexts(folder / "GenerationReply", folder / "UserDefaults");
  lirvox::fuzz::writeBytes(folder / "Recording", 22050);
  lirvox::fuzz::writeBytes(folder / "StreamFormat", 4096);
  return 0;
}
