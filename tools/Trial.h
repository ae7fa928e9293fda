// Recognitions whose right answer is known.
#pragma once

#include <cstdint>
#include <vector>

#include "lib/Hits.h"
#include "lib/Landmark.h"

namespace lirvox::tools {

/// How many answers were of which kind.
struct Rate {
  int trials = 0;
  int right = 0;
  int rightPlace = 0;      ///< of those; music that repeats itself has more than one
  int wrong = 0;           ///< another track, though the right one was there
  int absentAnswered = 0;  ///< any track, with the rows of the right one left out
};

/// Where an excerpt is from.
struct Truth {
  std::int32_t trackId;
  double startInSeconds;
};

/// The hashes of samples, in the order in which a recognition has them.
std::vector<QueryHash> hashesOf(const std::vector<std::int32_t>& samples);

/// Votes on the hits of an excerpt, with and without those of its own track, and counts what
/// comes of it.
void judge(const PassHits& pass, const Truth& truth, std::int32_t minimum, Rate& rate);

}  // namespace lirvox::tools
