// The signal path's building blocks: history, windows, landmarks, hashes.
#include "lib/LirvoxUtilities.h"

#include <algorithm>
#include <cstdlib>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxSettings.h"
#include "lib/Trigonometry.h"

namespace lirvox {
namespace {

constexpr std::int32_t kMinDistanceInFrames = 2;
constexpr std::int32_t kEndDistanceInFrames = 63;
constexpr std::int32_t kEndDistanceInBins = 31;
constexpr int kTargetsPerAnchor = 3;

// Takes no memory once the tail has had its length.
void emptyTail(HistoryInfo& historyInfo) {
  historyInfo.tail.assign(static_cast<std::size_t>(LirvoxSettings::settingChunkSize()), 0.0F);
}

// Appends the landmarks of one anchor, whose targets lie in [target, end).
void pairAnchor(const Peak& anchor, const Peak* target, const Peak* end,
                std::vector<Landmark>& landmarks) {
  int targets = 0;
  for (; target != end && target->frame < anchor.frame + kEndDistanceInFrames; ++target) {
    if (std::abs(target->bin - anchor.bin) >= kEndDistanceInBins) continue;
    landmarks.push_back({anchor.frame, anchor.bin, target->bin, target->frame - anchor.frame});
    if (++targets == kTargetsPerAnchor) return;
  }
}

}  // namespace

std::unique_ptr<HistoryInfo> LirvoxUtilities::initHistoryInfo() {
  auto historyInfo = std::make_unique<HistoryInfo>();
  emptyTail(*historyInfo);
  return historyInfo;
}

void LirvoxUtilities::freeHistoryInfo(HistoryInfo& historyInfo) {
  for (std::int32_t s = 0; s < LirvoxSettings::settingSHIFTS(); ++s)
    historyInfo.specgram(s).clear();
  historyInfo.firstBlock = true;
  emptyTail(historyInfo);
  historyInfo.hasTail = false;
}

void LirvoxUtilities::clearHistoryInfo(HistoryInfo&) {}

void LirvoxUtilities::do_4_mini_specgrams(const float* samples, LirvoxAudioFFT& fft,
                                          HistoryInfo& historyInfo) {
  LirvoxMiniSpectogram::do_4_mini_specgrams(samples, fft, historyInfo);
}

std::vector<double> LirvoxUtilities::hanning(std::uint32_t n) {
  constexpr double kTwoPi = 6.283185307179586;
  std::vector<double> window(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    window[i] = 0.5 - 0.5 * cosine(kTwoPi * i / (n - 1));
  }
  return window;
}

std::vector<double> LirvoxUtilities::window_hanning(const std::vector<double>& x) {
  std::vector<double> windowed = hanning(static_cast<std::uint32_t>(x.size()));
  std::transform(x.begin(), x.end(), windowed.begin(), windowed.begin(), std::multiplies<>());
  return windowed;
}

std::vector<Landmark> LirvoxUtilities::peaks2landmarks(const Peak* peaks, std::int32_t rows_cnt) {
  std::vector<Landmark> landmarks;
  if (rows_cnt <= 0) return landmarks;
  const Peak* const end = peaks + rows_cnt;
  landmarks.reserve(static_cast<std::size_t>(rows_cnt) * kTargetsPerAnchor);
  const Peak* firstTarget = peaks;
  for (const Peak* anchor = peaks; anchor != end; ++anchor) {
    while (firstTarget != end && firstTarget->frame < anchor->frame + kMinDistanceInFrames) {
      ++firstTarget;
    }
    pairAnchor(*anchor, firstTarget, end, landmarks);
  }
  return landmarks;
}

std::vector<QueryHash> LirvoxUtilities::landmarks2hashes(const std::vector<Landmark>& landmarks) {
  std::vector<QueryHash> hashes;
  hashes.reserve(landmarks.size());
  for (const auto& [t1, f1, f2, dt] : landmarks) {
    hashes.push_back({t1, ((f1 & 255) << 12) | (((f2 - f1) & 63) << 6) | (dt & 63)});
  }
  return hashes;
}

}  // namespace lirvox
