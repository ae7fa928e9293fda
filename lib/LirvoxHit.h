// One match between query and store.
#pragma once

#include "DecimalString.h"

namespace lirvox {

/// A landmark of the query that also occurs in a track.
struct LirvoxHit {
  /// The track.
  DecimalString hit_id;
  /// Time in track minus time in query, in frames; once normalized, minus the
  /// smallest such offset of the pass.
  DecimalString hit_time;
  /// What both have.
  DecimalString hit_hash;
  /// Frame of the landmark's anchor in the query.
  DecimalString hit_time_in_query;
};

}  // namespace lirvox
