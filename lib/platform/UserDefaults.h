// Small values that an application keeps between runs.
#pragma once

#include <optional>
#include <string>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Strings by key. Callable from any thread.
class LIRVOX_EXPORT UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The value, as this process set it last or else as it is stored; none if there is
  /// none or it is no string.
  virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

  /// Sets a value; other processes see it after `synchronize`.
  virtual void setString(const std::string& value, const std::string& key) = 0;

  /// Stores what was set, on the disk. False if that failed; the values stay set.
  virtual bool synchronize() = 0;
};

}  // namespace lirvox::platform
