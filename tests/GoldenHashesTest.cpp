// The hashes of a piece that every build must find.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ControllerTest.h"

namespace lirvox {
namespace {

// FNV-1a of times and hashes.
std::uint64_t digest(const std::vector<QueryHash>& hashes) {
  std::uint64_t sum = 14695981039346656037U;
  for (const QueryHash& query : hashes) {
    for (const std::int32_t value : {query.time, query.hash}) {
      for (int shift = 0; shift < 32; shift += 8) {
        sum = (sum ^ (static_cast<std::uint32_t>(value) >> shift & 255U)) * 1099511628211U;
      }
    }
  }
  return sum;
}

TEST(GoldenHashes, AreTheSameInEveryBuild) {
  const std::vector<QueryHash> hashes = test::queryHashes(test::piece(55125));
  EXPECT_EQ(hashes.size(), 1555U);
  EXPECT_EQ(digest(hashes), 631649758980797272U);
}

}  // namespace
}  // namespace lirvox
