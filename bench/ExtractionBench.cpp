// Audio to hashes, against the work that no implementation can avoid.
#include <array>
#include <cmath>

#include <benchmark/benchmark.h>

#include "bench/ChipTune.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"
#include "lib/Window.h"

namespace lirvox::bench {
namespace {

constexpr std::size_t kSampleRate = 11025;
constexpr std::size_t kBlock = 2560;
constexpr std::size_t kBlocksOfCapture = 5 * kSampleRate / kBlock;
constexpr std::size_t kFramesOfCapture = 4 * (10 * kBlocksOfCapture - 2) + 1;
constexpr std::size_t kHop = 256;
constexpr std::size_t kFrame = 512;
constexpr std::size_t kBins = kFrame / 2 + 1;

// Where frame i of a capture starts; which frame it is does not change the work.
std::size_t frameStart(std::size_t i) {
  return i * kHop % (kBlocksOfCapture * kBlock - kFrame);
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

// Window, transform, power and logarithm of as many frames.
void bareFrames(benchmark::State& state) {
  const std::vector<float> samples = chipTuneSamples(1, kBlocksOfCapture * kBlock);
  const std::vector<double>& window = analysisWindow();
  LirvoxAudioFFT fft;
  std::array<double, kFrame> frame{};
  std::array<double, kBins> column{};
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < kFramesOfCapture; ++i) {
      const float* const start = samples.data() + frameStart(i);
      for (std::size_t k = 0; k < kFrame; ++k) frame[k] = window[k] * static_cast<double>(start[k]);
      const auto [re, im] = fft.fft(frame.data(), 9);
      for (std::size_t b = 0; b < kBins; ++b) {
        column[b] = std::log(re[b] * re[b] + im[b] * im[b]);
      }
      benchmark::DoNotOptimize(column);
    }
  }
}
BENCHMARK(bareFrames)->Unit(benchmark::kMicrosecond);

// The transforms of as many frames alone.
void bareTransforms(benchmark::State& state) {
  const std::vector<float> samples = chipTuneSamples(1, kFrame);
  const std::vector<double> frame(samples.begin(), samples.end());
  LirvoxAudioFFT fft;
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < kFramesOfCapture; ++i) {
      benchmark::DoNotOptimize(fft.fft(frame.data(), 9));
    }
  }
}
BENCHMARK(bareTransforms)->Unit(benchmark::kMicrosecond);

// A track of four minutes for a database of one shift; the counter is its speed in multiples of
// real time.
void trackOneShift(benchmark::State& state) {
  constexpr std::size_t kSeconds = 240;
  const std::vector<std::int32_t> words = chipTune(2, kSeconds * kSampleRate);
  catalog::TrackFingerprinter fingerprinter({.alignments = 1, .rowsPerHour = 0});
  for ([[maybe_unused]] auto _ : state) {
    fingerprinter.add(words.data(), words.size());
    benchmark::DoNotOptimize(fingerprinter.finish());
  }
  state.counters["x_real_time"] =
      benchmark::Counter(kSeconds, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(trackOneShift)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lirvox::bench
