// How much of two tracks is the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "catalog/CandidateSearch.h"
#include "catalog/Duplicates.h"
#include "catalog/HashRows.h"

namespace lirvox::catalog {

/// Compares candidates row by row.
class Overlaps {
 public:
  /// `candidates` are ordered.
  explicit Overlaps(const std::vector<Candidate>& candidates);

  /// Takes all rows of a hash, ordered by track, then time.
  void add(const std::vector<StoredRow>& rows);

  /// Pairs with enough in common.
  std::vector<Duplicate> duplicates(double leastSeconds) const;

 private:
  using Seconds = std::vector<std::uint16_t>;  // rows in each second
  using Range = std::pair<const StoredRow*, const StoredRow*>;

  struct Passage {
    std::int32_t offset;
    Seconds inFirst;  // rows in common
    Seconds inSecond;
  };
  struct Pair {
    std::int32_t first;
    std::int32_t second;
    std::vector<Passage> passages;
  };

  void compare(Pair& pair, const Range& first, const Range& second);
  double covered(const Pair& pair, bool first, const Passage* only) const;
  double audible(std::int32_t track) const;
  Duplicate describe(const Pair& pair) const;

  std::vector<Pair> pairs_;                              // ordered by first
  std::map<std::int32_t, std::vector<std::size_t>> of_;  // pairs that a track is the first of
  std::map<std::int32_t, Seconds> rows_;                 // of tracks in pairs
};

}  // namespace lirvox::catalog
