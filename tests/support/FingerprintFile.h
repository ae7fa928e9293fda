// Fingerprint files for tests.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace lirvox::test {

/// One row of table `db`.
struct FingerprintRow {
  std::int32_t track_id;
  std::int32_t num1;
  std::int32_t num2;
};

/// Runs statements on a database, on a connection that does not stay open.
void runSql(const std::filesystem::path& path, const std::string& sql);

/// Writes a database whose table `db` holds `rows` in this order, and the folders above it.
void writeFingerprintFile(const std::filesystem::path& path,
                          const std::vector<FingerprintRow>& rows);

/// Leaves beside the database, which needs 2000 rows, the journal of an interrupted change that
/// ends with the name of a file. Where it is played back, that file is removed.
void writeJournalThatRemoves(const std::string& victim, const std::string& database);

}  // namespace lirvox::test
