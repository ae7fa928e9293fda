// From the last delivery of a capture to the delegate: what a person waits for at the end.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ChipTune.h"
#include "bench/InstalledRecognizer.h"

namespace lirvox::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kCapture = 5 * 11025;
constexpr std::size_t kDelivery = 1024;
constexpr std::size_t kCaptureStart = 100 * 11025;  // within track 1

class Listener : public LirvoxDelegate {
 public:
  void didRecognize(std::int32_t, float, float) override { end_.set_value(Clock::now()); }
  void didNotRecognize() override { end_.set_value(Clock::now()); }
  Clock::time_point end() { return end_.get_future().get(); }

 private:
  std::promise<Clock::time_point> end_;
};

void deliver(Lirvox& lirvox, std::vector<std::int32_t>& words, std::size_t begin, std::size_t end) {
  for (std::size_t at = begin; at < end; at += kDelivery) {
    auto* samples = reinterpret_cast<float*>(words.data() + at);
    const auto count = static_cast<std::uint32_t>(std::min(kDelivery, end - at));
    lirvox.hasAudioReceived(*lirvox.microphone(), &samples, count, 1);
  }
}

void captureEnd(benchmark::State& state) {
  // Its microphone is silent: the benchmark delivers itself.
  static const std::shared_ptr<Lirvox> lirvox =
      installRecognizer(std::make_shared<const std::vector<std::int32_t>>());
  std::vector<std::int32_t> words = chipTune(1, kCaptureStart + kCapture);
  words.erase(words.begin(), words.begin() + kCaptureStart);
  for ([[maybe_unused]] auto _ : state) {
    const auto listener = std::make_shared<Listener>();
    lirvox->setDelegate(listener);
    lirvox->startRecognize();
    deliver(*lirvox, words, 0, kCapture - kDelivery);
    // By the time the last samples come, those before are analysed.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const Clock::time_point begin = Clock::now();
    deliver(*lirvox, words, kCapture - kDelivery, kCapture);
    state.SetIterationTime(std::chrono::duration<double>(listener->end() - begin).count());
  }
  lirvox->setDelegate(nullptr);
}
BENCHMARK(captureEnd)->Unit(benchmark::kMicrosecond)->UseManualTime();

}  // namespace
}  // namespace lirvox::bench
