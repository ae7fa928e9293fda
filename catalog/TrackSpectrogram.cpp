// The spectrogram of a whole track, of any length.
#include "catalog/TrackSpectrogram.h"

#include <algorithm>

#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxSettings.h"
#include "lib/PeakPicking.h"

namespace lirvox::catalog {
namespace {

std::size_t binCount() {
  return static_cast<std::size_t>(LirvoxSettings::settingNumFreqs());
}

std::size_t frameLength() {
  return static_cast<std::size_t>(LirvoxSettings::settingNFFT());
}

std::size_t hopLength() {
  return static_cast<std::size_t>(LirvoxSettings::settingNHop());
}

// Calls `work(first, count)` for `frames` frames, a few at a time.
template <typename Work>
void forFewFrames(std::size_t frames, Work work) {
  constexpr std::size_t kStep = kFramesAtOnce;
  for (std::size_t first = 0; first < frames; first += kStep) {
    work(first, std::min(kStep, frames - first));
  }
}

}  // namespace

void TrackSpectrogram::analyse(const Spool<float>& samples, std::size_t offset) {
  samples_ = &samples;
  offset_ = offset;
  const bool any = samples.size() >= offset + frameLength();
  frameCount_ = any ? (samples.size() - offset - frameLength()) / hopLength() + 1 : 0;
  makeRoom();
  largest_ = 0.0;
  forFewFrames(frameCount_,
               [&](std::size_t first, std::size_t count) { computeDensities(first, count); });
  if (isSilent()) return;
  double sum = 0.0;
  forFewFrames(frameCount_, [&](std::size_t first, std::size_t count) {
    double* const values = isHeld() ? place(first) : computeDensities(first, count);
    sum += takeLogarithmsOfFrames(values, count, largest_);
  });
  mean_ = sum / static_cast<double>(frameCount_ * binCount());
}

double* TrackSpectrogram::logarithms(std::size_t first, std::size_t count) {
  if (isHeld()) return place(first);
  double* const values = computeDensities(first, count);
  takeLogarithmsOfFrames(values, count, largest_);
  return values;
}

double* TrackSpectrogram::place(std::size_t first) {
  return values_.get() + (isHeld() ? first * binCount() : 0);
}

double* TrackSpectrogram::computeDensities(std::size_t first, std::size_t count) {
  checkpoint_();
  const std::size_t length = (count - 1) * hopLength() + frameLength();
  window_.resize(length);
  samples_->read(offset_ + first * hopLength(), length, window_.data());
  double* const values = place(first);
  DoubleSplitComplex ignored;
  computePowerFrames(window_.data(), count, fft_, values, ignored);
  largest_ = std::max(largest_, scaleToDensity(values, count));
  return values;
}

// The memory of one track serves the next ones: new memory costs time to clear.
void TrackSpectrogram::makeRoom() {
  constexpr std::size_t kLeast = kFramesAtOnce;
  const std::size_t wanted = isHeld() ? std::max(frameCount_, kLeast) : kLeast;
  if (wanted <= framesOfRoom_ && (isHeld() || framesOfRoom_ == kLeast)) return;
  values_.reset();
  values_ = std::make_unique_for_overwrite<double[]>(wanted * binCount());
  framesOfRoom_ = wanted;
}

}  // namespace lirvox::catalog
