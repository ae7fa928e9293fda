// The system's converter between linear PCM formats, and the capture path's use of it.
#include <numbers>

#include "lib/audio/LirvoxAudioFloatConverter.h"
#include "lib/audio/LirvoxAudioUtilities.h"
#include "tests/support/PcmStream.h"

namespace lirvox::test {
namespace {

constexpr std::uint32_t integers = 4;
constexpr std::uint32_t floats = 1;
constexpr std::uint32_t apart = 32;
const auto recognizers = pcm(11025, 1, 32, integers | 8);

PcmStream sine(double rate, double frequency, double seconds) {
  PcmStream stream(pcm(rate, 1, 32, floats), static_cast<std::size_t>(rate * seconds));
  for (std::size_t i = 0; i < stream.frames(); ++i) {
    const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / rate;
    stream.samples<float>()[i] = static_cast<float>(0.5 * std::sin(phase));
  }
  return stream;
}

// Power of what differs from the ideal sine, against the sine's, away from the ends; in dB.
double errorOf(PcmStream& converted, double rate, double frequency, double amplitude) {
  double error = 0;
  const std::size_t edge = converted.frames() / 4;
  const std::size_t end = converted.frames() - edge;
  for (std::size_t i = edge; i < end; ++i) {
    const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / rate;
    const double value = converted.samples<std::int32_t>()[i] / 2147483648.0;
    error += std::pow(value - amplitude * std::sin(phase), 2);
  }
  return 10 * std::log10(error / static_cast<double>(end - edge) / 0.125);
}

TEST(AudioConverterTest, KeepsEverySampleThroughEveryLayout) {
  const auto first = pcm(11025, 2, 16, integers);
  PcmStream stream(first, 65536);
  for (int i = 0; i < 131072; ++i) stream.samples<std::int16_t>()[i] = static_cast<std::int16_t>(i);
  for (const auto& layout : {pcm(11025, 2, 16, integers | apart), pcm(11025, 2, 24, integers | 8),
                             pcm(11025, 2, 24, integers | apart, 4), pcm(11025, 2, 32, integers),
                             pcm(11025, 2, 32, floats | apart), pcm(11025, 2, 64, floats),
                             pcm(11025, 5, 32, integers | apart), first}) {
    PcmStream there = stream.convertedTo(first, layout);
    EXPECT_TRUE(there.convertedTo(layout, first) == stream) << layout.bitsPerChannel << " bits";
  }
}

TEST(AudioConverterTest, KeepsWhatIsOutOfRangeInRange) {
  const auto from = pcm(11025, 1, 64, floats);
  PcmStream stream(from, 6);
  const double values[] = {1.0, -1.5, 1e300, -INFINITY, NAN, -1.0};
  std::copy(std::begin(values), std::end(values), stream.samples<double>());
  PcmStream converted = stream.convertedTo(from, pcm(11025, 1, 16, integers));
  const std::int16_t expected[] = {32767, -32768, 32767, -32768, 0, -32768};
  EXPECT_TRUE(
      std::equal(std::begin(expected), std::end(expected), converted.samples<std::int16_t>()));
}

TEST(AudioConverterTest, MixesSeveralChannelsIntoOneAndWidensItWithoutAChangeOfValue) {
  const auto from = pcm(11025, 4, 16, integers | apart);
  PcmStream stream(from, 1);
  for (std::size_t i = 0; i < 4; ++i) stream.samples<std::int16_t>(i)[0] = i == 3 ? -4000 : 1000;
  PcmStream mixed = stream.convertedTo(from, recognizers);
  EXPECT_EQ(mixed.samples<std::int32_t>()[0], -250 * 65536);
  PcmStream copied = mixed.convertedTo(recognizers, pcm(11025, 2, 16, integers));
  EXPECT_EQ(copied.samples<std::int16_t>()[1], -250);
}

TEST(AudioConverterTest, ResamplesSinesInPlaceAndKeepsImagesOut) {
  for (const double rate :
       {8000.0, 12000.0, 16000.0, 22050.0, 44100.0, 48000.0, 96000.0, 192000.0}) {
    const auto from = pcm(rate, 1, 32, floats);
    for (const double part : {0.01, 0.2, 0.5, 0.7}) {
      const double frequency = part * std::min(rate, 11025.0) / 2;
      PcmStream converted = sine(rate, frequency, 1).convertedTo(from, recognizers);
      EXPECT_EQ(converted.frames(), 11025U);
      // Towards the band's edge the filter's ripple counts as an error.
      EXPECT_LT(errorOf(converted, 11025, frequency, 0.5), part < 0.6 ? -100 : -75)
          << rate << " Hz at " << part;
    }
    if (rate < 16000) continue;
    PcmStream silent = sine(rate, 6500, 1).convertedTo(from, recognizers);
    EXPECT_LT(errorOf(silent, 11025, 6500, 0), -100) << rate << " Hz, above the band";
  }
}

TEST(AudioConverterTest, AStreamInPiecesEqualsTheStreamInOnePiece) {
  std::mt19937 random(7);
  for (const auto& [rate, channels] : {std::pair{44100.0, 2U}, {48000.0, 1U}, {8000.0, 8U}}) {
    const auto from = pcm(rate, channels, 16, integers);
    PcmStream stream(from, 60000);
    for (std::size_t i = 0; i < 60000 * channels; ++i) {
      stream.samples<std::int16_t>()[i] = static_cast<std::int16_t>(random());
    }
    const PcmStream whole = stream.convertedTo(from, recognizers, [] { return 100000U; });
    stream.piece = [&] { return random() % 7 == 0 ? 1 : 1 + random() % 2000; };
    const PcmStream pieces = stream.convertedTo(from, recognizers, [&] { return random() % 1500; });
    EXPECT_NEAR(static_cast<double>(whole.frames()), 60000 * 11025 / rate, 1);
    EXPECT_TRUE(pieces == whole) << rate << " Hz";
  }
}

TEST(AudioConverterTest, RefusesWhatIsNotLinearPcm) {
  for (const auto& refused :
       {pcm(7999, 1, 16, integers), pcm(NAN, 1, 16, integers), pcm(11025, 9, 16, integers),
        pcm(11025, 1, 16, floats), pcm(11025, 1, 16, integers | 2), pcm(11025, 1, 16, floats, 8)}) {
    platform::AudioStatus status = 0;
    EXPECT_EQ(platform::systemPlatform().makeAudioConverter(refused, recognizers, status), nullptr);
    EXPECT_EQ(status, platform::audioFormatError);
  }
}

TEST(AudioUtilitiesDeathTest, ReportsAFailedStatusAndEndsTheProcessButNotForSuccess) {
  const auto check = [](platform::AudioStatus status) {
    LirvoxAudioUtilities::checkResult(0, "Succeeded");
    LirvoxAudioUtilities::checkResult(status, "Tried (100 %s)");
  };
  for (const auto& [status, code] :
       {std::pair{0x666D743F, "'fmt\\?'"},
        {0x20207E7E, "'  ~~'"},
        {-50, "-50"},
        {0x666D7400, "1718449152"},
        {std::numeric_limits<platform::AudioStatus>::min(), "-2147483648"}}) {
    EXPECT_EXIT(check(status), testing::ExitedWithCode(255),
                std::string("^Error: Tried \\(100 %s\\) \\(") + code + "\\)\n$");
  }
}

TEST(FloatConverterTest, TakesADeliveryWholeAndCutsWhatItsOutputCannotHold) {
  platform::install(platform::systemPlatform());
  for (const std::uint32_t bytes : {4U, 2U}) {
    auto format = LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 11025);
    format.bytesPerPacket = format.bytesPerFrame = bytes;
    format.bitsPerChannel = 8 * bytes;
    LirvoxAudioFloatConverter converter(format);
    const std::uint32_t capacity = 4096 / bytes;
    std::vector<std::int16_t> samples(3000 * bytes / 2);  // of the upper halves of words
    for (std::uint32_t i = 0; i < 3000; ++i)
      samples[(i + 1) * bytes / 2 - 1] = static_cast<std::int16_t>(i);
    platform::AudioBufferList input{{{1, 0, samples.data()}}};
    std::vector<std::int32_t> converted(3000, -1);
    float* buffers[] = {reinterpret_cast<float*>(converted.data())};
    converter.convertDataFromAudioBufferList(input, 0, buffers);
    EXPECT_EQ(converted[0], -1) << "no frames, nothing done";
    converter.convertDataFromAudioBufferList(input, 3000, buffers);
    for (std::uint32_t i = 0; i < 3000; ++i) {
      ASSERT_EQ(converted[i], i < capacity ? static_cast<std::int32_t>(i << 16) : -1) << i;
    }
  }
}

TEST(FloatConverterDeathTest, EndsTheProcessWhenThereIsNoConverter) {
  EXPECT_EXIT(LirvoxAudioFloatConverter{{}}, testing::ExitedWithCode(255),
              "^Error: Failed to create new audio converter \\('fmt\\?'\\)\n$");
}

}  // namespace
}  // namespace lirvox::test
