// From spectrograms to hashes, stage by stage.
#include "lib/Filter.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

using Values = std::vector<double>;

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

void expectNear(const Values& values, const Values& expected) {
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], expected[i], 1e-14) << i;
}

TEST(Lfilter, LetsChangesThroughAndForgetsThemSlowlyOfEachSignalByItself) {
  // An impulse, a step, and a neighbour that is not filtered.
  Values work = {1, 3, 100, 0, 3, 200, 0, 3, 300};
  lfilter(work.data(), 3, work.data(), 3, 2);
  expectNear(work, {1, 3, 100, -0.02, 2.94, 200, -0.0196, 2.8812, 300});
}

TEST(DoFilt, NormalisesCoefficientsAndKeepsItsStateBetweenCalls) {
  Values b = {2, 1, 0.5};
  Values a = {2, -1, 0.5};
  Values state(2);
  const Values impulse = {1, 9, 0, 9, 0, 9, 0, 9, 0, 9};  // every other value is not the signal's
  Values output(5);
  do_filt(b.data(), a.data(), impulse.data(), output.data(), state.data(), 3, 2, 16, 8);
  do_filt(b.data(), a.data(), impulse.data() + 4, output.data() + 2, state.data(), 3, 3, 16, 8);
  expectNear(output, {1, 1, 0.5, 0, -0.125});
  b = {6};
  a = {4};
  do_filt(b.data(), a.data(), impulse.data(), output.data(), nullptr, 1, 2, 8, 8);
  expectNear({output[0], output[1]}, {1.5, 13.5});
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

TEST(PickPeaks, FollowsTheMaskingThreshold) {
  // Of a peak of 1 one frame ago, exp(-0.5) times the decay is left 30 bins away.
  constexpr double kLeft = 0.6035781;
  const std::tuple<const char*, std::vector<Value>, std::vector<Peak>> cases[] = {
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
  for (const auto& [what, values, peaks] : cases) {
    EXPECT_EQ(pickPeaks(spectrogram(24, values)), peaks) << what;
  }
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

TEST(FindPeaks, IsBlindToScale) {
  Spectrogram power = spectrogram(60, {});
  const std::vector<float> values = test::noise(power.values().size());
  std::transform(values.begin(), values.end(), power.values().begin(),
                 [](float v) { return static_cast<double>(v * v); });
  Spectrogram louder = power;
  for (double& value : louder.values()) value *= 4096.0;
  const std::vector<Peak> peaks = findPeaks(power);
  EXPECT_GT(peaks.size(), 60U);
  EXPECT_EQ(findPeaks(louder), peaks);
}

std::vector<Landmark> pair(const std::vector<Peak>& peaks) {
  return LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size()));
}

TEST(Peaks2landmarks, PairsAnchorsWithLaterPeaksNearby) {
  const std::tuple<const char*, std::vector<Peak>, std::vector<Landmark>> cases[] = {
      {"no peaks", {}, {}},
      {"one peak", {{0, 10}}, {}},
      {"30 bins up", {{0, 10}, {2, 40}}, {{0, 10, 40, 2}}},
      {"31 bins up", {{0, 10}, {2, 41}}, {}},
      {"30 bins down", {{5, 255}, {7, 225}}, {{5, 255, 225, 2}}},
      {"31 bins down", {{5, 255}, {7, 224}}, {}},
      {"same frame", {{0, 10}, {0, 12}}, {}},
      {"next frame", {{0, 10}, {1, 12}}, {}},
      {"62 frames on", {{0, 10}, {62, 12}}, {{0, 10, 12, 62}}},
      {"63 frames on", {{0, 10}, {63, 12}}, {}},
      {"three targets at most, frame by frame, then bin by bin",
       {{0, 50}, {2, 49}, {2, 51}, {3, 50}, {4, 50}},
       {{0, 50, 49, 2}, {0, 50, 51, 2}, {0, 50, 50, 3}, {2, 49, 50, 2}, {2, 51, 50, 2}}},
      {"peaks out of reach use no target up",
       {{0, 50}, {2, 90}, {3, 10}, {3, 50}, {4, 51}, {5, 52}},
       {{0, 50, 50, 3}, {0, 50, 51, 4}, {0, 50, 52, 5}, {3, 50, 52, 2}}},
      {"anchors of one frame share targets",
       {{8, 3}, {8, 4}, {10, 5}},
       {{8, 3, 5, 2}, {8, 4, 5, 2}}},
  };
  for (const auto& [what, peaks, found] : cases) EXPECT_EQ(pair(peaks), found) << what;
  const Peak peak{0, 10};
  EXPECT_TRUE(LirvoxUtilities::peaks2landmarks(&peak, -1).empty());
}

TEST(Landmarks2hashes, FoldsBinsAndDistancesIntoTwentyBits) {
  const std::pair<Landmark, QueryHash> cases[] = {
      {{0, 10, 40, 2}, {0, 42882}},
      {{7, 0, 0, 2}, {7, 0x00002}},
      {{9, 1, 0, 5}, {9, 0x01FC5}},    // -1 is 63
      {{3, 30, 0, 62}, {3, 0x1E8BE}},  // -30 is 34
      {{100000, 255, 225, 62}, {100000, 0xFF8BE}},
      {{4, 225, 255, 3}, {4, 0xE1783}},
  };
  for (const auto& [landmark, hash] : cases) {
    const std::vector<QueryHash> hashes = LirvoxUtilities::landmarks2hashes({landmark, landmark});
    EXPECT_EQ(hashes, (std::vector<QueryHash>{hash, hash})) << hashes.at(0).hash;
  }
}

}  // namespace
}  // namespace lirvox::test
