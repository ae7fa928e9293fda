// Archives for local installation: what `lirvox pack` writes.
#pragma once

#include <string>

namespace lirvox::catalog {

/// Writes the archive that `Lirvox::updateDatabasePath` takes: the database at its top
/// level, with what a device needs. The archive appears whole or not at all. Throws
/// `CatalogError`.
void pack(const std::string& database, const std::string& archive);

}  // namespace lirvox::catalog
