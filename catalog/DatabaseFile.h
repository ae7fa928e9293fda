// Opening databases that are there.
#pragma once

#include <memory>
#include <string>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/CatalogError.h"

namespace lirvox::catalog {

/// Opens the database at `path`, which must exist, to be read. It may be anybody's: nothing
/// is changed, also not by a journal beside it, the tables that lirvox reads must be
/// ordinary ones, and a statement ends with an error once it has done more than a file of
/// that size explains. Throws `CatalogError`.
std::shared_ptr<SQLite::Database> openForReading(const std::string& path);

/// As above, for a file that `lirvox index` has made; others are an error.
std::shared_ptr<SQLite::Database> openCatalogForReading(const std::string& path);

/// Throws `CatalogError` unless there is a file.
void expectDatabase(const std::string& path);

/// Throws `CatalogError` unless the database is a catalogue of this version.
void expectCatalog(SQLite::Database& database, const std::string& path);

/// Throws `CatalogError` unless what the database has under the names of a catalogue's
/// tables are tables, and no expression of the schema takes part in reading or writing them.
void expectOrdinaryTables(SQLite::Database& database, const std::string& path);

/// Whether the table `db` can be looked up by hash without reading all of it.
bool isIndexedByHash(SQLite::Database& database);

/// What went wrong, for people.
std::string reasonOf(const SQLite::Exception& error);

/// Runs `work` and turns what SQLite throws into a `CatalogError` that names `path`.
template <typename Work>
auto naming(const std::string& path, Work work) {
  try {
    return work();
  } catch (const SQLite::Exception& error) {
    throw CatalogError(path + ": " + reasonOf(error));
  }
}

}  // namespace lirvox::catalog
