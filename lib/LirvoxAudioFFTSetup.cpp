// The Fourier transform of 512 real samples.

// Where a processor has fused multiply-adds, GCC makes them out of complex products even with
// contraction off, in this pass alone. Nothing is lost: what matters is in lanes already.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("no-tree-loop-vectorize")
#endif

#include "lib/LirvoxAudioFFTSetup.h"

#include "lib/Trigonometry.h"

namespace lirvox {
namespace {

template <typename Real>
Complex<Real> operator+(const Complex<Real>& a, const Complex<Real>& b) {
  return {a.re + b.re, a.im + b.im};
}

template <typename Real>
Complex<Real> operator-(const Complex<Real>& a, const Complex<Real>& b) {
  return {a.re - b.re, a.im - b.im};
}

template <typename Real>
Complex<Real> operator*(const Complex<Real>& a, const Complex<double>& root) {
  return {a.re * root.re - a.im * root.im, a.re * root.im + a.im * root.re};
}

template <typename Real>
Complex<Real> timesMinusI(const Complex<Real>& a) {
  return {a.im, -a.re};
}

// Element `index` of an array of complex numbers.
template <typename Real>
Complex<Real> number(const double* numbers, std::size_t index) {
  constexpr std::size_t kWidth = sizeof(Real) / sizeof(double);
  numbers += 2 * kWidth * index;
  return {load<Real>(numbers), load<Real>(numbers + kWidth)};
}

template <typename Real>
void setNumber(double* numbers, std::size_t index, const Complex<Real>& value) {
  constexpr std::size_t kWidth = sizeof(Real) / sizeof(double);
  numbers += 2 * kWidth * index;
  store(value.re, numbers);
  store(value.im, numbers + kWidth);
}

// The transform of four numbers that lie a quarter of the array apart.
template <typename Real>
struct Butterfly {
  Butterfly(const double* x, std::size_t i) {
    const auto x0 = number<Real>(x, i);
    const auto x1 = number<Real>(x, i + kApart);
    const auto x2 = number<Real>(x, i + 2 * kApart);
    const auto x3 = number<Real>(x, i + 3 * kApart);
    const auto turned = timesMinusI(x1 - x3);
    y0 = (x0 + x2) + (x1 + x3);
    y1 = (x0 - x2) + turned;
    y2 = (x0 + x2) - (x1 + x3);
    y3 = (x0 - x2) - turned;
  }

  static constexpr std::size_t kApart = 64;
  Complex<Real> y0, y1, y2, y3;
};

}  // namespace

LirvoxAudioFFTSetup::LirvoxAudioFFTSetup() {
  constexpr double kTurn = 6.283185307179586;
  constexpr std::size_t kQuarterTurn = kSize / 4;
  for (std::size_t k = 0; k < kQuarterTurn; ++k) {
    const double angle = kTurn / kSize * static_cast<double>(k);
    roots_[k] = {cosine(angle), -sine(angle)};
  }
  for (std::size_t k = kQuarterTurn; k < roots_.size(); ++k) {
    roots_[k] = timesMinusI(roots_[k - kQuarterTurn]);
  }
}

template <typename Real>
void LirvoxAudioFFTSetup::transform(const double* frame, HalfSpectrum<Real>& spectrum) const {
  // Neighbouring samples are the two parts of one number: half as many to transform.
  Numbers<Real> x;
  Numbers<Real> y;
  pass<Real>(frame, 1, x.data());
  pass<Real>(x.data(), 4, y.data());
  pass<Real>(y.data(), 16, x.data());
  pass<Real>(x.data(), 64, y.data());
  separate(y, spectrum);
}

// One pass of the self-sorting transform (Stockham, 1966) with radix 4; `stride` is 1, 4,
// 16 and 64 in turn.
template <typename Real>
void LirvoxAudioFFTSetup::pass(const double* x, std::size_t stride, double* y) const {
  // The roots of the first ones are 1.
  for (std::size_t i = 0; i < stride; ++i) {
    const Butterfly<Real> four(x, i);
    setNumber(y, i, four.y0);
    setNumber(y, i + stride, four.y1);
    setNumber(y, i + 2 * stride, four.y2);
    setNumber(y, i + 3 * stride, four.y3);
  }
  for (std::size_t begin = stride; begin < kQuarter; begin += stride) {
    const Complex<double> root1 = roots_[2 * begin];
    const Complex<double> root2 = roots_[4 * begin];
    const Complex<double> root3 = roots_[6 * begin];
    for (std::size_t i = begin; i < begin + stride; ++i) {
      const Butterfly<Real> four(x, i);
      const std::size_t out = i + 3 * begin;
      setNumber(y, out, four.y0);
      setNumber(y, out + stride, four.y1 * root1);
      setNumber(y, out + 2 * stride, four.y2 * root2);
      setNumber(y, out + 3 * stride, four.y3 * root3);
    }
  }
}

// From the transform of the paired samples to that of the samples: the even and the odd
// ones' spectra are its symmetric and antisymmetric parts.
template <typename Real>
void LirvoxAudioFFTSetup::separate(const Numbers<Real>& z, HalfSpectrum<Real>& spectrum) const {
  auto& [re, im] = spectrum;
  const auto first = number<Real>(z.data(), 0);
  re[0] = first.re + first.im;
  re[kHalf] = first.re - first.im;
  im[0] = im[kHalf] = Real{};
  for (std::size_t k = 1; k <= kHalf / 2; ++k) {
    const auto a = number<Real>(z.data(), k);
    const auto b = number<Real>(z.data(), kHalf - k);
    const Complex<Real> even{(a.re + b.re) * 0.5, (a.im - b.im) * 0.5};
    const Complex<Real> odd{(a.im + b.im) * 0.5, (b.re - a.re) * 0.5};
    const Complex<Real> turned = odd * roots_[k];
    re[k] = even.re + turned.re;
    im[k] = even.im + turned.im;
    re[kHalf - k] = even.re - turned.re;
    im[kHalf - k] = turned.im - even.im;
  }
}

template void LirvoxAudioFFTSetup::transform(const double*, HalfSpectrum<double>&) const;
template void LirvoxAudioFFTSetup::transform(const double*, HalfSpectrum<Lanes>&) const;

}  // namespace lirvox
