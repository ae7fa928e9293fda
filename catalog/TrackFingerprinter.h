// The fingerprint of one track for a database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "lib/Landmark.h"
#include "lib/LirvoxAudioFFT.h"
#include "lib/Spectrogram.h"

namespace lirvox::catalog {

/// How many of the four shifts of the frame grid go into a database: 1 (shift 0), 2
/// (0 and 2) or 4. More rows find weaker matches, at the price of size.
enum class Shifts { one = 1, two = 2, four = 4 };

/// Turns the samples of one track into the rows of a database. One thread at a time;
/// each worker has its own.
class TrackFingerprinter {
 public:
  explicit TrackFingerprinter(Shifts shifts);

  /// Takes the next samples of the track: 32-bit words, mono, 11025 Hz.
  void add(const std::int32_t* words, std::size_t count);

  /// Ends the track: its distinct (time, hash) pairs, ordered by hash, then time. Times
  /// are frames of 256 samples. The fingerprinter is ready for the next track.
  std::vector<QueryHash> finish();

  /// Samples taken since the last `finish`.
  std::uint64_t sampleCount() const { return begin_ + samples_.size(); }

 private:
  struct Grid {
    std::int32_t shiftInSamples;
    Spectrogram specgram;
  };

  void analyse();

  LirvoxAudioFFT fft_;
  std::vector<Grid> grids_;
  std::uint64_t begin_ = 0;     // position of samples_ in the track
  std::vector<float> samples_;  // those that frames still to come need
};

}  // namespace lirvox::catalog
