// The spectrogram of a whole track, of any length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "catalog/Spool.h"
#include "lib/LirvoxAudioFFT.h"

namespace lirvox::catalog {

/// Peaks can be picked only when the largest and the mean value of the whole spectrogram
/// are known. That of a short track is held meanwhile; of a long one, each frame is
/// computed again when it is needed.
class TrackSpectrogram {
 public:
  /// Holds up to `framesToHold` frames, 2 kB each. `checkpoint` is called before each few
  /// of them; what it throws ends the work.
  TrackSpectrogram(std::size_t framesToHold, std::function<void()> checkpoint)
      : framesToHold_(framesToHold), checkpoint_(std::move(checkpoint)) {}

  /// Goes through the frames that start at `offset` and every 256 samples from there.
  /// `samples` must outlive the use of the result.
  void analyse(const Spool<float>& samples, std::size_t offset);

  std::size_t frameCount() const { return frameCount_; }
  bool isSilent() const { return !(largest_ > 0.0); }
  /// The mean of all logarithms. Not of silence.
  double meanLogarithm() const { return mean_; }

  /// The logarithms of `count` frames from `first`, a multiple of `kFramesAtOnce`, to be
  /// asked for once: the caller may write to them. At most `kFramesAtOnce`; they hold
  /// until the next call.
  double* logarithms(std::size_t first, std::size_t count);

 private:
  bool isHeld() const { return frameCount_ <= framesToHold_; }
  double* place(std::size_t first);
  double* computeDensities(std::size_t first, std::size_t count);
  void makeRoom();

  const std::size_t framesToHold_;
  const std::function<void()> checkpoint_;
  LirvoxAudioFFT fft_;
  std::vector<float> window_;  // the samples of a few frames
  std::unique_ptr<double[]> values_;
  std::size_t framesOfRoom_ = 0;

  const Spool<float>* samples_ = nullptr;
  std::size_t offset_ = 0;
  std::size_t frameCount_ = 0;
  double largest_ = 0.0;
  double mean_ = 0.0;
};

}  // namespace lirvox::catalog
