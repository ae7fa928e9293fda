// A natural logarithm that has the same bits on every processor.
#include "lib/Logarithm.h"

#include <bit>
#include <cstdint>

#include "lib/Lanes.h"

namespace lirvox {
namespace {

using Bits = std::uint64_t __attribute__((vector_size(sizeof(Lanes))));

constexpr int kFractionBits = 52;
constexpr std::uint64_t kFraction = (std::uint64_t{1} << kFractionBits) - 1;
constexpr std::uint64_t kExponentBias = 1023;
constexpr std::uint64_t kRootOfHalf = 0x3fe6a09e667f3bcd;  // the bits of sqrt(1/2)
constexpr double kLogOf2 = 0x1.62e42fefa39efp-1;

// An integer below 2^52 laid into the fraction of 2^52 makes a double that is larger by 2^52.
constexpr std::uint64_t kTwoTo52Bits = (kExponentBias + kFractionBits) << kFractionBits;
constexpr double kTwoTo52 = 0x1p52;

// x = 2^k m with m in [sqrt(1/2), sqrt(2)), and log m = 2 atanh s with s = (m - 1) / (m + 1),
// |s| < 0.172, of which the series 2 (s + s^3 / 3 + ... + s^19 / 19) is all that counts.
Lanes logarithm(Lanes x) {
  const Bits bits = std::bit_cast<Bits>(x) - kRootOfHalf;
  const Bits exponent = (bits + (kExponentBias << kFractionBits)) >> kFractionBits;
  const Lanes k = std::bit_cast<Lanes>(exponent | kTwoTo52Bits) - (kTwoTo52 + kExponentBias);
  const Lanes m = std::bit_cast<Lanes>((bits & kFraction) + kRootOfHalf);
  const Lanes s = (m - 1.0) / (m + 1.0);
  const Lanes z = s * s;
  // Even and odd powers of z by themselves: two chains run side by side.
  const Lanes z2 = z * z;
  Lanes even = z2 * (2.0 / 19) + 2.0 / 15;
  Lanes odd = z2 * (2.0 / 17) + 2.0 / 13;
  even = even * z2 + 2.0 / 11;
  odd = odd * z2 + 2.0 / 9;
  even = even * z2 + 2.0 / 7;
  odd = odd * z2 + 2.0 / 5;
  even = even * z2 + 2.0 / 3;
  return k * kLogOf2 + (s * 2.0 + s * z * (even + z * odd));
}

}  // namespace

double takeLogarithms(double* values, std::size_t count, double floor) {
  const Lanes floors = {floor, floor};
  Lanes sum = {};
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Lanes result = logarithm(larger(floors, load<Lanes>(values + i)));
    store(result, values + i);
    sum += result;
  }
  if (i < count) {
    values[i] = logarithm(larger(floors, Lanes{values[i], floor}))[0];
    sum[0] += values[i];
  }
  return sum[0] + sum[1];
}

}  // namespace lirvox
