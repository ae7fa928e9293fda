// The answer of a lookup: rows by hash.
#pragma once

#include <cstddef>
#include <vector>

#include "LirvoxDBRow.h"
#include "LirvoxExport.h"

namespace lirvox {

/// A map from hash to the list of its rows, each list in the order in which the rows
/// were added. Holds 12 bytes a row.
class LIRVOX_EXPORT LirvoxRowMap {
 public:
  /// Consecutive rows of one hash.
  struct Rows {
    const LirvoxDBRow* first = nullptr;  ///< the first row
    const LirvoxDBRow* last = nullptr;   ///< past the last one
    /// For a loop over the rows.
    const LirvoxDBRow* begin() const { return first; }
    const LirvoxDBRow* end() const { return last; }
    std::size_t size() const { return static_cast<std::size_t>(last - first); }
  };

  LirvoxRowMap() = default;

  /// Groups `rows` by hash; a list that is in hash order already is taken as it is.
  explicit LirvoxRowMap(std::vector<LirvoxDBRow> rows);

  /// The rows of `hash`; none when the map does not know it.
  Rows find(DecimalString hash) const;

  /// Number of hashes that have rows.
  std::size_t size() const { return groups_.size(); }
  bool empty() const { return groups_.empty(); }
  /// Number of rows of all hashes.
  std::size_t rowCount() const { return rows_.size(); }

 private:
  struct Group {
    std::int32_t hash;
    std::size_t first;
  };

  std::vector<LirvoxDBRow> rows_;
  std::vector<Group> groups_;  // ascending by hash
};

}  // namespace lirvox
