// The platform log: single lines for whoever looks after the application.
#pragma once

#include <string_view>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Receives the library's diagnostics. Callable from any thread but a real-time one.
class LIRVOX_EXPORT Log {
 public:
  virtual ~Log() = default;

  /// Writes one line; `line` carries no line end.
  virtual void write(std::string_view line) = 0;
};

}  // namespace lirvox::platform
