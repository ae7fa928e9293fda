// The analysis of one capture, from its first block to its lookup.
#include "lib/ProcessingPass.h"

#include <array>
#include <cstdint>
#include <utility>

#include "lib/LirvoxMiniSpectogram.h"

namespace lirvox {
namespace {

constexpr std::size_t kSamplesPerBlock = 2560;

// How far memory is kept ready ahead of the audio thread: 24 s.
constexpr std::size_t kHeadroomInBytes = std::size_t{1} << 20;

}  // namespace

void convertSamples(const std::int32_t* words, std::size_t count, float* samples) {
  constexpr double kScale = 1.0 / (1 << (2 * 8 - 1));
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = static_cast<float>(static_cast<double>(static_cast<float>(words[i])) * kScale);
  }
}

ProcessingPass::ProcessingPass(std::shared_ptr<Capture> capture,
                               std::shared_ptr<LirvoxAudioFFT> fft,
                               std::shared_ptr<HistoryInfo> historyInfo)
    : capture_(std::move(capture)), fft_(std::move(fft)), historyInfo_(std::move(historyInfo)) {}

PassState ProcessingPass::run() {
  for (;;) {
    // Asked before the blocks are counted: a capture that is over gets no more of them.
    const bool recording = capture_->recording.load();
    if (!capture_->hasBlock()) {
      if (recording) return PassState::waiting;
      return capture_->cancelled.load() ? PassState::cancelled : PassState::captured;
    }
    if (capture_->cancelled.load()) return PassState::cancelled;
    analyseBlock();
  }
}

void ProcessingPass::analyseBlock() {
  std::array<std::int32_t, kSamplesPerBlock> words;
  std::array<float, kSamplesPerBlock> samples;
  const std::size_t begin = capture_->consumed.load();
  capture_->buffer.copy(begin, sizeof words, words.data());
  capture_->buffer.reserve(begin + sizeof words + kHeadroomInBytes);
  convertSamples(words.data(), words.size(), samples.data());
  LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data(), *fft_, *historyInfo_);
  capture_->consumed.store(begin + sizeof words);
}

}  // namespace lirvox
