// Prints digests of what becomes of synthetic captures, from their spectrograms to the outcome of
// the vote: equal wherever they are computed, and however the deliveries are chopped.
#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/ChipTune.h"
#include "lib/Decision.h"
#include "lib/LirvoxAudioFFT.h"
#include "lib/LirvoxRecognize.h"
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

std::uint64_t digestOf(const std::vector<QueryHash>& hashes) {
  Digest digest;
  for (const auto& [time, hash] : hashes) {
    digest.add(static_cast<std::uint64_t>(time) << 32 | static_cast<std::uint64_t>(hash));
  }
  return digest.value();
}

struct NoWaker : platform::Waker {
  void wake() noexcept override {}
};

using Words = std::vector<std::int32_t>;
using Sizes = std::vector<std::size_t>;

// The history after a pass over `words`, delivered in pieces of `sizes` samples in turn; the pass
// lags behind by a delivery or two.
std::shared_ptr<HistoryInfo> analyse(const Words& words, const Sizes& sizes) {
  const auto capture = std::make_shared<Capture>();
  capture->progress = std::make_unique<NoWaker>();
  capture->limitReached = std::make_unique<NoWaker>();
  const std::shared_ptr<HistoryInfo> history = LirvoxUtilities::initHistoryInfo();
  ProcessingPass pass(capture, std::make_shared<LirvoxAudioFFT>(), history);
  std::size_t next = 0;
  for (std::size_t at = 0; at < words.size();) {
    const std::size_t size = std::min(sizes[next++ % sizes.size()], words.size() - at);
    capture->deliver(&words[at], size * 4, words.size() * 4);
    at += size;
    if (next % 3 == 0) pass.run();
  }
  capture->end();
  pass.run();
  return history;
}

std::vector<QueryHash> hashesOf(const Words& words, const Sizes& sizes) {
  return LirvoxRecognize::queryHashes(*analyse(words, sizes));
}

void printFingerprint(const Words& words, const std::vector<QueryHash>& hashes) {
  Digest filtered;
  const auto history = analyse(words, {kBlock});
  for (std::int32_t s = 0; s < 4; ++s) addFiltered(history->specgram(s), filtered);
  std::printf("  %zu hashes %016" PRIx64 ", filtered spectrograms %016" PRIx64 "\n", hashes.size(),
              digestOf(hashes), filtered.value());
  for (const Sizes& sizes : std::vector<Sizes>{
           {1}, {256}, {1024}, {2559, 2}, {2560, 0, 1}, {4096, 7}, {30000, 3}, {words.size()}}) {
    if (hashesOf(words, sizes) == hashes) continue;
    std::printf("  DIFFERS when chopped into %zu, ...\n", sizes.front());
  }
}

// Tracks of which one holds each tune, some copy others, and most were never heard.
LirvoxRowMap catalogue(const std::vector<Words>& tunes) {
  std::mt19937 random(11);
  std::vector<LirvoxDBRow> rows;
  const auto add = [&](std::int32_t track, std::int32_t time, std::int32_t hash) {
    rows.push_back({DecimalString(track), DecimalString(time), DecimalString(hash)});
  };
  std::int32_t track = 1;
  for (const Words& tune : tunes) {
    for (const auto& [time, hash] : hashesOf(tune, {kBlock})) {
      add(track, time + 500 * track, hash);
      if (track % 2 == 0 && random() % 4 != 0) add(track + 100, time + 70, hash);
    }
    ++track;
  }
  for (int i = 0; i < 300000; ++i) {
    const auto place = static_cast<std::int32_t>(random() % 10000);
    add(200 + i % 60, place, static_cast<std::int32_t>(random() % (1U << 20)));
  }
  return LirvoxRowMap(std::move(rows));
}

void printOutcome(const LirvoxRowMap& rows, const std::vector<QueryHash>& hashes) {
  const Decision decision(&rows, hashes, 30);
  Digest order;
  for (const std::size_t track : decision.order.tracks) order.add(track);
  Digest candidates;
  for (const auto& [id, count, time, value] : decision.votes.candidates) {
    for (const DecimalString& field : {id, count, time, value}) {
      candidates.add(static_cast<std::uint32_t>(field.intValue()));
    }
  }
  std::printf("  %zu hits, order %016" PRIx64 ", %zu candidates %016" PRIx64 "\n",
              decision.pass.hits.size(), order.value(), decision.votes.candidates.size(),
              candidates.value());
  if (!decision.result) return;
  const LirvoxResult& result = *decision.result;
  std::printf("  track %d with %d votes at frame %d, %a s\n", result.result_id.intValue(),
              result.result_count.intValue(), result.result_time.intValue(),
              static_cast<double>(secondsOf(result.result_time)));
}

Words noise() {
  std::mt19937 random(7);
  Words words(kSamples);
  for (auto& word : words) word = static_cast<std::int32_t>(random());
  return words;
}

Words scaled(Words words, std::int32_t factor, std::int32_t divisor) {
  for (auto& word : words) word = word * factor / divisor;
  return words;
}

Words mixed(Words words, const Words& others) {
  for (std::size_t i = 0; i < words.size(); ++i) words[i] += others[i];
  return words;
}

Words withoutEnd(Words words) {
  std::fill(words.begin() + kSamples / 2, words.end(), 0);
  return words;
}

void printAll() {
  std::vector<Words> tunes;
  for (std::uint32_t seed = 1; seed <= 8; ++seed) tunes.push_back(chipTune(seed, kSamples));
  const LirvoxRowMap rows = catalogue(tunes);
  const std::pair<const char*, Words> captures[] = {
      {"tune 1", tunes[0]},
      {"tune 2", tunes[1]},
      {"tune 3, begun late", {tunes[2].begin() + 20001, tunes[2].end()}},
      {"tune 4 over tune 5", mixed(tunes[3], scaled(tunes[4], 2, 3))},
      {"loud tune", scaled(tunes[5], 60000, 1)},
      {"faint tune", scaled(tunes[6], 1, 300)},
      {"half silent", withoutEnd(tunes[7])},
      {"unknown tune", chipTune(9, kSamples)},
      {"noise", noise()},
      {"silence", Words(kSamples)},
  };
  for (const auto& [name, words] : captures) {
    std::printf("%s\n", name);
    const std::vector<QueryHash> hashes = hashesOf(words, {kBlock});
    printFingerprint(words, hashes);
    printOutcome(rows, hashes);
  }
}

}  // namespace
}  // namespace lirvox::bench

int main() {
  lirvox::bench::printAll();
}
