// What `lirvox index` made, saved from being replaced.
#pragma once

#include <string>

namespace lirvox::tools {

/// While it lives, a catalogue at `path` has a second name. When an installation has
/// replaced it meanwhile, that name stays, and the user is told; hours of indexing are
/// not lost to an update. Other databases are left alone, and so is a catalogue that an
/// archive has brought and nobody has changed: services would fill the disk.
class KeptCatalog {
 public:
  /// Throws `CatalogError` when there is a catalogue that cannot be kept. What a killed
  /// process has left half done in it is undone.
  explicit KeptCatalog(const std::string& path);
  ~KeptCatalog();

  KeptCatalog(const KeptCatalog&) = delete;
  KeptCatalog& operator=(const KeptCatalog&) = delete;

 private:
  const std::string path_;
  const std::string stamp_;  // of the file at the beginning
  std::string kept_;         // empty: nothing to keep
};

}  // namespace lirvox::tools
