// Fingerprint files for tests.
#include "tests/support/FingerprintFile.h"

#include <stdexcept>
#include <string>

#include <sqlite3.h>

namespace lirvox::test {

void writeFingerprintFile(const std::filesystem::path& path,
                          const std::vector<FingerprintRow>& rows) {
  std::filesystem::create_directories(path.parent_path());
  std::string sql =
      "PRAGMA synchronous=OFF; BEGIN; CREATE TABLE db(track_id INTEGER, num1 INTEGER, num2 "
      "INTEGER);";
  for (const auto& [track, time, hash] : rows) {
    sql += "INSERT INTO db VALUES(" + std::to_string(track) + ',' + std::to_string(time) + ',' +
           std::to_string(hash) + ");";
  }
  sqlite3* file = nullptr;
  const bool written =
      sqlite3_open(path.c_str(), &file) == SQLITE_OK &&
      sqlite3_exec(file, (sql + "COMMIT;").c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  const std::string reason = sqlite3_errmsg(file);
  sqlite3_close(file);
  if (!written) throw std::runtime_error(path.string() + ": " + reason);
}

}  // namespace lirvox::test
