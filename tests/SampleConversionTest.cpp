// Samples of the capture format to floats, bit for bit.
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "lib/ProcessingPass.h"

namespace lirvox {
namespace {

TEST(ConvertSamples, RoundsWordsToSinglePrecisionAndScalesThem) {
  struct Case {
    std::int32_t word;
    std::uint32_t bits;
  };
  const std::vector<Case> cases = {
      {0, 0x00000000},           // 0
      {1, 0x38000000},           // 2^-15
      {-1, 0xB8000000},          // -2^-15
      {32767, 0x3F7FFE00},       // 1 - 2^-15
      {-32768, 0xBF800000},      // -1
      {16777215, 0x43FFFFFF},    // the last before words are rounded
      {16777217, 0x44000000},    // 2^24 + 1 is a tie: to the even 2^24
      {16777219, 0x44000002},    // 2^24 + 3 is a tie: to the even 2^24 + 4
      {-16777217, 0xC4000000},   // the same below zero
      {33554435, 0x44800001},    // 2^25 + 3: up to 2^25 + 4
      {2147483583, 0x477FFFFF},  // 2^31 - 65: down to 2^31 - 128
      {2147483584, 0x47800000},  // 2^31 - 64 is a tie: to the even 2^31
      {std::numeric_limits<std::int32_t>::max(), 0x47800000},
      {std::numeric_limits<std::int32_t>::min(), 0xC7800000},
  };
  for (const auto& [word, bits] : cases) {
    float sample = 0.0F;
    convertSamples(&word, 1, &sample);
    std::uint32_t got = 0;
    std::memcpy(&got, &sample, sizeof got);
    EXPECT_EQ(got, bits) << word;
  }
}

}  // namespace
}  // namespace lirvox
