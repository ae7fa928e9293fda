// How much of known music is recognised, and how much answered falsely.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "catalog/ProgressHandler.h"
#include "catalog/TrackList.h"
#include "lib/LirvoxDatabase.h"
#include "tools/Degradation.h"
#include "tools/Trial.h"

namespace lirvox::tools {

struct EvaluationSettings {
  std::vector<double> seconds;         ///< lengths of captures
  std::vector<std::int32_t> minimums;  ///< of votes, which a result must exceed
  int excerpts = 0;
  unsigned seed = 0;  ///< of places and noise
};

/// What came of one way to ask.
struct EvaluatedRow {
  double seconds;
  std::int32_t minimum;
  const Degradation* degradation;
  Rate rate;
};

/// Cuts random excerpts out of tracks and looks each up, degraded in every way, in every
/// length and with every minimum. Places and noises are the same for all of these.
class Evaluation {
 public:
  /// Of the tracks (with paths of files) of the database at `path`. Holds a few excerpts.
  Evaluation(const std::string& path, std::vector<catalog::ListedTrack> tracks,
             const EvaluationSettings& settings);

  /// What is too short for the longest capture is not taken.
  std::size_t trackCount() const { return tracks_.size(); }

  /// Takes all excerpts. What cannot be read is complained of and left out.
  void run(const catalog::ProgressHandler& progress);

  /// Lengths, then minimums, then degradations, each in their order.
  const std::vector<EvaluatedRow>& rows() const { return rows_; }
  /// Excerpts that could not be read.
  int failedCount() const { return failed_; }

 private:
  struct Excerpt {
    std::size_t track;
    std::size_t start;  // in samples
    unsigned noise;     // seed
    std::vector<std::int32_t> samples;
  };

  void choosePlaces();
  void read(const std::vector<Excerpt*>& excerpts);
  bool take(Excerpt& excerpt, const std::int32_t* words, std::size_t at, std::size_t count) const;
  void judgeAll(const Excerpt& excerpt);
  void judgeSound(const Sound& sound, const Truth& truth, std::size_t degradation);

  const EvaluationSettings settings_;
  const double longest_;
  const std::size_t wanted_;  // samples of an excerpt
  std::vector<catalog::ListedTrack> tracks_;
  LirvoxDatabase database_;
  std::vector<Excerpt> excerpts_;  // by track
  std::vector<EvaluatedRow> rows_;
  int failed_ = 0;
};

}  // namespace lirvox::tools
