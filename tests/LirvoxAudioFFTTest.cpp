// The FFT engine, against the definition of the transform.
#include <cmath>
#include <complex>
#include <vector>

#include <gtest/gtest.h>

#include "lib/LirvoxAudioFFT.h"
#include "tests/support/Signals.h"

namespace lirvox {
namespace {

constexpr double kTwoPi = 6.283185307179586;

std::vector<double> widened(const std::vector<float>& samples) {
  return {samples.begin(), samples.end()};
}

std::complex<double> bin(const DoubleSplitComplex& spectrum, std::size_t k) {
  return {spectrum.realp[k], spectrum.imagp[k]};
}

TEST(LirvoxAudioFFT, EqualsTheUnnormalisedTransformUpToNyquist) {
  const std::vector<double> frame = widened(test::noise(512));
  LirvoxAudioFFT engine;
  const auto spectrum = engine.fft(frame.data(), 9);
  for (std::size_t k = 0; k <= 256; ++k) {
    std::complex<double> expected;
    for (std::size_t j = 0; j < 512; ++j) {
      expected += frame[j] * std::polar(1.0, -kTwoPi * static_cast<double>(j * k % 512) / 512.0);
    }
    EXPECT_NEAR(std::abs(bin(spectrum, k) - expected), 0.0, 1e-11) << "bin " << k;
  }
}

TEST(LirvoxAudioFFT, MirrorsTheLowerHalfWithoutConjugation) {
  LirvoxAudioFFT engine;
  const auto spectrum = engine.fft(widened(test::noise(512)).data(), 9);
  for (std::size_t k = 1; k < 256; ++k) {
    EXPECT_EQ(bin(spectrum, 512 - k), bin(spectrum, k)) << "bin " << k;
    EXPECT_NE(spectrum.imagp[k], 0.0) << "bin " << k;
  }
  EXPECT_EQ(spectrum.imagp[0], 0.0);
  EXPECT_EQ(spectrum.imagp[256], 0.0);
}

TEST(LirvoxAudioFFT, IsExactForConstantsAndKeepsNothingOfTheFrameBefore) {
  LirvoxAudioFFT engine;
  engine.fft(widened(test::noise(512)).data(), 9);
  for (const double value : {0.25, 0.0}) {
    const auto spectrum = engine.fft(std::vector<double>(512, value).data(), 9);
    EXPECT_EQ(bin(spectrum, 0), 512 * value);
    for (std::size_t k = 1; k < 512; ++k) EXPECT_EQ(bin(spectrum, k), 0.0) << "bin " << k;
  }
}

}  // namespace
}  // namespace lirvox
