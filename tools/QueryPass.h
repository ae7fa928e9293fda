// The pieces of a recognition pass, for who wants to see them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "lib/HistoryInfo.h"
#include "lib/Landmark.h"
#include "lib/LirvoxAudioFFT.h"

namespace lirvox::tools {

/// Takes samples as a capture does, in whole blocks; the rest is left out.
class QueryPass {
 public:
  QueryPass();

  /// The next samples: 32-bit words, mono, 11025 Hz.
  void add(const std::int32_t* words, std::size_t count);

  /// The hashes of each shift. Asked once.
  std::array<std::vector<QueryHash>, 4> hashesByShift();

  /// The spectrogram of a shift in [0, 4): of powers, and once the hashes have been asked
  /// for, of power spectral densities.
  const Spectrogram& specgram(std::size_t shift) const {
    return historyInfo_->specgram(static_cast<std::int32_t>(shift));
  }

 private:
  LirvoxAudioFFT fft_;
  std::unique_ptr<HistoryInfo> historyInfo_;
  std::vector<std::int32_t> block_;
};

}  // namespace lirvox::tools
