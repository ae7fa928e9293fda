// From the spectral history of a capture to its outcome.
#include "lib/LirvoxRecognize.h"

#include <optional>

#include "lib/LirvoxPostDatabaseProcessing.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"

namespace lirvox {

std::vector<QueryHash> LirvoxRecognize::hashesOf(Spectrogram& specgram) {
  const std::vector<Peak> peaks = findPeaks(specgram);
  return LirvoxUtilities::landmarks2hashes(
      LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size())));
}

std::vector<QueryHash> LirvoxRecognize::queryHashes(HistoryInfo& historyInfo) {
  std::vector<QueryHash> hashes;
  for (std::int32_t s = 0; s < LirvoxSettings::settingSHIFTS(); ++s) {
    const std::vector<QueryHash> ofShift = hashesOf(historyInfo.specgram(s));
    hashes.insert(hashes.end(), ofShift.begin(), ofShift.end());
  }
  return hashes;
}

void LirvoxRecognize::recognize(HistoryInfo& historyInfo, LirvoxDatabase* database) {
  const std::vector<QueryHash> hashes = queryHashes(historyInfo);
  std::optional<LirvoxRowMap> rows;
  if (database) rows = database->selectFingerprints(hashes);
  LirvoxPostDatabaseProcessing::processResult(rows ? &*rows : nullptr, hashes);
}

}  // namespace lirvox
