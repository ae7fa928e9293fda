// Music and noise that tests make themselves.
#include "tests/support/Tune.h"

#include "bench/ChipTune.h"
#include "tests/ZipBytes.h"

namespace lirvox::test {

constexpr std::uint32_t kRate = 11025;

std::vector<std::int32_t> makeTune(unsigned seed, double seconds) {
  return bench::chipTune(seed, static_cast<std::size_t>(seconds * kRate));
}

std::vector<float> noise(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<float> samples(count);
  for (float& sample : samples) sample = static_cast<float>(random() >> 16U) / 32768.0F - 1.0F;
  return samples;
}

void writeWav(const std::string& path, const std::vector<std::int32_t>& samples) {
  const auto bytes = static_cast<std::uint32_t>(samples.size() * 2);
  std::ofstream file(path, std::ios::binary);
  file << "RIFF" << number(bytes + 36, 4) << "WAVEfmt " << number(16, 4) << number(1, 2)
       << number(1, 2) << number(kRate, 4) << number(2 * kRate, 4) << number(2, 2) << number(16, 2)
       << "data" << number(bytes, 4);
  for (const std::int32_t sample : samples) file << number(static_cast<std::uint16_t>(sample), 2);
}

void writeRecording(const std::string& path, const std::vector<std::int32_t>& samples) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(samples.data()),
             static_cast<std::streamsize>(samples.size() * sizeof samples[0]));
}

}  // namespace lirvox::test
