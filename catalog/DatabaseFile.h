// Opening databases that are there.
#pragma once

#include <string>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/CatalogError.h"

namespace lirvox::catalog {

/// Opens the database at `path`, which must exist, to be read. What a killed process has
/// left half done is undone first, if the file may be written; nothing else is changed.
/// Throws `CatalogError`.
SQLite::Database openForReading(const std::string& path);

/// As above, for a file that `lirvox index` has made; others are an error.
SQLite::Database openCatalogForReading(const std::string& path);

/// Throws `CatalogError` unless the database is a catalogue of this version.
void expectCatalog(SQLite::Database& database, const std::string& path);

/// Whether the table `db` can be looked up by hash without reading all of it.
bool isIndexedByHash(SQLite::Database& database);

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
