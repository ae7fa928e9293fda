// Windows, landmarks and hashes.
#include <cmath>
#include <numeric>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "lib/LirvoxUtilities.h"

namespace lirvox {

void PrintTo(const Landmark& mark, std::ostream* out) {
  *out << '(' << mark.t1 << ' ' << mark.f1 << ' ' << mark.f2 << ' ' << mark.dt << ')';
}

namespace {

std::vector<Landmark> pair(const std::vector<Peak>& peaks) {
  return LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size()));
}

TEST(Hanning, HasHandWorkedValuesAtSmallLengths) {
  const std::vector<double> window = LirvoxUtilities::hanning(5);
  const std::vector<double> expected = {0.0, 0.5, 1.0, 0.5, 0.0};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(window.at(i), expected[i], 1e-15);
  EXPECT_TRUE(LirvoxUtilities::hanning(0).empty());
  EXPECT_TRUE(std::isnan(LirvoxUtilities::hanning(1).at(0)));
  const std::vector<double> windowed = LirvoxUtilities::window_hanning({7.0, 8.0, -3.0, 4.0, 9.0});
  const std::vector<double> product = {0.0, 4.0, -3.0, 2.0, 0.0};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(windowed.at(i), product[i], 1e-15);
}

TEST(Peaks2landmarks, PairsAnchorsWithLaterPeaksNearby) {
  struct Case {
    const char* what;
    std::vector<Peak> peaks;
    std::vector<Landmark> landmarks;
  };
  const std::vector<Case> cases = {
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
  for (const Case& c : cases) EXPECT_EQ(pair(c.peaks), c.landmarks) << c.what;
  const Peak peak{0, 10};
  EXPECT_TRUE(LirvoxUtilities::peaks2landmarks(&peak, -1).empty());
}

TEST(Landmarks2hashes, FoldsBinsAndDistancesIntoTwentyBits) {
  struct Case {
    Landmark landmark;
    QueryHash hash;
  };
  const std::vector<Case> cases = {
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
}  // namespace lirvox
