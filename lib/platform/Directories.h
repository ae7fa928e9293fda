// The folders that the operating system gives to an application.
#pragma once

#include <string>
#include <utility>

#include "../LirvoxExport.h"

namespace lirvox::platform {

/// Absolute paths without a trailing slash. Callable from any thread; an answer
/// stays the same for the life of the process. The folders need not exist.
class LIRVOX_EXPORT Directories {
 public:
  virtual ~Directories() = default;

  /// Files that survive restarts but can be fetched again. It must be the
  /// application's own folder: an update removes a folder "home" in it, and refuses the root
  /// of the file system.
  virtual std::string cachesDirectory() const = 0;

  /// Small files that hold the application's settings.
  virtual std::string configurationDirectory() const = 0;

  /// Files that come with the application and never change.
  virtual std::string resourcesDirectory() const = 0;
};

/// Three folders that are known.
class LIRVOX_EXPORT FixedDirectories : public Directories {
 public:
  /// As the operations ask for them.
  FixedDirectories(std::string caches, std::string configuration, std::string resources)
      : caches_(std::move(caches)),
        configuration_(std::move(configuration)),
        resources_(std::move(resources)) {}

  std::string cachesDirectory() const override { return caches_; }
  std::string configurationDirectory() const override { return configuration_; }
  std::string resourcesDirectory() const override { return resources_; }

 private:
  const std::string caches_;
  const std::string configuration_;
  const std::string resources_;
};

}  // namespace lirvox::platform
