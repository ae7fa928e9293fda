// The working record of the FFT engine.
#pragma once

#include <array>

#include "LirvoxAudioFFTSetup.h"

namespace lirvox {

/// The transform and its results, for frames of 512 samples.
struct LirvoxAudioFFTInfo {
  static constexpr int kLogSize = 9;
  static constexpr std::size_t kSize = std::size_t{1} << kLogSize;
  static constexpr std::size_t kHalf = kSize / 2;

  LirvoxAudioFFTSetup fftSetup;
  HalfSpectrum<double> half;
  HalfSpectrum<Lanes> halfOfPair;

  struct {
    std::array<double, kSize> realp{};
    std::array<double, kSize> imagp{};
  } spectrum;
};

}  // namespace lirvox
