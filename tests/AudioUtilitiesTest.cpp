// Buffers, formats and failed statuses of the capture path, and its converter.
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
}  // namespace lirvox
