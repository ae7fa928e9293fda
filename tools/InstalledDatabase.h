// Any database file in the place where the recognizer expects its own.
#pragma once

#include <memory>
#include <string>

#include "lib/platform/Directories.h"

namespace lirvox::tools {

/// Folders of this run of the program: a private caches directory in which the
/// recognizer finds the database at `path` as its installed one, through a link. The
/// directory is removed with the object, whoever still holds `directories`: parts of the
/// recognizer live until the process ends.
class InstalledDatabase {
 public:
  /// Throws `CatalogError` when no temporary folder can be made.
  explicit InstalledDatabase(const std::string& path);
  ~InstalledDatabase();

  InstalledDatabase(const InstalledDatabase&) = delete;
  InstalledDatabase& operator=(const InstalledDatabase&) = delete;

  /// What the platform is to be given: all of them this folder.
  std::shared_ptr<platform::Directories> directories() const;

  /// Where captures are saved, and where a recording to replay is expected.
  std::string recordingPath() const { return folder_ + "/soundLirvox.dat"; }

 private:
  std::string folder_;
};

}  // namespace lirvox::tools
