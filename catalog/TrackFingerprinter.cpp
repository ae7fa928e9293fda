// The fingerprint of one track for a database.
#include "catalog/TrackFingerprinter.h"

#include <algorithm>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxSettings.h"
#include "lib/ProcessingPass.h"

namespace lirvox::catalog {
namespace {

// Frames are computed in lots of this many samples at least.
constexpr std::size_t kLotInSamples = 16384;

}  // namespace

TrackFingerprinter::TrackFingerprinter(Shifts shifts) {
  const int count = static_cast<int>(shifts);
  const std::int32_t step = LirvoxSettings::settingNHop() / count;
  for (std::int32_t i = 0; i < count; ++i) grids_.push_back({i * step, Spectrogram()});
}

void TrackFingerprinter::add(const std::int32_t* words, std::size_t count) {
  while (count > 0) {
    const std::size_t room = kLotInSamples - std::min(kLotInSamples - 1, samples_.size());
    const std::size_t part = std::min(count, room);
    const std::size_t old = samples_.size();
    samples_.resize(old + part);
    convertSamples(words, part, samples_.data() + old);
    words += part;
    count -= part;
    if (samples_.size() >= kLotInSamples) analyse();
  }
}

// Appends the frames that are complete and forgets the samples that no frame needs any more.
void TrackFingerprinter::analyse() {
  const auto hop = static_cast<std::uint64_t>(LirvoxSettings::settingNHop());
  const auto size = static_cast<std::uint64_t>(LirvoxSettings::settingNFFT());
  const std::uint64_t end = begin_ + samples_.size();
  std::uint64_t needed = end;
  DoubleSplitComplex ignored;
  for (auto& [shift, specgram] : grids_) {
    const std::uint64_t first =
        static_cast<std::uint64_t>(shift) + hop * static_cast<std::uint64_t>(specgram.frameCount());
    const std::uint64_t complete = end < first + size ? 0 : (end - first - size) / hop + 1;
    if (complete > 0) {
      appendPowerFrames(samples_.data() + (first - begin_), 0, static_cast<std::int32_t>(complete),
                        fft_, specgram, ignored);
    }
    needed = std::min(needed, first + hop * complete);
  }
  samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(needed - begin_));
  begin_ = needed;
}

std::vector<QueryHash> TrackFingerprinter::finish() {
  analyse();
  std::vector<QueryHash> rows;
  for (auto& [shift, specgram] : grids_) {
    const std::vector<QueryHash> hashes = LirvoxRecognize::hashesOf(specgram);
    rows.insert(rows.end(), hashes.begin(), hashes.end());
    specgram.clear();
  }
  std::sort(rows.begin(), rows.end(), [](const QueryHash& a, const QueryHash& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.time < b.time;
  });
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  samples_.clear();
  begin_ = 0;
  return rows;
}

}  // namespace lirvox::catalog
