// The rows of each track that tell best where else it is.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "catalog/HashRows.h"

namespace lirvox::catalog {

/// A row that is worth being looked up.
struct Probe {
  std::uint32_t rows;  ///< how many the hash has
  std::uint32_t hash;
  std::int32_t time;

  bool operator<(const Probe& other) const {
    if (rows != other.rows) return rows < other.rows;
    return hash != other.hash ? hash < other.hash : time < other.time;
  }
};

/// Keeps, for each half minute of each track, the rows with the rarest hashes that other
/// tracks have, too.
class ProbeSelection {
 public:
  /// Takes all rows of a hash, ordered by track.
  void add(std::uint32_t hash, const std::vector<StoredRow>& rows);

  std::vector<std::int32_t> tracks() const;
  std::vector<Probe> probesOf(std::int32_t track) const;

 private:
  using Segment = std::vector<Probe>;  // a heap, the worst on top

  std::map<std::int32_t, std::vector<Segment>> segments_;
};

}  // namespace lirvox::catalog
