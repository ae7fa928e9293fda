// The application's folders, where a desktop user expects them.
#pragma once

#include <string>

#include "../Directories.h"

namespace lirvox::platform {

/// Folders named after the application below the XDG base folders; each can be moved
/// by an environment variable: `LIRVOX_CACHES_DIR`, `LIRVOX_CONFIG_DIR`,
/// `LIRVOX_RESOURCES_DIR`, read at construction. Resources are in "share/APP" beside the
/// folder of the running program.
class XdgDirectories : public FixedDirectories {
 public:
  explicit XdgDirectories(const std::string& applicationName);
};

}  // namespace lirvox::platform
