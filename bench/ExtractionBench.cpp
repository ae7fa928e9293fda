// Audio to hashes, against the work that no implementation can avoid.
#include <array>
#include <cmath>
#include <complex>

#include <benchmark/benchmark.h>
#include <chromaprint.h>
#include <kissfft/kissfft.hh>

#include "bench/ChipTune.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"
#include "lib/Logarithm.h"
#include "lib/Window.h"

namespace lirvox::bench {
namespace {

constexpr std::size_t kSampleRate = 11025;
constexpr std::size_t kBlock = 2560;
constexpr std::size_t kBlocksOfCapture = 5 * kSampleRate / kBlock;
constexpr std::size_t kFramesOfCapture = 4 * (10 * kBlocksOfCapture - 2) + 1;
constexpr std::size_t kSecondsOfTrack = 240;
constexpr std::size_t kHop = 256;
constexpr std::size_t kFrame = 512;
constexpr std::int32_t kFramesAtOnce = 10;
constexpr double kSmallestPower = 1e-12;

// Where frame i of a capture starts; which frame it is does not change the work.
std::size_t frameStart(std::size_t i) {
  return i * kHop % (kBlocksOfCapture * kBlock - kBlock);
}

// One 5 s capture: blocks in, the query hashes of four shifts out.
void extraction(benchmark::State& state) {
  const std::vector<float> samples = chipTuneSamples(1, kBlocksOfCapture * kBlock);
  LirvoxAudioFFT fft;
  const auto history = LirvoxUtilities::initHistoryInfo();
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t b = 0; b < kBlocksOfCapture; ++b) {
      LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data() + b * kBlock, fft, *history);
    }
    benchmark::DoNotOptimize(LirvoxRecognize::queryHashes(*history));
    LirvoxUtilities::freeHistoryInfo(*history);
  }
}
BENCHMARK(extraction)->Unit(benchmark::kMicrosecond);

// Window, transform, power and logarithm of as many frames, by the same means, in memory that
// never leaves the cache.
void bareFrames(benchmark::State& state) {
  const std::vector<float> samples = chipTuneSamples(1, kBlocksOfCapture * kBlock);
  LirvoxAudioFFT fft;
  Spectrogram column;
  DoubleSplitComplex spectrum;
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < kFramesOfCapture; i += std::size_t{kFramesAtOnce}) {
      column.values().clear();
      appendPowerFrames(samples.data() + frameStart(i), 0, kFramesAtOnce, fft, column, spectrum);
      benchmark::DoNotOptimize(
          takeLogarithms(column.values().data(), column.values().size(), kSmallestPower));
    }
  }
}
BENCHMARK(bareFrames)->Unit(benchmark::kMicrosecond);

// The transforms of as many frames alone.
void bareTransforms(benchmark::State& state) {
  const std::vector<double> pair(2 * kFrame, 0.5);
  LirvoxAudioFFT fft;
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < kFramesOfCapture; i += 2) {
      benchmark::DoNotOptimize(fft.fftOfPair(pair.data()));
    }
  }
}
BENCHMARK(bareTransforms)->Unit(benchmark::kMicrosecond);

// The same frames by the means of others: kissfft.hh and the mathematical library.
void plainFrames(benchmark::State& state) {
  const std::vector<float> samples = chipTuneSamples(1, kBlocksOfCapture * kBlock);
  const std::vector<double>& window = analysisWindow();
  const kissfft<double> fft(kFrame / 2, false);
  std::array<double, kFrame> frame{};
  std::array<std::complex<double>, kFrame / 2> packed;
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < kFramesOfCapture; ++i) {
      const float* const start = samples.data() + frameStart(i);
      for (std::size_t k = 0; k < kFrame; ++k) frame[k] = window[k] * static_cast<double>(start[k]);
      fft.transform_real(frame.data(), packed.data());
      for (std::size_t b = 0; b < packed.size(); ++b) frame[b] = std::log(std::norm(packed[b]));
      benchmark::DoNotOptimize(frame);
    }
  }
}
BENCHMARK(plainFrames)->Unit(benchmark::kMicrosecond);

// A track of four minutes for a database of one shift.
void trackOneShift(benchmark::State& state) {
  const std::vector<std::int32_t> words = chipTune(2, kSecondsOfTrack * kSampleRate);
  catalog::TrackFingerprinter fingerprinter({.alignments = 1, .rowsPerHour = 0});
  for ([[maybe_unused]] auto _ : state) {
    fingerprinter.add(words.data(), words.size());
    benchmark::DoNotOptimize(fingerprinter.finish());
  }
  state.counters["seconds"] = kSecondsOfTrack;
}
// Long enough for memory to be warm, as it is in a worker that takes track after track.
BENCHMARK(trackOneShift)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

// The same track by the fingerprinter that others are measured by.
void trackChromaprint(benchmark::State& state) {
  const std::vector<std::int32_t> words = chipTune(2, kSecondsOfTrack * kSampleRate);
  const std::vector<std::int16_t> samples(words.begin(), words.end());
  ChromaprintContext* const context = chromaprint_new(CHROMAPRINT_ALGORITHM_DEFAULT);
  for ([[maybe_unused]] auto _ : state) {
    chromaprint_start(context, kSampleRate, 1);
    chromaprint_feed(context, samples.data(), static_cast<int>(samples.size()));
    chromaprint_finish(context);
  }
  chromaprint_free(context);
  state.counters["seconds"] = kSecondsOfTrack;
}
BENCHMARK(trackChromaprint)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

}  // namespace
}  // namespace lirvox::bench
