// A recognition of an excerpt, open at every step.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "lib/Decision.h"
#include "lib/LirvoxDatabase.h"
#include "lib/TrackStatistics.h"
#include "tools/QueryPass.h"

namespace lirvox::tools {

/// Takes the steps that the recognizer takes, by the same functions, and keeps what each
/// of them gives.
class Examination {
 public:
  /// `samples`: 32-bit words, mono, 11025 Hz. Without a database (null) it ends with the
  /// hashes.
  Examination(const std::vector<std::int32_t>& samples, LirvoxDatabase* database,
              std::int32_t minimum);

  std::int32_t minimum() const { return minimum_; }

  /// The sound as it is, and the whole blocks of it that are analysed.
  double seconds() const { return seconds_; }
  std::size_t blocks() const { return blocks_; }
  /// Whether the blocks hold nothing but zeros.
  bool isSilent() const;

  /// The power spectral density of a shift, in [0, 4).
  const Spectrogram& density(std::size_t shift) const { return pass_.specgram(shift); }
  const std::array<std::vector<QueryHash>, 4>& hashesByShift() const { return hashesByShift_; }
  std::size_t hashCount() const { return hashes_.size(); }
  std::size_t distinctHashCount() const;

  /// What the database has of them; none without a database, or if it could not be read.
  const std::optional<LirvoxRowMap>& rows() const { return rows_; }

  /// The steps that lead to the result, if there is a database.
  const Decision* decision() const { return decision_.get(); }
  /// How well each track is aligned by its own hits, if there are any.
  const TrackStatistics* statistics() const { return statistics_.get(); }
  /// `track` is an index into `decision()->hits.tracks()`; the offset is one of its own best.
  std::int32_t ownOffset(std::size_t track) const;
  /// Its hits at that one offset: what decides its rank.
  std::int32_t ownPeak(std::size_t track) const;

 private:
  void look(LirvoxDatabase& database);

  const std::int32_t minimum_;
  const double seconds_;
  const std::size_t blocks_;
  QueryPass pass_;
  std::array<std::vector<QueryHash>, 4> hashesByShift_;
  std::vector<QueryHash> hashes_;
  std::optional<LirvoxRowMap> rows_;
  std::unique_ptr<const Decision> decision_;
  std::unique_ptr<const TrackStatistics> statistics_;
};

}  // namespace lirvox::tools
