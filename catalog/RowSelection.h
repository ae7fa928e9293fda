// Which rows of a track are worth their place in a database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "catalog/Spool.h"
#include "lib/Landmark.h"

namespace lirvox::catalog {

/// A landmark of a track as one alignment of the frame grid shows it. `strength` is how
/// far the weaker of its two peaks stood above the threshold, as a logarithm of power.
struct Sighting {
  QueryHash row;
  float strength;
};

/// How many rows a track gets, and from where.
struct RowRule {
  /// Alignments of the frame grid that are looked at, an equal part of a hop apart: 1, 2,
  /// 4 or 8.
  int alignments = 8;
  /// The most rows for an hour of sound, the best ones; 0 keeps all.
  std::int32_t rowsPerHour = 320'000;
};

/// Takes the sightings of a track, a stretch after the other, and gives out its rows.
///
/// A row is the better the more alignments show it and the stronger it is. Of equal
/// hashes closer together than the vote's window the best is taken: the others would
/// only inflate the votes of sustained tones.
class RowSelection {
 public:
  /// Selects the best rows, or all. Holds up to `bytesInMemory` of them.
  RowSelection(bool best, std::size_t bytesInMemory);

  /// Takes the sightings, in any order, of frames before `end` that were not in an
  /// earlier stretch. Sorts them.
  void add(std::vector<Sighting>& sightings, std::int32_t end);

  /// Ends the track: its rows, ordered by hash, then time. At most `count` when the best
  /// are selected.
  std::vector<QueryHash> finish(std::size_t count);

  /// Ready for another track.
  void clear();

  struct ScoredRow {
    QueryHash row;
    float score;
  };

 private:
  void close(std::int32_t end);
  void keep(const std::vector<ScoredRow>& rows);
  std::vector<QueryHash> bestOf(std::size_t count) const;

  const bool best_;
  std::vector<ScoredRow> open_;  // a row to come may be close to these; ordered
  Spool<ScoredRow> kept_;
  std::vector<std::uint32_t> histogram_;  // of the scores of those kept
};

}  // namespace lirvox::catalog
