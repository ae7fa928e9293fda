// Candidates for the transform of 512 real samples.
#include <array>
#include <cmath>
#include <complex>
#include <unsupported/Eigen/FFT>
#include <vector>

#include <benchmark/benchmark.h>
#include <kissfft/kissfft.hh>

#include "bench/ChipTune.h"
#include "lib/LirvoxAudioFFT.h"

namespace lirvox::bench {
namespace {

constexpr std::size_t kFrame = 512;

std::vector<double> oneFrame() {
  const std::vector<float> samples = chipTuneSamples(1, kFrame);
  return {samples.begin(), samples.end()};
}

void transformOurs(benchmark::State& state) {
  const std::vector<double> frame = oneFrame();
  LirvoxAudioFFT fft;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(fft.fft(frame.data(), 9));
}
BENCHMARK(transformOurs);

void transformKissFft(benchmark::State& state) {
  const std::vector<double> frame = oneFrame();
  const kissfft<double> fft(kFrame / 2, false);
  std::array<std::complex<double>, kFrame / 2> packed;
  for ([[maybe_unused]] auto _ : state) {
    fft.transform_real(frame.data(), packed.data());
    benchmark::DoNotOptimize(packed);
  }
}
BENCHMARK(transformKissFft);

void transformEigen(benchmark::State& state) {
  const std::vector<double> frame = oneFrame();
  Eigen::FFT<double> fft;
  fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
  std::vector<std::complex<double>> spectrum(kFrame);
  for ([[maybe_unused]] auto _ : state) {
    fft.fwd(spectrum.data(), frame.data(), static_cast<Eigen::Index>(kFrame));
    benchmark::DoNotOptimize(spectrum);
  }
}
BENCHMARK(transformEigen);

// Two frames at a time; the figure is for both.
void transformOfPairOurs(benchmark::State& state) {
  const std::vector<double> pair(2 * kFrame, 0.5);
  LirvoxAudioFFT fft;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(fft.fftOfPair(pair.data()));
}
BENCHMARK(transformOfPairOurs);

}  // namespace
}  // namespace lirvox::bench
