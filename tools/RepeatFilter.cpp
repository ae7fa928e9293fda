// Tells a track that goes on from one that is news.
#include "tools/RepeatFilter.h"

#include <cmath>
#include <utility>

namespace lirvox::tools {

bool RepeatFilter::isNews(std::int32_t trackId, double positionInSeconds, Time now) {
  const double passed = std::chrono::duration<double>(now - std::exchange(time_, now)).count();
  const double expected = std::exchange(position_, positionInSeconds) + passed;
  const bool same = std::exchange(trackId_, trackId) == trackId;
  return !same || std::abs(positionInSeconds - expected) > tolerance;
}

}  // namespace lirvox::tools
