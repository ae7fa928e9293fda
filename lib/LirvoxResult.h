// One candidate of the vote.
#pragma once

#include "DecimalString.h"

namespace lirvox {

/// A track that may be the one that was heard.
struct LirvoxResult {
  /// The track.
  DecimalString result_id;
  /// The vote: hits in the window around the peak offset.
  DecimalString result_count;
  /// The peak offset: track frame at which the query starts.
  DecimalString result_time;
  /// All hits of the track in the pass.
  DecimalString result_value;
};

}  // namespace lirvox
