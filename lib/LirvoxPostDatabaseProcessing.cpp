// From the store's answer to the delegate.
#include "lib/LirvoxPostDatabaseProcessing.h"

#include <chrono>

#include "lib/Hits.h"
#include "lib/HitsByTrack.h"
#include "lib/Lirvox.h"
#include "lib/TrackOrder.h"
#include "lib/Vote.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {
namespace {

// 256/11025, rounded to 14 decimal places as it always was.
constexpr double kSecondsPerFrame = 0.02321995464853;

// How long ago listening started; 0 when it never did, as for a replayed recording.
double secondsSinceStart(const Lirvox& lirvox) {
  const auto start = lirvox.timeStartListening();
  if (!start) return 0.0;
  return std::chrono::duration<double>(platform::current()->clock->now() - *start).count();
}

std::optional<LirvoxResult> voteOn(const PassHits& pass, std::int32_t minimum) {
  const HitsByTrack hits(pass);
  return chooseResult(vote(hits, chooseTrackOrder(hits, minimum)).candidates, minimum);
}

}  // namespace

void LirvoxPostDatabaseProcessing::processResult(const LirvoxRowMap* rows,
                                                 const std::vector<QueryHash>& hashes) {
  const PassHits hits = formHits(rows, hashes);
  if (!hits.complete) platform::log("The database has too many rows for what was heard");
  const auto result = voteOn(hits, Lirvox::sharedInstance()->minimumFindedCnt());
  platform::current()->mainQueue->async([result] { deliver(result); });
}

void LirvoxPostDatabaseProcessing::deliver(const std::optional<LirvoxResult>& result) {
  const auto lirvox = Lirvox::sharedInstance();
  const auto delegate = lirvox->delegate();
  if (!delegate) return;
  const std::int32_t id = result ? result->result_id.intValue() : 0;
  // What a delegate throws is logged and forgotten, whatever queue the host has installed.
  if (id == 0) {
    platform::runLogged([&] { delegate->didNotRecognize(); });
    return;
  }
  const auto absolute =
      static_cast<float>(static_cast<double>(result->result_time.floatValue()) * kSecondsPerFrame);
  const auto relative =
      static_cast<float>(static_cast<double>(absolute) + secondsSinceStart(*lirvox));
  platform::runLogged([&] { delegate->didRecognize(id, absolute, relative); });
}

}  // namespace lirvox
