// From the spectral history of a capture to its outcome.
#pragma once

#include <vector>

#include "HistoryInfo.h"
#include "Landmark.h"
#include "LirvoxDatabase.h"
#include "LirvoxExport.h"

namespace lirvox {

/// The end of a pass.
class LIRVOX_EXPORT LirvoxRecognize {
 public:
  LirvoxRecognize() = delete;

  /// Fingerprints the capture, looks its hashes up in `database` (null: nothing is
  /// found) with one statement, and ends in the delivery of
  /// `LirvoxPostDatabaseProcessing`. Consumes the history. Blocks while it works.
  static void recognize(HistoryInfo& historyInfo, LirvoxDatabase* database);

  /// The query hashes of all shifts, shift 0 first; times count from the first frame
  /// of each shift. Rescales the history, so it is asked once per capture.
  static std::vector<QueryHash> queryHashes(HistoryInfo& historyInfo);

  /// The hashes of one spectrogram of powers, which is rescaled.
  static std::vector<QueryHash> hashesOf(Spectrogram& specgram);
};

}  // namespace lirvox
