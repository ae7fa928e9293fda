// Music that tests make themselves.
#include "tests/support/Tune.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>

namespace lirvox::test {
namespace {

constexpr std::uint32_t kRate = 11025;

void addNote(std::vector<double>& mix, std::size_t start, std::size_t length, double frequency) {
  const std::size_t end = std::min(mix.size(), start + length);
  for (std::size_t i = start; i < end; ++i) {
    const double t = static_cast<double>(i - start) / kRate;
    for (int harmonic = 1; harmonic <= 4; ++harmonic) {
      mix[i] += std::exp(-4.0 * t) / harmonic *
                std::sin(2.0 * 3.141592653589793 * frequency * harmonic * t);
    }
  }
}

template <typename Integer>
void put(std::ofstream& file, Integer value) {
  for (std::size_t byte = 0; byte < sizeof value; ++byte) {
    file.put(static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * byte)));
  }
}

}  // namespace

std::vector<std::int32_t> makeTune(unsigned seed, double seconds) {
  std::mt19937 random(seed);
  std::vector<double> mix(static_cast<std::size_t>(seconds * kRate));
  for (std::size_t start = 0; start < mix.size(); start += 600 + random() % 1800) {
    // Plain arithmetic on the generator's words: distributions differ between libraries.
    addNote(mix, start, kRate, 110.0 * std::exp2(static_cast<double>(random() % 48) / 12.0));
  }
  std::vector<std::int32_t> samples(mix.size());
  std::transform(mix.begin(), mix.end(), samples.begin(), [](double value) {
    return static_cast<std::int32_t>(std::clamp(value * 6000.0, -32768.0, 32767.0));
  });
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
