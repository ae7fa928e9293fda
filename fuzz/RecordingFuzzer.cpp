// Any samples, in any pieces, from the capture to the vote.
#include <algorithm>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Support.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"
#include "lib/ProcessingPass.h"

namespace {

using Words = std::vector<std::int32_t>;

constexpr std::size_t kMostWords = 4 * 2560;

// The input as it is.
Words recordingOf(FuzzedDataProvider& input) {
  const auto bytes = input.ConsumeRemainingBytes<std::uint8_t>();
  Words words(bytes.size() / sizeof(std::int32_t));
  std::copy_n(bytes.data(), words.size() * sizeof words[0],
              reinterpret_cast<std::uint8_t*>(words.data()));
  return words;
}

// A few bytes of input make many samples: stretches of tone, step, noise and silence.
Words streamOf(FuzzedDataProvider& input) {
  Words words;
  std::uint32_t noise = 1;
  while (input.remaining_bytes() > 0 && words.size() < kMostWords) {
    const auto kind = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    const auto level = input.ConsumeIntegral<std::int32_t>();
    const auto period = input.ConsumeIntegralInRange<std::size_t>(1, 600);
    for (auto left = 16 * input.ConsumeIntegralInRange<std::size_t>(1, 255); left > 0; --left) {
      noise = noise * 1664525 + 1013904223;
      const bool isUpper = words.size() % period < period / 2;
      const std::int32_t choices[] = {level, isUpper ? level : ~level,
                                      static_cast<std::int32_t>(noise), 0};
      words.push_back(choices[kind]);
    }
  }
  return words;
}

// Nobody waits: the fuzzer runs the pass itself.
class NoWaker : public lirvox::platform::Waker {
 public:
  void wake() noexcept override {}
};

// The hashes of a capture that comes in pieces of the given sizes in bytes, again and again.
std::vector<lirvox::QueryHash> hashesOf(const Words& words,
                                        const std::vector<std::size_t>& pieces) {
  static const auto fft = std::make_shared<lirvox::LirvoxAudioFFT>();
  static const std::shared_ptr<lirvox::HistoryInfo> history =
      lirvox::LirvoxUtilities::initHistoryInfo();
  const auto capture = std::make_shared<lirvox::Capture>();
  capture->progress = std::make_unique<NoWaker>();
  capture->limitReached = std::make_unique<NoWaker>();
  lirvox::ProcessingPass pass(capture, fft, history);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(words.data());
  const std::size_t size = words.size() * sizeof words[0];
  std::size_t piece = 0;
  for (std::size_t begin = 0; begin < size; ++piece) {
    const std::size_t count = std::min(pieces[piece % pieces.size()], size - begin);
    capture->deliver(bytes + begin, count, size);
    if (count > 64) pass.run();
    begin += count;
  }
  capture->end();
  lirvox::fuzz::require(pass.run() == lirvox::PassState::captured, "the pass comes to its end");
  auto hashes = lirvox::LirvoxRecognize::queryHashes(*history);
  lirvox::LirvoxUtilities::freeHistoryInfo(*history);
  return hashes;
}

// A small database that holds part of what was heard, in several tracks.
lirvox::LirvoxRowMap rowsFor(const std::vector<lirvox::QueryHash>& hashes) {
  std::vector<lirvox::LirvoxDBRow> rows;
  for (std::size_t i = 0; i < std::min<std::size_t>(hashes.size(), 500); ++i) {
    const auto track = static_cast<std::int32_t>(i % 7);
    const std::int32_t time = track * 1000 + hashes[i].time % (track + 40);
    rows.push_back({lirvox::DecimalString(track), lirvox::DecimalString(time),
                    lirvox::DecimalString(hashes[i].hash)});
  }
  return lirvox::LirvoxRowMap(std::move(rows));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lirvox::fuzz::require;
  FuzzedDataProvider input(data, size);
  std::vector<std::size_t> pieces;
  for (int i = 0; i < 3; ++i) pieces.push_back(input.ConsumeIntegralInRange<std::size_t>(1, 65535));
  const Words words = input.ConsumeBool() ? streamOf(input) : recordingOf(input);
  const auto hashes = hashesOf(words, pieces);
  require(hashes == hashesOf(words, {words.size() * 4 + 1}), "pieces make no difference");
  for (const lirvox::QueryHash& query : hashes) {
    require(query.hash >= 0 && query.hash < 1 << 20 && query.time >= 0, "hashes have 20 bits");
  }
  lirvox::fuzz::voteOn(rowsFor(hashes), hashes, 30);
  return 0;
}
