// Any database file in the place where the recognizer expects its own.
#include "tools/InstalledDatabase.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <stdlib.h>

#include "catalog/CatalogError.h"

namespace lirvox::tools {

namespace fs = std::filesystem;

InstalledDatabase::InstalledDatabase(const std::string& path) {
  std::error_code error;
  std::string folder = (fs::temp_directory_path(error) / "lirvox-XXXXXX").string();
  if (error || !::mkdtemp(folder.data())) {
    throw catalog::CatalogError(folder + ": " + std::strerror(errno));
  }
  caches_ = folder;
  fs::create_directory(fs::path(caches_) / "lirvox", error);
  if (!error) {
    fs::create_symlink(fs::absolute(path), fs::path(caches_) / "lirvox" / "db1.sqlite", error);
  }
  if (error) throw catalog::CatalogError(caches_ + ": " + error.message());
}

InstalledDatabase::~InstalledDatabase() {
  std::error_code ignored;
  fs::remove_all(caches_, ignored);
}

}  // namespace lirvox::tools
