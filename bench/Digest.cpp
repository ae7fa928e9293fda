// Prints digests of the fingerprints of synthetic captures: equal wherever they are computed.
#include <algorithm>
#include <array>
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "bench/ChipTune.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"
#include "lib/ProcessingPass.h"

namespace lirvox::bench {
namespace {

constexpr std::size_t kBlock = 2560;
constexpr std::size_t kSamples = 22 * kBlock;

// FNV-1a over 64-bit words.
class Digest {
 public:
  void add(std::uint64_t word) {
    for (int shift = 0; shift < 64; shift += 8) {
      value_ = (value_ ^ (word >> shift & 0xff)) * 0x100000001b3;
    }
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325;
};

// The bits of all values before the peaks are picked.
void addFiltered(Spectrogram specgram, Digest& digest) {
  scaleToDensity(specgram);
  takeLogarithm(specgram);
  highPass(specgram);
  for (const double value : specgram.values()) digest.add(std::bit_cast<std::uint64_t>(value));
}

std::size_t addHashes(Spectrogram& specgram, Digest& digest) {
  const std::vector<Peak> peaks = findPeaks(specgram);
  const auto hashes = LirvoxUtilities::landmarks2hashes(
      LirvoxUtilities::peaks2landmarks(peaks.data(), static_cast<std::int32_t>(peaks.size())));
  for (const auto& [time, hash] : hashes) {
    digest.add(static_cast<std::uint64_t>(time) << 32 | static_cast<std::uint64_t>(hash));
  }
  return hashes.size();
}

void print(const std::string& name, const std::vector<std::int32_t>& words) {
  LirvoxAudioFFT fft;
  const auto history = LirvoxUtilities::initHistoryInfo();
  for (std::size_t at = 0; at + kBlock <= words.size(); at += kBlock) {
    std::array<float, kBlock> samples;
    convertSamples(&words[at], kBlock, samples.data());
    LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data(), fft, *history);
  }
  Digest filtered;
  Digest hashes;
  std::size_t count = 0;
  for (std::int32_t s = 0; s < 4; ++s) {
    addFiltered(history->specgram(s), filtered);
    count += addHashes(history->specgram(s), hashes);
  }
  std::printf("%-12s %4zu hashes %016" PRIx64 "  filtered spectrograms %016" PRIx64 "\n",
              name.c_str(), count, hashes.value(), filtered.value());
}

std::vector<std::int32_t> noise() {
  std::mt19937 random(7);
  std::vector<std::int32_t> words(kSamples);
  for (auto& word : words) word = static_cast<std::int32_t>(random());
  return words;
}

std::vector<std::int32_t> scaled(std::vector<std::int32_t> words, std::int32_t factor,
                                 std::int32_t divisor) {
  for (auto& word : words) word = word * factor / divisor;
  return words;
}

void printAll() {
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    print("tune " + std::to_string(seed), chipTune(seed, kSamples));
  }
  print("loud tune", scaled(chipTune(6, kSamples), 60000, 1));
  print("faint tune", scaled(chipTune(7, kSamples), 1, 300));
  auto half = chipTune(8, kSamples);
  std::fill(half.begin() + kSamples / 2, half.end(), 0);
  print("half silent", half);
  print("noise", noise());
  print("silence", std::vector<std::int32_t>(kSamples));
}

}  // namespace
}  // namespace lirvox::bench

int main() {
  lirvox::bench::printAll();
}
