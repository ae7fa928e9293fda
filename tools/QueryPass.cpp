// The pieces of a recognition pass, for who wants to see them.
#include "tools/QueryPass.h"

#include <algorithm>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/ProcessingPass.h"

namespace lirvox::tools {

QueryPass::QueryPass() : historyInfo_(LirvoxUtilities::initHistoryInfo()) {}

void QueryPass::add(const std::int32_t* words, std::size_t count) {
  const auto size = static_cast<std::size_t>(LirvoxSettings::minimumBufferSizeForMiniSpectogram());
  std::vector<float> samples(size);
  while (count > 0) {
    const std::size_t part = std::min(count, size - block_.size());
    block_.insert(block_.end(), words, words + part);
    words += part;
    count -= part;
    if (block_.size() < size) return;
    convertSamples(block_.data(), size, samples.data());
    LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data(), fft_, *historyInfo_);
    block_.clear();
  }
}

std::array<std::vector<QueryHash>, 4> QueryPass::hashesByShift() {
  std::array<std::vector<QueryHash>, 4> hashes;
  for (std::size_t shift = 0; shift < hashes.size(); ++shift) {
    hashes[shift] =
        LirvoxRecognize::hashesOf(historyInfo_->specgram(static_cast<std::int32_t>(shift)));
  }
  return hashes;
}

}  // namespace lirvox::tools
