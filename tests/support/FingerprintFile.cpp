// Fingerprint files for tests.
#include "tests/support/FingerprintFile.h"

#include <stdexcept>
#include <string>

#include <sqlite3.h>

#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {

void runSql(const std::filesystem::path& path, const std::string& sql) {
  std::filesystem::create_directories(path.parent_path());
  sqlite3* file = nullptr;
  const bool done = sqlite3_open(path.c_str(), &file) == SQLITE_OK &&
                    sqlite3_exec(file, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  const std::string reason = sqlite3_errmsg(file);
  sqlite3_close(file);
  if (!done) throw std::runtime_error(path.string() + ": " + reason + ": " + sql.substr(0, 1000));
}

void writeFingerprintFile(const std::filesystem::path& path,
                          const std::vector<FingerprintRow>& rows) {
  std::string sql =
      "PRAGMA synchronous=OFF; BEGIN; CREATE TABLE db(track_id INTEGER, num1 INTEGER, num2 "
      "INTEGER);";
  for (const auto& [track, time, hash] : rows) {
    sql += "INSERT INTO db VALUES(" + std::to_string(track) + ',' + std::to_string(time) + ',' +
           std::to_string(hash) + ");";
  }
  runSql(path, sql + "COMMIT;");
}

void writeJournalThatRemoves(const std::string& victim, const std::string& database) {
  sqlite3* file = nullptr;
  sqlite3_open(database.c_str(), &file);
  sqlite3_exec(file, "PRAGMA cache_size = 1; BEGIN; UPDATE db SET num1 = 9", nullptr, nullptr,
               nullptr);
  const std::string journal = readFile(database + "-journal");
  sqlite3_close(file);
  const auto number = [](std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
  };
  std::size_t sum = 0;
  for (const char c : victim) sum += static_cast<unsigned char>(c);
  writeFile(database + "-journal", journal + number(0x40000000 / 4096 + 1) + victim +
                                       number(victim.size()) + number(sum) + journal.substr(0, 8));
}

}  // namespace lirvox::test
