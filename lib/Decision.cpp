// From rows and query hashes to the outcome of a pass.
#include "lib/Decision.h"

namespace lirvox {
namespace {

// 256/11025, rounded to 14 decimal places as it always was.
constexpr double kSecondsPerFrame = 0.02321995464853;

}  // namespace

Decision::Decision(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes,
                   std::int32_t minimum)
    : pass(formHits(rows, hashes)),
      hits(pass),
      order(chooseTrackOrder(hits, minimum)),
      votes(vote(hits, order.tracks)),
      result(chooseResult(votes.candidates, minimum)) {}

float secondsOf(DecimalString frames) {
  return static_cast<float>(static_cast<double>(frames.floatValue()) * kSecondsPerFrame);
}

}  // namespace lirvox
