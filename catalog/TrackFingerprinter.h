// The fingerprint of one track for a database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "catalog/RowSelection.h"
#include "catalog/Spool.h"
#include "catalog/TrackSpectrogram.h"
#include "lib/Landmark.h"
#include "lib/PeakPicker.h"

namespace lirvox::catalog {

/// Turns the samples of one track into the rows of a database. One thread at a time;
/// each worker has its own.
class TrackFingerprinter {
 public:
  /// Twelve minutes.
  static constexpr std::size_t kSamplesInMemory = std::size_t{1} << 23;

  /// Of longer tracks than `samplesInMemory` samples the rest is in temporary files. The
  /// spectrogram of tracks up to two and a half times as long (170 MB) is held in memory;
  /// longer ones take little memory whatever their length, and half as much time again.
  /// The rows are the same.
  ///
  /// `checkpoint` is called many times a second while `finish` works, on its thread. What
  /// it throws ends the work; `clear` makes ready for the next track then.
  explicit TrackFingerprinter(
      const RowRule& rule, std::size_t samplesInMemory = kSamplesInMemory,
      const std::function<void()>& checkpoint = [] {});

  /// Takes the next samples of the track: 32-bit words, mono, 11025 Hz. `CatalogError`
  /// when there is no room for a temporary file.
  void add(const std::int32_t* words, std::size_t count);

  /// Ends the track: its rows, each once, ordered by hash, then time. Times are frames of
  /// 256 samples. The fingerprinter is ready for the next track. `CatalogError` as above.
  std::vector<QueryHash> finish();

  /// Forgets the samples taken so far, also after an error.
  void clear();

  /// Samples taken since the last `finish` or `clear`.
  std::size_t sampleCount() const { return samples_.size(); }

 private:
  void look(std::size_t offset, Spool<Sighting>& sightings);
  void pair(std::vector<PickedPeak>& picked, std::int32_t end, Spool<Sighting>& sightings);
  std::vector<QueryHash> select();

  const RowRule rule_;
  const std::function<void()> checkpoint_;
  Spool<float> samples_;
  std::vector<float> converted_;
  TrackSpectrogram spectrogram_;
  std::deque<Spool<Sighting>> sightings_;  // of each alignment, by time
  RowSelection selection_;
};

}  // namespace lirvox::catalog
