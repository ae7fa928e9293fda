// A spectrogram: one value per frequency bin and frame.
#include "lib/Spectrogram.h"

#include <algorithm>

#include "lib/LirvoxSettings.h"

namespace lirvox {
namespace {

// More than a capture of the default length needs, so that its memory never moves.
constexpr std::size_t kFramesToBeginWith = 256;

}  // namespace

Spectrogram::Spectrogram()
    : binCount_(static_cast<std::size_t>(LirvoxSettings::settingNumFreqs())) {}

double* Spectrogram::appendFrames(std::int32_t count) {
  if (values_.capacity() == 0) {
    values_.reserve(std::max(kFramesToBeginWith, static_cast<std::size_t>(count)) * binCount_);
  }
  const std::size_t oldSize = values_.size();
  values_.resize(oldSize + static_cast<std::size_t>(count) * binCount_);
  return values_.data() + oldSize;
}

void Spectrogram::clear() {
  values_.clear();
  if (values_.capacity() > kFramesToBeginWith * binCount_) values_.shrink_to_fit();
}

}  // namespace lirvox
