// The working record of the FFT engine.
#pragma once

#include <array>

#include <kissfft/kissfft.hh>

namespace lirvox {

/// The transform and its arrays, for frames of 512 samples.
struct LirvoxAudioFFTInfo {
  static constexpr int kLogSize = 9;
  static constexpr std::size_t kSize = std::size_t{1} << kLogSize;
  static constexpr std::size_t kHalf = kSize / 2;

  // Of Debian's double-precision FFTs with a permissive licence, KissFFT as a
  // template was the fastest (Eigen's is the same code behind an allocation; the
  // compiled library is packaged for single precision only). As a header it is
  // built with this project's floating-point options, which a library would not
  // be: that keeps the hashes equal on every processor.
  kissfft<double> fftSetup{kHalf, false};

  // Input as 256 pairs of neighbouring samples, then the packed spectrum: element
  // 0 holds the DC and the Nyquist term as its two parts, element k bin k.
  std::array<std::complex<double>, kHalf> packed{};

  struct {
    std::array<double, kSize> realp{};
    std::array<double, kSize> imagp{};
  } spectrum;
};

}  // namespace lirvox
