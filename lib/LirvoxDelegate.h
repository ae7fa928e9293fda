// Who hears the outcome of a recognition.
#pragma once

#include <cstdint>

#include "LirvoxExport.h"

namespace lirvox {

/// The host's delegate. Override what is of interest; the rest does nothing. Both
/// operations are called on the platform's main queue, at most one per capture, and
/// neither for a capture that `Lirvox::stopRecognize` has cancelled. They may call any
/// operation of `Lirvox`, and should not take long: the next outcome waits for them. An
/// exception that leaves them is logged and dropped, and the outcome counts as told.
class LIRVOX_EXPORT LirvoxDelegate {
 public:
  virtual ~LirvoxDelegate() = default;

  /// A track was found. `absoluteTimeOffset` is the position in the track at the
  /// start of the capture, `relativeTimeOffset` the one at the moment of the call,
  /// both in seconds.
  virtual void didRecognize(std::int32_t trackId, float absoluteTimeOffset,
                            float relativeTimeOffset);

  /// No track was found.
  virtual void didNotRecognize();
};

}  // namespace lirvox
