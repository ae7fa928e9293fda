// The pieces of a recognition pass, for who wants to see them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "lib/HistoryInfo.h"
#include "lib/Landmark.h"
#include "lib/LirvoxAudioFFT.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxResult.h"

namespace lirvox::tools {

/// Takes samples as a capture does, in whole blocks; the rest is left out.
class QueryPass {
 public:
  QueryPass();

  /// The next samples: 32-bit words, mono, 11025 Hz.
  void add(const std::int32_t* words, std::size_t count);

  /// The hashes of each shift. Asked once.
  std::array<std::vector<QueryHash>, 4> hashesByShift();

 private:
  LirvoxAudioFFT fft_;
  std::unique_ptr<HistoryInfo> historyInfo_;
  std::vector<std::int32_t> block_;
};

/// The candidate that a recognition of `hashes` settles on, with its votes.
std::optional<LirvoxResult> lookUp(LirvoxDatabase& database, const std::vector<QueryHash>& hashes,
                                   std::int32_t minimum);

}  // namespace lirvox::tools
