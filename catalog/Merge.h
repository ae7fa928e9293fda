// Many catalogues to one: what `lirvox merge` does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "catalog/ProgressHandler.h"

namespace lirvox::catalog {

/// How parts become one.
struct MergeOptions {
  /// The rule for common hashes; without it the parts must have the same.
  std::optional<double> commonHashes;
  /// Where parts have different files of one path, the later part's is taken; otherwise
  /// that is an error.
  bool replace = false;
};

/// What a merge has made.
struct Merged {
  std::int64_t tracks = 0;
  std::int64_t rows = 0;      ///< held ones among them
  std::int64_t same = 0;      ///< tracks of later parts that were there already
  std::int64_t replaced = 0;  ///< tracks of earlier parts that later ones have replaced
};

/// Writes the catalogue `output` from the catalogues `parts`, which stay as they are. It
/// appears whole or not at all, and replaces what is there; it may be one of the parts.
///
/// The tracks of the first part keep their ids. Those of each later part follow in the
/// order of their ids, without gaps, from the largest id before. A file that several parts
/// have (the same path, size and time of change) is taken once, from the first of them; a
/// track that replaces another takes its id. Which hashes are common is decided over the
/// whole. So the same parts in the same order give the same file, and merging in steps
/// gives what merging at once gives.
///
/// All parts must have been made with the same alignments and rows per hour. Memory holds
/// the tracks, and the rows of one hash. Throws `CatalogError`.
Merged merge(const std::vector<std::string>& parts, const std::string& output,
             const MergeOptions& options, const ProgressHandler& progress);

}  // namespace lirvox::catalog
