// Tracks that are the same recording, or contain each other.
#include "catalog/Duplicates.h"

#include "catalog/CandidateSearch.h"
#include "catalog/DatabaseFile.h"
#include "catalog/HashCounts.h"
#include "catalog/HashRows.h"
#include "catalog/Overlaps.h"
#include "catalog/ProbeSelection.h"

namespace lirvox::catalog {
namespace {

// Calls `visit` with each hash and its rows, in the order of hashes.
template <typename Visit>
void forEachHash(SQLite::Database& database, const std::string& path, Visit visit) {
  HashRows reader(database, "db", path);
  std::vector<StoredRow> rows;
  while (reader.hash() != kHashes) {
    const std::uint32_t hash = reader.hash();
    rows.clear();
    reader.take(rows);
    visit(hash, rows);
  }
}

std::vector<Candidate> findCandidates(SQLite::Database& database, const std::string& path,
                                      const ProgressHandler& progress) {
  ProbeSelection selection;
  forEachHash(database, path, [&](std::uint32_t hash, const std::vector<StoredRow>& rows) {
    selection.add(hash, rows);
    if (hash % 1024 == 0) progress(0.4 * hash / kHashes);
  });
  CandidateSearch search(database);
  const std::vector<std::int32_t> tracks = selection.tracks();
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    search.look(tracks[i], selection.probesOf(tracks[i]));
    progress(0.4 + 0.2 * static_cast<double>(i) / static_cast<double>(tracks.size()));
  }
  return search.candidates();
}

}  // namespace

std::vector<Duplicate> findDuplicates(const std::string& path, double leastSeconds,
                                      const ProgressHandler& progress) {
  const auto reader = openForReading(path);
  return naming(path, [&] {
    SQLite::Database& database = *reader;
    if (!isIndexedByHash(database)) throw CatalogError(path + ": has no index by hash");
    database.exec("BEGIN");  // all readings see the same rows
    Overlaps overlaps(findCandidates(database, path, progress));
    forEachHash(database, path, [&](std::uint32_t hash, const std::vector<StoredRow>& rows) {
      overlaps.add(rows);
      if (hash % 1024 == 0) progress(0.6 + 0.4 * hash / kHashes);
    });
    return overlaps.duplicates(leastSeconds);
  });
}

}  // namespace lirvox::catalog
