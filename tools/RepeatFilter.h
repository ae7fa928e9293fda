// Tells a track that goes on from one that is news.
#pragma once

#include <chrono>
#include <cstdint>

namespace lirvox::tools {

/// Follows the recognitions of one long listening.
class RepeatFilter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// How far a position may be from where the track must have got to, in seconds.
  static constexpr double tolerance = 2.0;

  /// Whether a track that is at `positionInSeconds` at the time `now` is another one than
  /// the last, or the same at a place that playing on does not explain.
  bool isNews(std::int32_t trackId, double positionInSeconds, Time now);

 private:
  std::int32_t trackId_ = 0;  // of no track
  double position_ = 0;
  Time time_;
};

}  // namespace lirvox::tools
