// Music for benchmarks, made of integers only: the same samples everywhere.
#include "bench/ChipTune.h"

#include <array>
#include <random>

#include "lib/ProcessingPass.h"

namespace lirvox::bench {
namespace {

constexpr std::uint32_t kLoudest = 8000;
constexpr std::uint32_t kLowestStep = 39000000;  // 100 Hz, as a part of 2^32 per sample

std::uint32_t drawBelow(std::uint32_t end, std::mt19937& random) {
  return static_cast<std::uint32_t>(random()) % end;
}

// A sawtooth that starts at full loudness and fades.
class Voice {
 public:
  void pluck(std::mt19937& random) {
    step_ = kLowestStep + drawBelow(16 * kLowestStep, random);
    loudness_ = kLoudest << 8;
    samplesLeft_ = 1500 + drawBelow(4000, random);
  }

  std::int32_t next(std::mt19937& random) {
    if (samplesLeft_-- == 0) pluck(random);
    phase_ += step_;
    loudness_ -= loudness_ >> 11;
    const auto wave = static_cast<std::int32_t>(phase_ >> 17) - (1 << 14);
    return wave * static_cast<std::int32_t>(loudness_ >> 8) / (1 << 14);
  }

 private:
  std::uint32_t phase_ = 0;
  std::uint32_t step_ = 0;
  std::uint32_t loudness_ = 0;
  std::uint32_t samplesLeft_ = 0;
};

}  // namespace

std::vector<std::int32_t> chipTune(std::uint32_t seed, std::size_t count) {
  std::mt19937 random(seed);
  std::array<Voice, 3> voices;
  std::vector<std::int32_t> words(count);
  for (std::int32_t& word : words) {
    word = static_cast<std::int32_t>(drawBelow(256, random)) - 128;
    for (Voice& voice : voices) word += voice.next(random);
  }
  return words;
}

std::vector<float> chipTuneSamples(std::uint32_t seed, std::size_t count) {
  const std::vector<std::int32_t> words = chipTune(seed, count);
  std::vector<float> samples(count);
  convertSamples(words.data(), count, samples.data());
  return samples;
}

}  // namespace lirvox::bench
