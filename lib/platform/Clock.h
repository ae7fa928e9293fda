// The wall clock.
#pragma once

#include <chrono>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Tells the date and time. Callable from any thread; may jump when the user sets it.
class LIRVOX_EXPORT Clock {
 public:
  /// A moment.
  using Date = std::chrono::system_clock::time_point;

  virtual ~Clock() = default;
  /// The moment of the call.
  virtual Date now() const = 0;
};

}  // namespace lirvox::platform
