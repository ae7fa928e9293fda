// Music and noise that tests make themselves.
#include "tests/support/Tune.h"

#include <fstream>
#include <random>

#include "bench/ChipTune.h"

namespace lirvox::test {
namespace {

constexpr std::uint32_t kRate = 11025;

template <typename Integer>
void put(std::ofstream& file, Integer value) {
  for (std::size_t byte = 0; byte < sizeof value; ++byte) {
    file.put(static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * byte)));
  }
}

}  // namespace

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
  file << "RIFF";
  put(file, bytes + 36);
  file << "WAVEfmt ";
  put(file, std::uint32_t{16});
  put(file, std::uint16_t{1});
  put(file, std::uint16_t{1});
  put(file, kRate);
  put(file, 2 * kRate);
  put(file, std::uint16_t{2});
  put(file, std::uint16_t{16});
  file << "data";
  put(file, bytes);
  for (const std::int32_t sample : samples) put(file, static_cast<std::uint16_t>(sample));
}

void writeRecording(const std::string& path, const std::vector<std::int32_t>& samples) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(samples.data()),
             static_cast<std::streamsize>(samples.size() * sizeof samples[0]));
}

}  // namespace lirvox::test
