// Any database file in the place where the recognizer expects its own.
#include "tools/InstalledDatabase.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

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
  folder_ = folder;
  fs::create_directory(fs::path(folder_) / "lirvox", error);
  if (!error) {
    fs::create_symlink(fs::absolute(path), fs::path(folder_) / "lirvox" / "db1.sqlite", error);
  }
  if (error) throw catalog::CatalogError(folder_ + ": " + error.message());
}

InstalledDatabase::~InstalledDatabase() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

std::shared_ptr<platform::Directories> InstalledDatabase::directories() const {
  return std::make_shared<platform::FixedDirectories>(folder_, folder_, folder_);
}

}  // namespace lirvox::tools
