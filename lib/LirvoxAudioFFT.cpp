// The FFT engine: one real frame in, its spectrum out.
#include "lib/LirvoxAudioFFT.h"

#include <algorithm>
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
  info_->fftSetup.transform(frame, info_->half);
  return unpack();
}

DoubleSplitComplex LirvoxAudioFFT::fftOfPair(const double* frames) {
  auto& [re, im] = info_->halfOfPair;
  info_->fftSetup.transform(frames, info_->halfOfPair);
  return {reinterpret_cast<double*>(re.data()), reinterpret_cast<double*>(im.data())};
}

DoubleSplitComplex LirvoxAudioFFT::spectrumOfPair(std::size_t index) {
  const auto& [re, im] = info_->halfOfPair;
  const auto part = [index](const Lanes& pair) { return pair[index]; };
  std::transform(re.begin(), re.end(), info_->half.re.begin(), part);
  std::transform(im.begin(), im.end(), info_->half.im.begin(), part);
  return unpack();
}

DoubleSplitComplex LirvoxAudioFFT::unpack() {
  auto& [realp, imagp] = info_->spectrum;
  const auto& [re, im] = info_->half;
  std::copy(re.begin(), re.end(), realp.begin());
  std::copy(im.begin(), im.end(), imagp.begin());
  // The upper half mirrors the lower one without conjugation: meant, see the header.
  std::reverse_copy(re.begin() + 1, re.end() - 1, realp.begin() + Info::kHalf + 1);
  std::reverse_copy(im.begin() + 1, im.end() - 1, imagp.begin() + Info::kHalf + 1);
  return {realp.data(), imagp.data()};
}

}  // namespace lirvox
