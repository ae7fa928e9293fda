// The Fourier transform of 512 real samples.
#pragma once

#include <array>
#include <cstddef>

#include "Lanes.h"

namespace lirvox {

/// A complex number of plain arithmetic. (The products of std::complex spend more time on
/// infinities than on multiplying.)
template <typename Real>
struct Complex {
  Real re;
  Real im;
};

/// The lower half of a spectrum and the Nyquist term.
template <typename Real>
struct HalfSpectrum {
  std::array<Real, 257> re;
  std::array<Real, 257> im;
};

/// The transform: its roots of unity and its working arrays. One thread at a time.
///
/// Written here because none of the permissively licensed double-precision transforms
/// in Debian serves: kissfft.hh, the fastest, takes 1.5 times as long with two frames
/// side by side and 3 times as long without (Eigen's is the same code; the compiled
/// KissFFT is packaged for single precision only), and all take their roots from the
/// mathematical library, whose last bits depend on the processor.
class LirvoxAudioFFTSetup {
 public:
  LirvoxAudioFFTSetup();

  /// The unnormalised spectrum of the 512 samples at `frame`. With Real = Lanes, of two
  /// frames at once, whose samples lie side by side; each gets the bits it would get
  /// alone. The imaginary parts of elements 0 and 256 are 0.
  template <typename Real>
  void transform(const double* frame, HalfSpectrum<Real>& spectrum) const;

 private:
  static constexpr std::size_t kSize = 512;
  static constexpr std::size_t kHalf = kSize / 2;
  static constexpr std::size_t kQuarter = kHalf / 4;

  template <typename Real>
  using Numbers = std::array<double, kHalf * sizeof(Complex<Real>) / sizeof(double)>;

  template <typename Real>
  void pass(const double* x, std::size_t stride, double* y) const;
  template <typename Real>
  void separate(const Numbers<Real>& z, HalfSpectrum<Real>& spectrum) const;

  // exp(-2 pi i k / 512); the last pass needs no more of them.
  std::array<Complex<double>, kSize * 3 / 4> roots_;
};

}  // namespace lirvox
