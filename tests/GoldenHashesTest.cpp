// The hashes of a piece that every build must find.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"
#include "lib/ProcessingPass.h"
#include "tests/support/Signals.h"

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
  const std::vector<std::int32_t> words = test::piece(55125);
  LirvoxAudioFFT fft;
  const auto history = LirvoxUtilities::initHistoryInfo();
  std::vector<float> samples(2560);
  for (std::size_t i = 0; i + samples.size() <= words.size(); i += samples.size()) {
    convertSamples(words.data() + i, samples.size(), samples.data());
    LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data(), fft, *history);
  }
  struct Expected {
    std::size_t count;
    QueryHash first;
    QueryHash last;
    std::uint64_t digest;
  };
  const std::vector<Expected> expected = {
      {375, {1, 309065}, {194, 923470}, 0x8d6f634c24c6d9b7U},
      {387, {1, 309065}, {194, 923398}, 0xe730b290d3b6085dU},
      {423, {1, 626050}, {200, 902594}, 0x4c68844f8bd046a7U},
      {370, {2, 623944}, {193, 924814}, 0x1e5fdba471d09940U},
  };
  for (std::int32_t s = 0; s < 4; ++s) {
    const std::vector<QueryHash> hashes = LirvoxRecognize::hashesOf(history->specgram(s));
    const Expected& shift = expected.at(static_cast<std::size_t>(s));
    ASSERT_EQ(hashes.size(), shift.count) << s;
    EXPECT_EQ(hashes.front(), shift.first)
        << s << ": " << hashes.front().time << ' ' << hashes.front().hash;
    EXPECT_EQ(hashes.back(), shift.last)
        << s << ": " << hashes.back().time << ' ' << hashes.back().hash;
    EXPECT_EQ(digest(hashes), shift.digest) << s;
  }
}

}  // namespace
}  // namespace lirvox
