// From the store's answer to the delegate.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Landmark.h"
#include "LirvoxExport.h"
#include "LirvoxResult.h"
#include "LirvoxRowMap.h"

namespace lirvox {

/// The last steps of a pass: hits, vote, delivery.
class LIRVOX_EXPORT LirvoxPostDatabaseProcessing {
 public:
  LirvoxPostDatabaseProcessing() = delete;

  /// Forms hits from `rows` (null: none) and `hashes`, votes, and posts a block to
  /// the main queue that tells the delegate of the shared `Lirvox` the outcome.
  /// Blocks while it computes; returns before the delegate hears anything.
  static void processResult(const LirvoxRowMap* rows, const std::vector<QueryHash>& hashes);

  /// The block: tells the delegate of `result`, or that there is none. A track with
  /// id 0 cannot be told from no result.
  static void deliver(const std::optional<LirvoxResult>& result);
};

}  // namespace lirvox
