// A recording of any length, recognised window by window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "lib/LirvoxDatabase.h"
#include "tools/Examination.h"
#include "tools/Stretches.h"

namespace lirvox::tools {

/// Takes the samples of a recording as they come and keeps no more than a window of them.
class Scanner {
 public:
  struct Options {
    std::string database;
    double windowInSeconds;
    double stepInSeconds;  ///< from window to window
    std::int32_t minimumVotes;
  };

  /// `handler` is called from `add` and `finish`.
  Scanner(const Options& options, Stretches::Handler handler);

  /// The next samples: 32-bit words, mono, 11025 Hz. Throws `CatalogError` when the database
  /// cannot be read any more.
  void add(const std::int32_t* words, std::size_t count);
  /// There are no more. What is left of them is a shorter window.
  void finish();

  /// Of the recording so far.
  double seconds() const { return secondsOf(received_); }
  bool recognizedAny() const { return stretches_.recognizedAny(); }

 private:
  static double secondsOf(std::int64_t samples);

  void look();
  void advance();
  std::optional<Stretches::Sighting> sighting();
  std::int32_t placeOf(const Examination& examined, const LirvoxResult& result) const;

  const std::size_t size_;  // of a window, in samples
  const std::size_t step_;
  const std::int32_t minimum_;
  LirvoxDatabase database_;
  Stretches stretches_;
  std::vector<std::int32_t> window_;
  std::int64_t start_ = 0;     // of the window
  std::int64_t lookedTo_ = 0;  // end of the latest one
  std::int64_t received_ = 0;
};

}  // namespace lirvox::tools
