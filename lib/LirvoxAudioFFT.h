// The FFT engine: one real frame in, its spectrum out.
#pragma once

#include <cstddef>
#include <memory>

#include "LirvoxExport.h"

namespace lirvox {

/// A complex array as two arrays of equal length, one of real and one of imaginary parts.
struct DoubleSplitComplex {
  double* realp = nullptr;  ///< real parts
  double* imagp = nullptr;  ///< imaginary parts
};

struct LirvoxAudioFFTInfo;

/// Transforms frames of 512 real samples. An engine must not be used by two
/// threads at once: every call writes to the same arrays.
class LIRVOX_EXPORT LirvoxAudioFFT {
 public:
  /// Creates an engine that is ready for use. All memory is allocated here.
  LirvoxAudioFFT();
  ~LirvoxAudioFFT();

  LirvoxAudioFFT(const LirvoxAudioFFT&) = delete;
  LirvoxAudioFFT& operator=(const LirvoxAudioFFT&) = delete;

  /// The unnormalised spectrum X[k] = sum over j of x[j] * exp(-2 pi i j k / 512)
  /// of `frame`, which holds 512 samples. `logFFTsize` is the base-2 logarithm of
  /// the frame length and must be 9.
  ///
  /// Of the 512 elements of the result, [0, 256] are X[k]; element 512 - k repeats
  /// element k as it is, without the conjugation of a true spectrum. That is meant:
  /// only squared magnitudes of the lower half are ever used. The arrays belong to
  /// the engine and hold until the next call. Allocates nothing.
  DoubleSplitComplex fft(const double* frame, int logFFTsize);

  /// The spectra of two frames at once, for little more than the price of one: each has
  /// the bits that `fft` would give it. `frames` holds 512 pairs, the samples j of both
  /// frames side by side; so do the arrays of the result, with 257 pairs for X[0] to
  /// X[256]. They hold until the next call of this operation. Allocates nothing.
  DoubleSplitComplex fftOfPair(const double* frames);

  /// One spectrum of the last pair, of its first (`index` 0) or second (1) frame, as
  /// `fft` would have returned it.
  DoubleSplitComplex spectrumOfPair(std::size_t index);

  /// The engine's working record.
  LirvoxAudioFFTInfo* info() const;
  /// Replaces the working record by one that the engine owns from now on.
  void setInfo(std::unique_ptr<LirvoxAudioFFTInfo> info);

 private:
  void setup();
  DoubleSplitComplex unpack();

  std::unique_ptr<LirvoxAudioFFTInfo> info_;
};

}  // namespace lirvox
