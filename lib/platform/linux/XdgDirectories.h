// The application's folders, where a desktop user expects them.
#pragma once

#include <string>

#include "../Directories.h"

namespace lirvox::platform {

/// Folders named after the application below the XDG base folders; each can be moved
/// by an environment variable: `LIRVOX_CACHES_DIR`, `LIRVOX_CONFIG_DIR`,
/// `LIRVOX_RESOURCES_DIR`, read at construction. Resources are in "share/APP" beside the
/// folder of the running program.
class XdgDirectories : public Directories {
 public:
  explicit XdgDirectories(const std::string& applicationName);

  std::string cachesDirectory() const override { return caches_; }
  std::string configurationDirectory() const override { return configuration_; }
  std::string resourcesDirectory() const override { return resources_; }

 private:
  const std::string caches_;
  const std::string configuration_;
  const std::string resources_;
};

}  // namespace lirvox::platform
