// The numbers of a database.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace lirvox::catalog {

/// What a database holds.
struct CatalogSummary {
  std::int64_t tracks = 0;
  double hours = 0.0;
  std::int64_t rows = 0;      ///< rows that recognitions look at
  std::int64_t heldRows = 0;  ///< rows kept aside because their hashes are common
  std::int64_t bytes = 0;     ///< size of the file
};

/// The numbers of the database at `path`, which any program may have made: without a
/// table `tracks`, tracks are counted in `db` and hours are 0. Throws `CatalogError`.
CatalogSummary summarize(const std::string& path);

/// The ids that rows of the database at `path` have, ascending. Throws `CatalogError`.
std::vector<std::int64_t> trackIds(const std::string& path);

/// The title (with the artist, if known) of each track of the database at `path`; empty
/// when it has no table `tracks`. Throws `CatalogError`.
std::map<std::int32_t, std::string> trackTitles(const std::string& path);

}  // namespace lirvox::catalog
