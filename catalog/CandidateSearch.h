// Which tracks may have sound in common, and at which offset.
#pragma once

#include <cstdint>
#include <set>
#include <tuple>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/ProbeSelection.h"

namespace lirvox::catalog {

/// What may be a passage in common: the time in `first` minus that in `second` is `offset`.
struct Candidate {
  std::int32_t first;
  std::int32_t second;
  std::int32_t offset;  ///< in frames

  bool operator<(const Candidate& other) const {
    return std::tie(first, second, offset) < std::tie(other.first, other.second, other.offset);
  }
};

/// Looks the probes of one track after the other up in a database that is indexed by hash.
class CandidateSearch {
 public:
  explicit CandidateSearch(SQLite::Database& database);

  void look(std::int32_t track, const std::vector<Probe>& probes);

  /// Ordered; `first` is the smaller id.
  std::vector<Candidate> candidates() const { return {found_.begin(), found_.end()}; }

 private:
  struct Vote {
    std::int32_t track;
    std::int32_t offset;
  };

  void evaluate(std::int32_t track, std::vector<Vote> votes);
  void enter(std::int32_t track, std::int32_t other, std::int32_t offset);

  SQLite::Statement query_;
  std::set<Candidate> found_;
};

}  // namespace lirvox::catalog
