// Which rows of a track are worth their place in a database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "lib/Landmark.h"

namespace lirvox::catalog {

/// A landmark of a track as one alignment of the frame grid shows it. `strength` is how
/// far the weaker of its two peaks stood above the threshold, as a logarithm of power.
struct Sighting {
  QueryHash row;
  double strength;
};

/// How many rows a track gets, and from where.
struct RowRule {
  /// Alignments of the frame grid that are looked at, an equal part of a hop apart: 1, 2,
  /// 4 or 8.
  int alignments = 8;
  /// The most rows for an hour of sound, the best ones; 0 keeps all.
  std::int32_t rowsPerHour = 320'000;
};

/// The rows of all alignments, equal ones once, ordered by hash, then time.
std::vector<QueryHash> allRows(std::vector<Sighting> sightings);

/// At most `count` rows, those from which recognitions profit most, ordered by hash, then
/// time. A row is the better the more alignments show it and the stronger it is. Of
/// equal hashes closer together than the vote's window the best is taken: the others
/// would only inflate the votes of sustained tones.
std::vector<QueryHash> bestRows(std::vector<Sighting> sightings, std::size_t count);

}  // namespace lirvox::catalog
