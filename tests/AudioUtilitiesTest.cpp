// Buffers, formats and failed statuses of the capture path, and its converter.
#include <algorithm>
#include <array>
#include <limits>

#include <gtest/gtest.h>

#include "lib/audio/LirvoxAudioFloatConverter.h"
#include "lib/audio/LirvoxAudioUtilities.h"
#include "lib/platform/Platform.h"

namespace lirvox {
namespace {

using platform::AudioStatus;

TEST(AudioUtilitiesDeathTest, ReportsAFailedStatusAndEndsTheProcessButNotForSuccess) {
  const auto check = [](AudioStatus status) {
    LirvoxAudioUtilities::checkResult(0, "Succeeded");
    LirvoxAudioUtilities::checkResult(status, "Tried (100 %s)");
  };
  for (const auto& [status, code] : {std::pair{0x666D743F, "'fmt\\?'"},
                                     {0x20207E7E, "'  ~~'"},
                                     {-50, "-50"},
                                     {0x666D7400, "1718449152"},
                                     {std::numeric_limits<AudioStatus>::min(), "-2147483648"}}) {
    EXPECT_EXIT(check(status), testing::ExitedWithCode(255),
                std::string("^Error: Tried \\(100 %s\\) \\(") + code + "\\)\n$");
  }
}

TEST(AudioUtilitiesTest, AllocatesOneBufferForAllChannelsOrOneForEach) {
  for (const bool interleaved : {true, false}) {
    const auto list = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(512, 2, interleaved);
    EXPECT_EQ(list->buffers.size(), interleaved ? 1U : 2U);
    for (const platform::AudioBuffer& buffer : list->buffers) {
      EXPECT_EQ(buffer.numberChannels, interleaved ? 2U : 1U);
      EXPECT_EQ(buffer.dataByteSize, interleaved ? 4096U : 2048U);
      const auto* const samples = static_cast<const char*>(buffer.data);
      EXPECT_EQ(std::count(samples, samples + buffer.dataByteSize, 0), buffer.dataByteSize);
    }
  }
}

TEST(AudioUtilitiesTest, TheRecognizersFormatIgnoresWhatItIsAskedFor) {
  EXPECT_EQ(LirvoxAudioUtilities::floatFormatWithNumberOfChannels(2, 48000),
            LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 11025));
}

// A converter that cannot convert, and knows its packet size only if it is not 0.
class PacketConverter : public platform::AudioConverter {
 public:
  explicit PacketConverter(std::uint32_t bytes) : bytes_(bytes) {}
  AudioStatus fillComplexBuffer(InputDataCallback, void*, std::uint32_t&,
                                platform::AudioBufferList&,
                                platform::AudioStreamPacketDescription*) override {
    return platform::fourCharacterCode("oops");
  }
  AudioStatus maximumOutputPacketSize(std::uint32_t& bytes) override {
    bytes = bytes_;
    return bytes_ == 0 ? -1 : 0;
  }

 private:
  const std::uint32_t bytes_;
};

TEST(FloatConverterDeathTest, SizesItsOutputByTheInputsPacketsAndEndsTheProcessOnFailure) {
  auto format = LirvoxAudioUtilities::floatFormatWithNumberOfChannels(1, 11025);
  const auto input = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(1, 1, true);
  for (const auto& [bytesPerPacket, xops, packets, descriptions] :
       {std::array{8U, 9U, 512U, 0U}, {0U, 0U, 2U, 2U}, {0U, 5000U, 1U, 1U}}) {
    platform::Platform installed = platform::systemPlatform();
    installed.makeAudioConverter = [bytes = xops](const auto&, const auto&, AudioStatus&) {
      return std::make_unique<PacketConverter>(bytes);
    };
    platform::install(std::move(installed));
    format.bytesPerPacket = bytesPerPacket;
    LirvoxAudioFloatConverter converter(format);
    EXPECT_EQ(converter.info().packetsPerBuffer, packets);
    EXPECT_EQ(converter.info().packetDescriptions.size(), descriptions);
    EXPECT_EXIT(converter.convertDataFromAudioBufferList(*input, 1, nullptr),
                testing::ExitedWithCode(255),
                "^Error: Failed to fill complex buffer in float converter \\('oops'\\)\n$");
  }
  platform::install(platform::systemPlatform());
  EXPECT_EXIT(LirvoxAudioFloatConverter{{}}, testing::ExitedWithCode(255),
              "^Error: Failed to create new audio converter \\('fmt\\?'\\)\n$");
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

}  // namespace
}  // namespace lirvox
