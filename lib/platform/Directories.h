// The folders that the operating system gives to an application.
#pragma once

#include <string>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Absolute paths without a trailing slash. Callable from any thread; an answer
/// stays the same for the life of the process. The folders need not exist.
class LIRVOX_EXPORT Directories {
 public:
  virtual ~Directories() = default;

  /// Files that survive restarts but can be fetched again. It must be the
  /// application's own folder: an update removes a folder "home" in it.
  virtual std::string cachesDirectory() const = 0;

  /// Small files that hold the application's settings.
  virtual std::string configurationDirectory() const = 0;

  /// Files that come with the application and never change.
  virtual std::string resourcesDirectory() const = 0;
};

}  // namespace lirvox::platform
