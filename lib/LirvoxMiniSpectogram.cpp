// Blocks of audio to four shifted power spectrograms.
#include "lib/LirvoxMiniSpectogram.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "lib/Lanes.h"
#include "lib/LirvoxSettings.h"
#include "lib/Window.h"

namespace lirvox {
namespace {

constexpr std::int32_t kChunksPerBlock = 5;

// The lengths of the arrays below; `settingNFFT` and the rest never change.
constexpr int kLogFrame = 9;
constexpr std::size_t kFrame = std::size_t{1} << kLogFrame;
constexpr std::size_t kBins = kFrame / 2 + 1;

// Of the squared magnitudes, the general rules of complex products for infinities are not
// needed: samples are finite, and so are their powers.
template <typename Real>
Real squaredMagnitude(Real re, Real im) {
  return re * re + im * im;
}

// One frame, from its samples to its powers.
DoubleSplitComplex transformFrame(const float* samples, const double* window, LirvoxAudioFFT& fft,
                                  double* out) {
  std::array<double, kFrame> frame;
  for (std::size_t k = 0; k < kFrame; ++k) frame[k] = window[k] * static_cast<double>(samples[k]);
  const DoubleSplitComplex spectrum = fft.fft(frame.data(), kLogFrame);
  for (std::size_t b = 0; b < kBins; ++b) {
    out[b] = squaredMagnitude(spectrum.realp[b], spectrum.imagp[b]);
  }
  return spectrum;
}

// Two frames, the second `hop` samples after the first. Nearly twice as fast, and equal to the bit.
void transformPair(const float* samples, std::size_t hop, const double* window, LirvoxAudioFFT& fft,
                   double* out) {
  std::array<double, kLanes * kFrame> pair;
  for (std::size_t k = 0; k < kFrame; ++k) {
    pair[kLanes * k] = window[k] * static_cast<double>(samples[k]);
    pair[kLanes * k + 1] = window[k] * static_cast<double>(samples[k + hop]);
  }
  const DoubleSplitComplex spectra = fft.fftOfPair(pair.data());
  for (std::size_t b = 0; b < kBins; ++b) {
    const Lanes power = squaredMagnitude(load<Lanes>(spectra.realp + kLanes * b),
                                         load<Lanes>(spectra.imagp + kLanes * b));
    out[b] = power[0];
    out[b + kBins] = power[1];
  }
}

// How far the frame grid of a shift is moved, in samples.
std::int32_t shiftInSamples(std::int32_t s) {
  const auto fraction = static_cast<float>(s) / static_cast<float>(LirvoxSettings::settingSHIFTS());
  return static_cast<std::int32_t>(fraction * static_cast<float>(LirvoxSettings::settingNHop()));
}

}  // namespace

void computePowerFrames(const float* samples, std::size_t count, LirvoxAudioFFT& fft, double* out,
                        DoubleSplitComplex& lastSpectrum) {
  const double* const window = analysisWindow().data();
  const auto hop = static_cast<std::size_t>(LirvoxSettings::settingChunkSize() / 2);
  std::size_t f = 0;
  for (; f + kLanes <= count; f += kLanes) {
    transformPair(samples + f * hop, hop, window, fft, out + f * kBins);
  }
  if (f < count) {
    lastSpectrum = transformFrame(samples + f * hop, window, fft, out + f * kBins);
  } else if (count > 0) {
    lastSpectrum = fft.spectrumOfPair(kLanes - 1);
  }
}

void appendPowerFrames(const float* samples, std::int32_t first, std::int32_t last,
                       LirvoxAudioFFT& fft, Spectrogram& specgram,
                       DoubleSplitComplex& lastSpectrum) {
  const std::int32_t hop = LirvoxSettings::settingChunkSize() / 2;
  computePowerFrames(samples + std::ptrdiff_t{first} * hop, static_cast<std::size_t>(last - first),
                     fft, specgram.appendFrames(last - first), lastSpectrum);
}

void LirvoxMiniSpectogram::do_4_mini_specgrams(const float* samples, LirvoxAudioFFT& fft,
                                               HistoryInfo& historyInfo) {
  const std::int32_t chunk = LirvoxSettings::settingChunkSize();
  const std::int32_t blockSize = kChunksPerBlock * chunk;
  std::vector<float> work(static_cast<std::size_t>(blockSize + chunk));
  historyInfo.tail.resize(static_cast<std::size_t>(chunk));  // of a record that a host has made
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
