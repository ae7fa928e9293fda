// A folder for one test.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace lirvox::test {

/// A new, empty folder that goes with the object, and all that it holds.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// The folder, or what is called `below` in it.
  std::filesystem::path path(const std::string& below = "") const;

 private:
  std::filesystem::path path_;
};

/// All bytes of a file; none of one that cannot be read.
std::string readFile(const std::filesystem::path& path);
/// Writes a file, and the folders above it.
void writeFile(const std::filesystem::path& path, const std::string& content);

using Files = std::map<std::string, std::string>;
/// Everything below a folder: relative name to content; folders end in "/", links in "@".
Files contents(const std::filesystem::path& folder);

}  // namespace lirvox::test
