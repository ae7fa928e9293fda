// The SQLite file behind a catalogue.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include "catalog/CatalogError.h"
#include "catalog/HashCounts.h"

namespace lirvox::catalog {

/// Marks a database as one of ours ("Lrvx").
constexpr int kApplicationId = 0x4C727678;
/// Version of the tables.
constexpr int kUserVersion = 1;

/// Opens, creates and publishes the file; knows its tables, not their rows.
class CatalogFile {
 public:
  /// Opens the catalogue at `path`. Where there is none, creates one beside it, which
  /// `publish` moves into place and the destructor removes otherwise.
  explicit CatalogFile(std::string path);
  ~CatalogFile();

  CatalogFile(const CatalogFile&) = delete;
  CatalogFile& operator=(const CatalogFile&) = delete;

  /// Throws `CatalogError` once a new file was given up.
  SQLite::Database& database();

  /// A number among the catalogue's notes.
  std::optional<double> note(const std::string& key);
  void setNote(const std::string& key, double value);

  /// The rows per hash that the last commit left; all 0 in a new catalogue.
  HashCounts hashCounts();
  void setHashCounts(const HashCounts& counts);

  /// Moves a new file into place, whole. Does nothing for one that was there before.
  void publish();

  /// Gives up a new file, which has no journal: after a failed change there is no way back.
  /// Does nothing for one that was there before.
  void abandonNew();

 private:
  void openExisting();
  void createNew();

  const std::string path_;
  std::string unpublished_;  // where a new file is until it is published
  std::unique_ptr<SQLite::Database> database_;
};

/// Runs `work` and turns what SQLite throws into a `CatalogError` that names `path`.
template <typename Work>
auto naming(const std::string& path, Work work) {
  try {
    return work();
  } catch (const SQLite::Exception& error) {
    throw CatalogError(path + ": " + error.what());
  }
}

}  // namespace lirvox::catalog
