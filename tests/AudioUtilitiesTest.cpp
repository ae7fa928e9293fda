// Buffers, formats and failed statuses of the capture path, and its converter.
#include <numeric>

#include <gtest/gtest.h>

#include "lib/audio/LirvoxAudioFloatConverter.h"
#include "lib/audio/LirvoxAudioUtilities.h"
#include "tests/support/ScriptedAudio.h"

namespace lirvox {
namespace {

using platform::AudioStatus;

TEST(AudioUtilitiesDeathTest, ReportsAFailedStatusAndEndsTheProcessButNotForSuccess) {
  const auto check = [](AudioStatus status) {
    LirvoxAudioUtilities::checkResult(0, "Succeeded");
    LirvoxAudioUtilities::checkResult(status, "Tried (100 %s)");
  };
  struct Case {
    AudioStatus status;
    const char* code;
  };
  for (const Case& failed :
       {Case{0x666D743F, "'fmt\\?'"}, Case{0x20207E7E, "'  ~~'"}, Case{-50, "-50"}, Case{1, "1"},
        Case{0x666D7400, "1718449152"}, Case{0x7F6D743F, "2137879615"},
        Case{std::numeric_limits<AudioStatus>::min(), "-2147483648"}}) {
    EXPECT_EXIT(check(failed.status), testing::ExitedWithCode(255),
                std::string("^Error: Tried \\(100 %s\\) \\(") + failed.code + "\\)\n$");
  }
}

TEST(AudioUtilitiesTest, AllocatesOneBufferForAllChannelsOrOneForEach) {
  const auto interleaved = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(512, 2, true);
  ASSERT_EQ(interleaved->buffers.size(), 1U);
  EXPECT_EQ(interleaved->buffers[0].numberChannels, 2U);
  EXPECT_EQ(interleaved->buffers[0].dataByteSize, 4096U);
  const auto* const samples = static_cast<const std::int32_t*>(interleaved->buffers[0].data);
  EXPECT_EQ(std::accumulate(samples, samples + 1024, 0), 0);

  const auto separate = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(512, 2, false);
  ASSERT_EQ(separate->buffers.size(), 2U);
  for (const platform::AudioBuffer& buffer : separate->buffers) {
    EXPECT_EQ(buffer.numberChannels, 1U);
    EXPECT_EQ(buffer.dataByteSize, 2048U);
  }
}

TEST(AudioUtilitiesTest, FreesNothingHarmlessly) {
  LirvoxAudioUtilities::freeBufferList(nullptr);
  LirvoxAudioUtilities::freeFloatBuffers(nullptr, 3);
  float* none[] = {nullptr};
  LirvoxAudioUtilities::freeFloatBuffers(none, 1);
  LirvoxAudioUtilities::floatBuffersWithNumberOfFrames(16, 0);
  LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(0, 0, false);
}

TEST(AudioUtilitiesTest, TheRecognizersFormatIgnoresWhatItIsAskedFor) {
  const auto format = LirvoxAudioUtilities::floatFormatWithNumberOfChannels(2, 48000);
  EXPECT_EQ(format, LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 8000));
  EXPECT_EQ(format.sampleRate * format.channelsPerFrame, 11025.0);
  EXPECT_TRUE(LirvoxAudioUtilities::isInterleaved(format));
  EXPECT_FALSE(LirvoxAudioUtilities::isInterleaved(
      LirvoxAudioUtilities::stereoFloatNonInterleavedFormatWithSampleRate(44100)));
}

// A converter that fails or knows its packet size, as its maker says.
class PacketConverter : public platform::AudioConverter {
 public:
  PacketConverter(AudioStatus status, std::uint32_t bytes) : status_(status), bytes_(bytes) {}
  AudioStatus fillComplexBuffer(InputDataCallback, void*, std::uint32_t&,
                                platform::AudioBufferList&,
                                platform::AudioStreamPacketDescription*) override {
    return platform::fourCharacterCode("oops");
  }
  AudioStatus maximumOutputPacketSize(std::uint32_t& bytes) override {
    bytes = bytes_;
    return status_;
  }

 private:
  const AudioStatus status_;
  const std::uint32_t bytes_;
};

void installConverter(AudioStatus status, std::uint32_t bytes) {
  platform::Platform installed = platform::systemPlatform();
  installed.makeAudioConverter = [=](const auto&, const auto&, AudioStatus&) {
    return std::make_unique<PacketConverter>(status, bytes);
  };
  platform::install(std::move(installed));
}

TEST(FloatConverterTest, SizesItsOutputByTheInputsPackets) {
  struct Case {
    std::uint32_t bytesPerPacket;
    AudioStatus query;
    std::uint32_t xops, packetsPerBuffer;
    std::size_t descriptions;
  };
  for (const Case& sized : {Case{4, 0, 9, 1024, 0}, Case{8, 0, 9, 512, 0}, Case{0, -1, 9, 2, 2},
                            Case{0, 0, 1000, 4, 4}, Case{0, 0, 5000, 1, 1}}) {
    installConverter(sized.query, sized.xops);
    auto format = LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 11025);
    format.bytesPerPacket = sized.bytesPerPacket;
    const LirvoxAudioFloatConverter converter(format);
    EXPECT_EQ(converter.info().packetsPerBuffer, sized.packetsPerBuffer);
    EXPECT_EQ(converter.info().packetDescriptions.size(), sized.descriptions);
    EXPECT_EQ(converter.info().floatAudioBufferList->buffers[0].dataByteSize,
              4 * sized.packetsPerBuffer);
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

TEST(FloatConverterDeathTest, EndsTheProcessWhenItCannotConvert) {
  platform::install(platform::systemPlatform());
  EXPECT_EXIT(LirvoxAudioFloatConverter{{}}, testing::ExitedWithCode(255),
              "^Error: Failed to create new audio converter \\('fmt\\?'\\)\n$");
  installConverter(0, 4);
  LirvoxAudioFloatConverter converter(
      LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 11025));
  const auto input = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(1, 1, true);
  EXPECT_EXIT(converter.convertDataFromAudioBufferList(*input, 1, nullptr),
              testing::ExitedWithCode(255),
              "^Error: Failed to fill complex buffer in float converter \\('oops'\\)\n$");
}

}  // namespace
}  // namespace lirvox
