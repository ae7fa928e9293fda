// Writing zip archives.
#pragma once

#include <string>

#include "lib/platform/TemporaryFile.h"

namespace lirvox::catalog {

/// Writes one archive, which appears under its name when `finish` returns, whole, or
/// not at all. Throws `CatalogError`.
class ZipWriter {
 public:
  /// The folder of `path` must exist.
  explicit ZipWriter(const std::string& path);
  ~ZipWriter();

  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  /// Adds an empty folder; `name` ends in "/".
  void addFolder(const std::string& name);
  /// Adds the content of the file `source`. Neither entry carries permissions: who
  /// unpacks decides.
  void addFile(const std::string& name, const std::string& source);
  void finish();

 private:
  void open(const std::string& name, bool large);
  void check(int status);

  const std::string path_;
  platform::TemporaryFile file_;
  void* zip_ = nullptr;
};

}  // namespace lirvox::catalog
