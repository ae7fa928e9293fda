// What a recognition has come to.
#pragma once

#include <cstdint>

namespace lirvox::tools {

/// What the delegate was told.
struct Answer {
  bool recognized = false;
  std::int32_t trackId = 0;
  float positionInSeconds = 0.0F;     ///< in the track, at the start of the samples
  float positionNowInSeconds = 0.0F;  ///< in the track, when the answer came
};

}  // namespace lirvox::tools
