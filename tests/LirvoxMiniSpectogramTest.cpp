// The time grid of the four shifted spectrograms.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxUtilities.h"
#include "tests/support/Signals.h"

namespace lirvox {
namespace {

constexpr std::size_t kBlock = 2560;

class MiniSpectogram : public testing::Test {
 protected:
  // Hands over all whole blocks of `samples`.
  void analyse(const std::vector<float>& samples) {
    for (std::size_t i = 0; i + kBlock <= samples.size(); i += kBlock) {
      LirvoxUtilities::do_4_mini_specgrams(samples.data() + i, fft_, *history_);
    }
  }

  std::vector<std::int32_t> frameCounts() const {
    return {history_->frameCount0(), history_->frameCount1(), history_->frameCount2(),
            history_->frameCount3()};
  }

  LirvoxAudioFFT fft_;
  const std::unique_ptr<HistoryInfo> history_ = LirvoxUtilities::initHistoryInfo();
};

using Counts = std::vector<std::int32_t>;

TEST_F(MiniSpectogram, HasTheFramesThatTheWholeCaptureHasAtOnce) {
  const std::vector<float> capture = test::noise(4 * kBlock);
  analyse(capture);
  EXPECT_EQ(frameCounts(), (Counts{39, 38, 38, 38}));
  const std::vector<double> window = LirvoxUtilities::hanning(512);
  std::vector<double> frame(512);
  for (std::int32_t s = 0; s < 4; ++s) {
    for (std::int32_t t = 0; t < history_->specgram(s).frameCount(); ++t) {
      const auto start = static_cast<std::size_t>(64 * s + 256 * t);
      for (std::size_t k = 0; k < 512; ++k) {
        frame[k] = window[k] * static_cast<double>(capture.at(start + k));
      }
      const auto spectrum = fft_.fft(frame.data(), 9);
      for (std::size_t b = 0; b <= 256; ++b) {
        const double power =
            spectrum.realp[b] * spectrum.realp[b] + spectrum.imagp[b] * spectrum.imagp[b];
        ASSERT_EQ(history_->specgram(s).frame(t)[b], power) << s << ' ' << t << ' ' << b;
      }
    }
  }
}

TEST_F(MiniSpectogram, StartsAfreshOnceTheHistoryIsFreed) {
  const std::vector<float> capture = test::noise(2 * kBlock, 7);
  analyse(capture);
  EXPECT_EQ(frameCounts(), (Counts{19, 18, 18, 18}));
  const std::vector<double> first = history_->specgram3.values();
  LirvoxUtilities::clearHistoryInfo(*history_);
  EXPECT_EQ(frameCounts(), (Counts{19, 18, 18, 18}));
  LirvoxUtilities::freeHistoryInfo(*history_);
  EXPECT_EQ(frameCounts(), (Counts{0, 0, 0, 0}));
  EXPECT_TRUE(history_->firstBlock);
  EXPECT_FALSE(history_->hasTail);
  analyse({capture.begin(), capture.begin() + kBlock});
  EXPECT_EQ(frameCounts(), (Counts{9, 8, 8, 8}));
  analyse({capture.begin() + kBlock, capture.end()});
  EXPECT_EQ(history_->specgram3.values(), first);
}

}  // namespace
}  // namespace lirvox
