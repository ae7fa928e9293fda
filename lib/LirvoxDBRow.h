// One row of the fingerprint store.
#pragma once

#include "DecimalString.h"

namespace lirvox {

/// One landmark of one track.
struct LirvoxDBRow {
  /// The track (column `track_id`).
  DecimalString track_id;
  /// Frame of the landmark's anchor in the track (column `num1`).
  DecimalString time_in_track;
  /// The landmark's hash (column `num2`).
  DecimalString hash1;
};

}  // namespace lirvox
