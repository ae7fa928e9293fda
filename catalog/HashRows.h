// The rows of a database, hash by hash.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

namespace lirvox::catalog {

/// One row, without its hash.
struct StoredRow {
  std::int32_t track;
  std::int32_t time;  ///< in frames
};

/// Reads a table of rows in the order hash, track, time, which is how catalogues keep
/// them. Throws `CatalogError` at rows that cannot be (`lirvox verify` says which).
class HashRows {
 public:
  /// `table` is "db" or "held"; `path` is for messages.
  HashRows(SQLite::Database& database, const std::string& table, std::string path);

  /// The hash of the rows that come next, or `kHashes` after the last.
  std::uint32_t hash() const { return hash_; }

  /// Appends the rows of `hash()` and goes on to the next hash.
  void take(std::vector<StoredRow>& rows);

 private:
  void step();

  const std::string path_;
  SQLite::Statement query_;
  std::uint32_t hash_ = 0;
  StoredRow row_{};
};

}  // namespace lirvox::catalog
