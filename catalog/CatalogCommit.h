// One change of a catalogue, from its first statement to its last.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "catalog/Catalog.h"
#include "catalog/CatalogFile.h"
#include "catalog/HashCounts.h"

namespace lirvox::catalog {

/// Adds tracks to the file, or removes some, in one transaction. Used once.
class CatalogCommit {
 public:
  CatalogCommit(CatalogFile& file, const CommonHashRule& rule);

  /// Writes `tracks` and decides anew which hashes are common.
  void run(const std::vector<NewTrack>& tracks);

  /// Removes tracks, and decides anew which hashes are common. Ids are not given again.
  void remove(const std::unordered_set<std::int32_t>& tracks);

 private:
  void loadCounts();
  std::vector<std::int32_t> assignIds(const std::vector<NewTrack>& tracks);
  std::int32_t largestId();
  void removeRows(const std::unordered_set<std::int32_t>& tracks);
  void countRows(const std::vector<NewTrack>& tracks);
  void moveRows();
  void insertRows(const std::vector<NewTrack>& tracks, const std::vector<std::int32_t>& ids);
  void writeTracks(const std::vector<NewTrack>& tracks, const std::vector<std::int32_t>& ids);
  void writeNotes();
  bool isHeld(std::uint32_t hash) const { return counts_[hash] > limit_; }

  CatalogFile& file_;
  SQLite::Database& database_;
  const CommonHashRule rule_;
  HashCounts oldCounts_;
  HashCounts counts_;
  std::uint32_t oldLimit_ = 0;
  std::uint32_t limit_ = 0;
};

}  // namespace lirvox::catalog
