// From the store's answer to the delegate.
#include "lib/LirvoxPostDatabaseProcessing.h"

#include <chrono>

#include "lib/Decision.h"
#include "lib/Lirvox.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {
namespace {

// How long ago listening started; 0 when it never did, as for a replayed recording.
double secondsSinceStart(const Lirvox& lirvox) {
  const auto start = lirvox.timeStartListening();
  if (!start) return 0.0;
  return std::chrono::duration<double>(platform::current()->clock->now() - *start).count();
}

}  // namespace

void LirvoxPostDatabaseProcessing::processResult(const LirvoxRowMap* rows,
                                                 const std::vector<QueryHash>& hashes) {
  const Decision decision(rows, hashes, Lirvox::sharedInstance()->minimumFindedCnt());
  if (!decision.pass.complete) platform::log("The database has too many rows for what was heard");
  platform::current()->mainQueue->async([result = decision.result] { deliver(result); });
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
  const float absolute = secondsOf(result->result_time);
  const auto relative =
      static_cast<float>(static_cast<double>(absolute) + secondsSinceStart(*lirvox));
  platform::runLogged([&] { delegate->didRecognize(id, absolute, relative); });
}

}  // namespace lirvox
