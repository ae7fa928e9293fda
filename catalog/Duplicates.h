// Tracks that are the same recording, or contain each other: what `lirvox duplicates`
// finds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/ProgressHandler.h"

namespace lirvox::catalog {

/// Two tracks that have sound in common.
struct Duplicate {
  enum class Relation {
    same,      ///< nearly all of each is in the other, and they are about as long
    contains,  ///< nearly all of `other` is in `track`
    shares,    ///< a passage is in both
  };

  std::int32_t track = 0;  ///< the longer one
  std::int32_t other = 0;
  Relation relation = Relation::shares;
  /// Where in `track` the other begins; negative if it began before. Where parts were cut
  /// out, the place for the part that has most in common.
  double offsetInSeconds = 0.0;
  double secondsInCommon = 0.0;
  double shareOfTrack = 0.0;  ///< in [0, 1], of what is not silent
  double shareOfOther = 0.0;
};

/// The duplicates in the database at `path`, those with most in common first, from the
/// fingerprints alone. Passages under `leastSeconds` are left out, unless they are nearly
/// all of a track. Recordings played at another speed are not found.
///
/// Reads the rows twice. Of each half minute of a track the rarest hashes are looked up, so
/// that the time grows with the catalogue and not with its square; memory holds about 70 kB
/// for an hour of sound. Throws `CatalogError`.
std::vector<Duplicate> findDuplicates(const std::string& path, double leastSeconds,
                                      const ProgressHandler& progress);

}  // namespace lirvox::catalog
