// The SQLite file behind a catalogue.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include "catalog/DatabaseFile.h"
#include "catalog/HashCounts.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox::catalog {

/// Marks a database as one of ours ("Lrvx").
constexpr int kApplicationId = 0x4C727678;
/// Version of the tables.
constexpr int kUserVersion = 1;

/// The note of the largest id that was ever given, if that track may be gone: what devices
/// and people remember of an id must not become another track's.
constexpr const char* kLargestIdNote = "largest id";

/// A noted number as one of another type: files may hold any. The nearest there is.
template <typename Number>
Number asNumber(double noted) {
  using Limits = std::numeric_limits<Number>;
  if (!(noted > static_cast<double>(Limits::lowest()))) return Limits::lowest();
  return noted < static_cast<double>(Limits::max()) ? static_cast<Number>(noted) : Limits::max();
}

/// Opens, creates and publishes the file; knows its tables, not their rows.
class CatalogFile {
 public:
  enum class Which {
    existing,       ///< the one that is there; it is an error if there is none
    existingOrNew,  ///< where there is none, a new one
    created,        ///< a new one; what is there is replaced when it is published
  };

  /// Opens the catalogue at `path`, and undoes what a killed process has left half done. A new one
  /// is a file beside it, which `publish` moves into place and the destructor removes otherwise.
  explicit CatalogFile(std::string path, Which which = Which::existingOrNew);

  CatalogFile(const CatalogFile&) = delete;
  CatalogFile& operator=(const CatalogFile&) = delete;

  /// Throws `CatalogError` once a new file was given up.
  SQLite::Database& database();

  /// A number among the catalogue's notes.
  std::optional<double> note(const std::string& key);
  void setNote(const std::string& key, double value);

  /// The rows per hash that the last commit left; all 0 in a new catalogue.
  HashCounts hashCounts();
  /// Notes the rows per hash, and those of hashes with more than `limit` rows as held.
  void setHashCounts(const HashCounts& counts, std::uint32_t limit);
  /// The limit that was noted with the counts; none is held in a new catalogue.
  std::uint32_t commonHashLimit();

  /// Moves a new file into place, whole. Does nothing for one that was there before.
  void publish();

  /// Gives up a new file, which has no journal: after a failed change there is no way back.
  /// Does nothing for one that was there before.
  void abandonNew();

 private:
  void openExisting();
  void createNew();

  const std::string path_;
  platform::TemporaryFile unpublished_;  // a new file, until it is published
  std::unique_ptr<SQLite::Database> database_;
};

/// Throws `CatalogError` unless there is a catalogue at `path` that can be changed. What a
/// killed process has left half done is undone.
void expectWritableCatalog(const std::string& path);

}  // namespace lirvox::catalog
