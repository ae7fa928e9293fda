// Whether a database is sound: what `lirvox verify` does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/ProgressHandler.h"

namespace lirvox::catalog {

/// Something that must not be.
struct Violation {
  std::string what;  ///< as in "rows without a track"
  std::int64_t count = 0;
  std::string example;
};

/// What a database is, and what is wrong with it.
struct Verification {
  std::string kind;  ///< "catalogue", "device database" or "database"
  std::vector<Violation> violations;
};

/// Reads all of the database at `path`, which any program may have made, and changes
/// nothing. Files of lirvox must be as lirvox makes them; others must have a table `db`
/// that recognitions can use. Throws `CatalogError` when there is nothing to read.
Verification verify(const std::string& path, const ProgressHandler& progress);

}  // namespace lirvox::catalog
