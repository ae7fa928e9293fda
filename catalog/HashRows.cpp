// The rows of a database, hash by hash.
#include "catalog/HashRows.h"

#include <limits>
#include <utility>

#include "catalog/DatabaseFile.h"
#include "catalog/HashCounts.h"

namespace lirvox::catalog {

HashRows::HashRows(SQLite::Database& database, const std::string& table, std::string path)
    : path_(std::move(path)),
      query_(database,
             "SELECT num2, track_id, num1 FROM " + table + " ORDER BY num2, track_id, num1") {
  step();
}

void HashRows::take(std::vector<StoredRow>& rows) {
  const std::uint32_t hash = hash_;
  for (; hash_ == hash && hash_ != kHashes; step()) rows.push_back(row_);
}

void HashRows::step() {
  naming(path_, [this] {
    if (!query_.executeStep()) {
      hash_ = kHashes;
      return;
    }
    const std::int64_t hash = query_.getColumn(0).getInt64();
    const std::int64_t track = query_.getColumn(1).getInt64();
    const std::int64_t time = query_.getColumn(2).getInt64();
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    if (hash < 0 || hash >= kHashes || track < 0 || track > kMost || time < 0 || time > kMost) {
      throw CatalogError(path_ + ": has rows that cannot be; lirvox verify says which");
    }
    hash_ = static_cast<std::uint32_t>(hash);
    row_ = {static_cast<std::int32_t>(track), static_cast<std::int32_t>(time)};
  });
}

}  // namespace lirvox::catalog
