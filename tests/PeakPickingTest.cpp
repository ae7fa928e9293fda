// From powers to peaks, stage by stage.
#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "lib/PeakPicking.h"
#include "tests/support/Signals.h"

namespace lirvox {

void PrintTo(const Peak& peak, std::ostream* out) {
  *out << '(' << peak.frame << ' ' << peak.bin << ')';
}

namespace {

struct Value {
  std::int32_t frame;
  std::size_t bin;
  double value;
};

// A spectrogram that is 0 but for `values`.
Spectrogram spectrogram(std::int32_t frames, const std::vector<Value>& values) {
  Spectrogram result;
  result.appendFrames(frames);
  for (const auto& [frame, bin, value] : values) result.frame(frame)[bin] = value;
  return result;
}

TEST(ScaleToDensity, CountsAllBinsTwiceButTheFirstAndTheLast) {
  Spectrogram specgram = spectrogram(2, {});
  std::fill(specgram.values().begin(), specgram.values().end(), 191.625 * 11025.0);
  scaleToDensity(specgram);
  for (std::size_t b = 0; b <= 256; ++b) {
    EXPECT_NEAR(specgram.frame(1)[b], b == 0 || b == 256 ? 1.0 : 2.0, 1e-12) << b;
  }
}

TEST(TakeLogarithm, SpansAMillionAndRemovesTheMean) {
  Spectrogram specgram = spectrogram(1, {{0, 3, 2e4}, {0, 4, 2.0}, {0, 5, 1e-9}, {0, 256, 0.01}});
  takeLogarithm(specgram);
  const double* const values = specgram.frame(0);
  EXPECT_NEAR(values[3] - values[4], std::log(1e4), 1e-12);
  EXPECT_NEAR(values[3] - values[5], std::log(1e6), 1e-12);  // smaller than a millionth
  EXPECT_EQ(values[5], values[0]);
  EXPECT_EQ(values[5], values[256]);
  // A millionth everywhere but for two values above it.
  EXPECT_NEAR(values[0], -(std::log(1e6) + std::log(1e2)) / 257, 1e-12);
}

TEST(TakeLogarithm, TakesNoneOfSilence) {
  Spectrogram specgram = spectrogram(2, {});
  takeLogarithm(specgram);
  EXPECT_EQ(specgram.values(), std::vector<double>(2 * 257, 0.0));
  Spectrogram empty;
  takeLogarithm(empty);
  EXPECT_TRUE(empty.values().empty());
}

TEST(PickPeaks, FollowsTheMaskingThreshold) {
  // Of a peak of 1 one frame ago, exp(-0.5) times the decay is left 30 bins away.
  constexpr double kLeft = 0.6035781;
  struct Case {
    const char* what;
    std::vector<Value> values;
    std::vector<Peak> peaks;
  };
  const std::vector<Case> cases = {
      {"nothing", {}, {}},
      {"the outermost bins", {{20, 0, 1}, {20, 255, 1}}, {{20, 0}, {20, 255}}},
      {"the bin beyond them", {{20, 256, 1}}, {}},
      {"of equal neighbours the upper one", {{20, 99, 1}, {20, 100, 1}}, {{20, 100}}},
      {"of three equal neighbours too", {{20, 7, 1}, {20, 8, 1}, {20, 9, 1}}, {{20, 9}}},
      {"a slope has one maximum", {{20, 99, 1}, {20, 100, 2}, {20, 101, 1.5}}, {{20, 100}}},
      {"just above the mask", {{20, 99, 1}, {21, 129, kLeft + 1e-6}}, {{20, 99}, {21, 129}}},
      {"just below the mask", {{20, 99, 1}, {21, 129, kLeft - 1e-6}}, {{20, 99}}},
      {"the mask of two frames ago", {{20, 99, 1}, {22, 69, 0.60065}}, {{20, 99}, {22, 69}}},
      {"no frame decays less", {{20, 99, 1}, {22, 69, 0.60063}}, {{20, 99}}},
      {"peaks of one frame do not mask each other",
       {{20, 99, 1}, {20, 101, 0.9}},
       {{20, 99}, {20, 101}}},
      {"the first frame is not above its own envelope", {{0, 99, 1}}, {}},
      {"the second frame is, by one decay", {{1, 99, 1}}, {{1, 99}}},
      {"ten frames make the first envelope", {{2, 99, 0.9}, {9, 99, 1}}, {{9, 99}}},
      {"the eleventh does not", {{2, 99, 0.9}, {10, 99, 1}}, {{2, 99}, {10, 99}}},
      {"values below zero mask nothing", {{0, 99, -1}, {20, 99, 1e-9}, {20, 120, -1}}, {{20, 99}}},
  };
  for (const Case& c : cases) EXPECT_EQ(pickPeaks(spectrogram(24, c.values)), c.peaks) << c.what;
}

TEST(PickPeaks, AcceptsTheFiveStrongestOfAFrame) {
  std::vector<Value> values;
  for (std::size_t i = 0; i < 8; ++i) {
    values.push_back({15, 20 + 4 * i, 1.0 + 0.01 * static_cast<double>(i * 5 % 8)});
  }
  // Ranks 0 5 2 7 4 1 6 3: the five strongest are 3 to 7.
  EXPECT_EQ(pickPeaks(spectrogram(16, values)),
            (std::vector<Peak>{{15, 24}, {15, 32}, {15, 36}, {15, 44}, {15, 48}}));
  for (Value& value : values) value.value = 1.0;
  EXPECT_EQ(pickPeaks(spectrogram(16, values)),
            (std::vector<Peak>{{15, 20}, {15, 24}, {15, 28}, {15, 32}, {15, 36}}));
}

TEST(FindPeaks, IsBlindToScaleAndFindsNothingInSilence) {
  Spectrogram power = spectrogram(60, {});
  const std::vector<float> values = test::noise(power.values().size());
  std::transform(values.begin(), values.end(), power.values().begin(),
                 [](float v) { return static_cast<double>(v * v); });
  Spectrogram louder = power;
  for (double& value : louder.values()) value *= 4096.0;
  const std::vector<Peak> peaks = findPeaks(power);
  EXPECT_GT(peaks.size(), 60U);
  EXPECT_EQ(findPeaks(louder), peaks);
  Spectrogram silence = spectrogram(60, {});
  EXPECT_TRUE(findPeaks(silence).empty());
  Spectrogram empty;
  EXPECT_TRUE(findPeaks(empty).empty());
}

}  // namespace
}  // namespace lirvox
