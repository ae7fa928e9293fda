// Candidates for the logarithm, on the powers of one frame.
#include <algorithm>
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>
#ifdef __x86_64__
#include <sleef.h>
#endif

#include "lib/Logarithm.h"

namespace lirvox::bench {
namespace {

constexpr std::size_t kBins = 258;

std::vector<double> powers() {
  std::vector<double> values(kBins);
  double value = 1e-9;
  for (double& v : values) v = value *= 1.1;
  return values;
}

// Runs `take(from, to)`, which writes the logarithms of kBins values.
template <typename Take>
void run(benchmark::State& state, Take take) {
  const std::vector<double> values = powers();
  std::vector<double> logarithms(kBins);
  for ([[maybe_unused]] auto _ : state) {
    take(values.data(), logarithms.data());
    benchmark::DoNotOptimize(logarithms.data());
    benchmark::ClobberMemory();
  }
}

void logarithmsOurs(benchmark::State& state) {
  run(state, [](const double* from, double* to) {
    std::copy_n(from, kBins, to);
    takeLogarithms(to, kBins, 1e-12);
  });
}
BENCHMARK(logarithmsOurs);

void logarithmsLibm(benchmark::State& state) {
  run(state, [](const double* from, double* to) {
    for (std::size_t i = 0; i < kBins; ++i) to[i] = std::log(from[i]);
  });
}
BENCHMARK(logarithmsLibm);

#ifdef __x86_64__
// Of SLEEF's, the one that promises the same bits everywhere.
void logarithmsSleef(benchmark::State& state) {
  run(state, [](const double* from, double* to) {
    for (std::size_t i = 0; i < kBins; i += 2) {
      _mm_storeu_pd(to + i, Sleef_cinz_logd2_u10sse2(_mm_loadu_pd(from + i)));
    }
  });
}
BENCHMARK(logarithmsSleef);
#endif

}  // namespace
}  // namespace lirvox::bench
