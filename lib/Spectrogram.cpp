// A spectrogram: one value per frequency bin and frame.
#include "lib/Spectrogram.h"

#include "lib/LirvoxSettings.h"

namespace lirvox {

Spectrogram::Spectrogram()
    : binCount_(static_cast<std::size_t>(LirvoxSettings::settingNumFreqs())) {}

double* Spectrogram::appendFrames(std::int32_t count) {
  const std::size_t oldSize = values_.size();
  values_.resize(oldSize + static_cast<std::size_t>(count) * binCount_);
  return values_.data() + oldSize;
}

void Spectrogram::clear() {
  std::vector<double>().swap(values_);
}

}  // namespace lirvox
