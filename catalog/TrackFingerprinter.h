// The fingerprint of one track for a database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "catalog/RowSelection.h"
#include "lib/Landmark.h"
#include "lib/LirvoxAudioFFT.h"

namespace lirvox::catalog {

/// Turns the samples of one track into the rows of a database. One thread at a time;
/// each worker has its own.
class TrackFingerprinter {
 public:
  explicit TrackFingerprinter(const RowRule& rule) : rule_(rule) {}

  /// Takes the next samples of the track: 32-bit words, mono, 11025 Hz.
  void add(const std::int32_t* words, std::size_t count);

  /// Ends the track: its rows, each once, ordered by hash, then time. Times are frames of
  /// 256 samples. The fingerprinter is ready for the next track.
  std::vector<QueryHash> finish();

  /// Samples taken since the last `finish`.
  std::size_t sampleCount() const { return samples_.size(); }

 private:
  void look(std::size_t offset, std::vector<Sighting>& sightings);

  const RowRule rule_;
  LirvoxAudioFFT fft_;
  std::vector<float> samples_;
};

}  // namespace lirvox::catalog
