// Peaks, landmarks and hashes: the stages of a fingerprint.
#pragma once

#include <cstdint>

namespace lirvox {

// Times are frame indices (256 samples at 11025 Hz, about 23.2 ms) and frequencies
// bin indices (11025 / 512, about 21.5 Hz).

/// A local maximum of a spectrogram; `bin` in [0, 256).
struct Peak {
  std::int32_t frame;  ///< time
  std::int32_t bin;    ///< frequency
};

/// An anchor peak (t1, f1) and a later peak (t1 + dt, f2): dt in [2, 62] and
/// f2 - f1 in [-30, 30].
struct Landmark {
  std::int32_t t1;  ///< time of the anchor
  std::int32_t f1;  ///< frequency of the anchor
  std::int32_t f2;  ///< frequency of the later peak
  std::int32_t dt;  ///< how much later that is
};

/// A landmark folded into a 20-bit hash, and the frame of its anchor.
struct QueryHash {
  std::int32_t time;  ///< of the anchor
  std::int32_t hash;  ///< in [0, 2^20)
};

/// Field by field.
inline bool operator==(const Peak& a, const Peak& b) {
  return a.frame == b.frame && a.bin == b.bin;
}
inline bool operator==(const Landmark& a, const Landmark& b) {
  return a.t1 == b.t1 && a.f1 == b.f1 && a.f2 == b.f2 && a.dt == b.dt;
}
inline bool operator==(const QueryHash& a, const QueryHash& b) {
  return a.time == b.time && a.hash == b.hash;
}

}  // namespace lirvox
