// Blocks of audio to four shifted power spectrograms.
#include "lib/LirvoxMiniSpectogram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "lib/LirvoxSettings.h"
#include "lib/Window.h"

namespace lirvox {
namespace {

constexpr std::int32_t kChunksPerBlock = 5;

// Squared magnitudes of the lower half of `spectrum`. The general rules of complex
// products for infinities are not needed: samples are finite, and so are their powers.
void power(const DoubleSplitComplex& spectrum, std::size_t bins, double* out) {
  for (std::size_t b = 0; b < bins; ++b) {
    out[b] = spectrum.realp[b] * spectrum.realp[b] + spectrum.imagp[b] * spectrum.imagp[b];
  }
}

// How far the frame grid of a shift is moved, in samples.
std::int32_t shiftInSamples(std::int32_t s) {
  const auto fraction = static_cast<float>(s) / static_cast<float>(LirvoxSettings::settingSHIFTS());
  return static_cast<std::int32_t>(fraction * static_cast<float>(LirvoxSettings::settingNHop()));
}

}  // namespace

void appendPowerFrames(const float* samples, std::int32_t first, std::int32_t last,
                       LirvoxAudioFFT& fft, Spectrogram& specgram,
                       DoubleSplitComplex& lastSpectrum) {
  const std::vector<double>& window = analysisWindow();
  const auto logSize =
      static_cast<int>(std::log2(static_cast<float>(LirvoxSettings::settingNFFT())));
  const std::int32_t hop = LirvoxSettings::settingChunkSize() / 2;
  std::vector<double> frame(window.size());
  double* out = specgram.appendFrames(last - first);
  for (std::int32_t f = first; f < last; ++f, out += specgram.binCount()) {
    std::transform(window.begin(), window.end(), samples + f * hop, frame.begin(),
                   [](double w, float sample) { return w * static_cast<double>(sample); });
    lastSpectrum = fft.fft(frame.data(), logSize);
    power(lastSpectrum, specgram.binCount(), out);
  }
}

void LirvoxMiniSpectogram::do_4_mini_specgrams(const float* samples, LirvoxAudioFFT& fft,
                                               HistoryInfo& historyInfo) {
  const std::int32_t chunk = LirvoxSettings::settingChunkSize();
  const std::int32_t blockSize = kChunksPerBlock * chunk;
  std::vector<float> work(static_cast<std::size_t>(blockSize + chunk));
  std::copy_n(historyInfo.tail.begin(), chunk, work.begin());
  std::copy_n(samples, blockSize, work.begin() + chunk);

  for (std::int32_t s = 0; s < LirvoxSettings::settingSHIFTS(); ++s) {
    // Frame 0 of shift 0 would repeat the last frame of the block before.
    const std::int32_t first = historyInfo.firstBlock || s > 0 ? 0 : 1;
    const std::int32_t last = (historyInfo.firstBlock ? 8 : 10) + (s == 0 ? 1 : 0);
    const std::int32_t base = historyInfo.hasTail ? 0 : chunk;
    appendPowerFrames(work.data() + base + shiftInSamples(s), first, last, fft,
                      historyInfo.specgram(s), historyInfo.lastSpectrum);
  }
  historyInfo.firstBlock = false;
  std::copy_n(samples + blockSize - chunk, chunk, historyInfo.tail.begin());
  historyInfo.hasTail = true;
}

}  // namespace lirvox
