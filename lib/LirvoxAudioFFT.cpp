// The FFT engine: one real frame in, its spectrum out.
#include "lib/LirvoxAudioFFT.h"

#include <cassert>
#include <utility>

#include "lib/LirvoxAudioFFTInfo.h"

namespace lirvox {

using Info = LirvoxAudioFFTInfo;

LirvoxAudioFFT::LirvoxAudioFFT() {
  setup();
}

LirvoxAudioFFT::~LirvoxAudioFFT() = default;

void LirvoxAudioFFT::setup() {
  info_ = std::make_unique<Info>();
}

LirvoxAudioFFTInfo* LirvoxAudioFFT::info() const {
  return info_.get();
}

void LirvoxAudioFFT::setInfo(std::unique_ptr<Info> info) {
  info_ = std::move(info);
}

DoubleSplitComplex LirvoxAudioFFT::fft(const double* frame, [[maybe_unused]] int logFFTsize) {
  assert(logFFTsize == Info::kLogSize);
  auto& [setup, packed, spectrum] = *info_;
  // Yields the plain transform, not twice its values, so nothing is left to scale.
  setup.transform_real(frame, packed.data());

  spectrum.realp[0] = packed[0].real();
  spectrum.imagp[0] = 0.0;
  spectrum.realp[Info::kHalf] = packed[0].imag();
  spectrum.imagp[Info::kHalf] = 0.0;
  for (std::size_t k = 1; k < Info::kHalf; ++k) {
    // The upper half mirrors the lower one without conjugation: meant, see the header.
    spectrum.realp[k] = spectrum.realp[Info::kSize - k] = packed[k].real();
    spectrum.imagp[k] = spectrum.imagp[Info::kSize - k] = packed[k].imag();
  }
  return {spectrum.realp.data(), spectrum.imagp.data()};
}

}  // namespace lirvox
