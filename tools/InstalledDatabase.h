// Any database file in the place where the recognizer expects its own.
#pragma once

#include <string>

#include "lib/platform/Directories.h"

namespace lirvox::tools {

/// Folders of this run of the program: a private caches directory in which the
/// recognizer finds the database at `path` as its installed one, through a link. The
/// directory is removed with the object.
class InstalledDatabase : public platform::Directories {
 public:
  /// Throws `CatalogError` when no temporary folder can be made.
  explicit InstalledDatabase(const std::string& path);
  ~InstalledDatabase() override;

  InstalledDatabase(const InstalledDatabase&) = delete;
  InstalledDatabase& operator=(const InstalledDatabase&) = delete;

  std::string cachesDirectory() const override { return caches_; }
  std::string configurationDirectory() const override { return caches_; }
  std::string resourcesDirectory() const override { return caches_; }

 private:
  std::string caches_;
};

}  // namespace lirvox::tools
