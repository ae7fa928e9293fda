// Pairs of doubles on which every operation does the same to both.
#pragma once

#include <cstddef>

namespace lirvox {

/// Two doubles side by side: what every 64-bit processor adds or multiplies at once, a
/// language extension of GCC and Clang. Each lane gets the bits that a double would get.
using Lanes = double __attribute__((vector_size(16)));

inline constexpr std::size_t kLanes = 2;

// The compilers' own memcpy: GCC 12 does not make plain moves of the library's when that is
// fortified, which costs the transform a half more.

/// Reads a T at `p`, which need not be aligned for it.
template <typename T>
T load(const double* p) {
  T value;
  __builtin_memcpy(&value, p, sizeof value);
  return value;
}

template <typename T>
void store(const T& value, double* p) {
  __builtin_memcpy(p, &value, sizeof value);
}

/// The larger of each lane; b where one is no number.
inline Lanes larger(Lanes a, Lanes b) {
  return a > b ? a : b;
}

}  // namespace lirvox
