// From samples to spectrograms, stage by stage.
#include <bit>
#include <complex>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxUtilities.h"
#include "lib/ProcessingPass.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

constexpr std::size_t kBlock = 2560;

TEST(ConvertSamples, RoundsWordsToSinglePrecisionAndScalesThem) {
  const std::pair<std::int32_t, std::uint32_t> cases[] = {
      {0, 0x00000000},           // 0
      {1, 0x38000000},           // 2^-15
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
    EXPECT_EQ(std::bit_cast<std::uint32_t>(sample), bits) << word;
  }
}

TEST(Hanning, HasHandWorkedValuesAtSmallLengths) {
  const std::vector<double> windowed = LirvoxUtilities::window_hanning({7.0, 8.0, -3.0, 4.0, 9.0});
  const std::vector<double> product = {0.0, 4.0, -3.0, 2.0, 0.0};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(windowed.at(i), product[i], 1e-15);
  EXPECT_TRUE(LirvoxUtilities::hanning(0).empty());
  EXPECT_TRUE(std::isnan(LirvoxUtilities::hanning(1).at(0)));
}

std::complex<double> bin(const DoubleSplitComplex& spectrum, std::size_t k) {
  return {spectrum.realp[k], spectrum.imagp[k]};
}

TEST(LirvoxAudioFFT, EqualsTheUnnormalisedTransformAndMirrorsItsLowerHalfWithoutConjugation) {
  const std::vector<float> noise = test::noise(512);
  const std::vector<double> frame(noise.begin(), noise.end());
  LirvoxAudioFFT engine;
  const auto spectrum = engine.fft(frame.data(), 9);
  for (std::size_t k = 0; k <= 256; ++k) {
    std::complex<double> expected;
    for (std::size_t j = 0; j < 512; ++j) {
      expected += frame[j] * std::polar(1.0, -2 * M_PI * static_cast<double>(j * k % 512) / 512.0);
    }
    EXPECT_NEAR(std::abs(bin(spectrum, k) - expected), 0.0, 1e-11) << "bin " << k;
    EXPECT_EQ(bin(spectrum, (512 - k) % 512), bin(spectrum, k)) << "bin " << k;
  }
  EXPECT_EQ(spectrum.imagp[0], 0.0);
  EXPECT_EQ(spectrum.imagp[256], 0.0);
  // Exact for constants, and nothing is left of the frame before.
  for (const double value : {0.25, 0.0}) {
    const auto constant = engine.fft(std::vector<double>(512, value).data(), 9);
    for (std::size_t k = 0; k < 512; ++k) {
      EXPECT_EQ(bin(constant, k), k == 0 ? 512 * value : 0.0) << "bin " << k;
    }
  }
}

using Counts = std::vector<std::int32_t>;

struct MiniSpectogram : testing::Test {
  // Hands over all whole blocks of `samples`.
  void analyse(const std::vector<float>& samples) {
    for (std::size_t i = 0; i + kBlock <= samples.size(); i += kBlock) {
      LirvoxUtilities::do_4_mini_specgrams(samples.data() + i, fft_, *history_);
    }
  }
  Counts frameCounts() const {
    return {history_->frameCount0(), history_->frameCount1(), history_->frameCount2(),
            history_->frameCount3()};
  }

  LirvoxAudioFFT fft_;
  const std::unique_ptr<HistoryInfo> history_ = LirvoxUtilities::initHistoryInfo();
};

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
        ASSERT_EQ(history_->specgram(s).frame(t)[b], std::norm(bin(spectrum, b)))
            << s << ' ' << t << ' ' << b;
      }
    }
  }
}

TEST_F(MiniSpectogram, StartsAfreshOnceTheHistoryIsFreed) {
  const std::vector<float> capture = test::noise(2 * kBlock, 7);
  analyse(capture);
  const std::vector<double> first = history_->specgram3.values();
  LirvoxUtilities::clearHistoryInfo(*history_);
  EXPECT_EQ(frameCounts(), (Counts{19, 18, 18, 18}));
  LirvoxUtilities::freeHistoryInfo(*history_);
  EXPECT_EQ(frameCounts(), (Counts{0, 0, 0, 0}));
  analyse({capture.begin(), capture.begin() + kBlock});
  EXPECT_EQ(frameCounts(), (Counts{9, 8, 8, 8}));
  analyse({capture.begin() + kBlock, capture.end()});
  EXPECT_EQ(history_->specgram3.values(), first);
}

}  // namespace
}  // namespace lirvox::test
