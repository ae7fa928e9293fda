// Whether the rows of a database can be.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/Findings.h"
#include "catalog/HashCounts.h"
#include "catalog/ProgressHandler.h"

namespace lirvox::catalog {

/// Reads tables of rows one after the other.
class RowVerification {
 public:
  RowVerification(SQLite::Database& database, Findings& findings);

  /// Reads `table`, which is "db" or "held".
  void read(const std::string& table, const ProgressHandler& progress);

  /// Rows per hash of what was read.
  const HashCounts& counts() const { return counts_; }

 private:
  struct Row {
    std::int64_t hash;
    std::int64_t track;
    std::int64_t time;
  };

  void loadTracks();
  void check(const Row& row, const std::string& table);

  SQLite::Database& database_;
  Findings& findings_;
  bool hasTracks_ = false;
  std::unordered_map<std::int64_t, double> frames_;  // of each track; 0: unknown
  HashCounts counts_;
};

}  // namespace lirvox::catalog
