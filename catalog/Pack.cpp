// Archives for local installation: what `lirvox pack` writes.
#include "catalog/Pack.h"

#include <filesystem>

#include "catalog/DeviceDatabase.h"
#include "catalog/ZipWriter.h"

namespace lirvox::catalog {

void pack(const std::string& database, const std::string& archive) {
  const std::filesystem::path folder = std::filesystem::absolute(archive).parent_path();
  platform::removeAbandonedFiles(folder);
  const DeviceDatabase device(database, folder);
  ZipWriter writer(archive);
  writer.addFile("db1.sqlite", device.path());
  writer.finish();
}

}  // namespace lirvox::catalog
