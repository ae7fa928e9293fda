// A folder for one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace lirvox::test {

/// A new, empty folder that goes with the object, and what it holds.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "lirvox-test-XXXXXX";
    if (!::mkdtemp(name.data())) ADD_FAILURE() << "no temporary folder";
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path path(const std::string& below = "") const { return path_ / below; }

 private:
  std::filesystem::path path_;
};

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

/// Everything below a folder: relative name to content; folders end in "/", links in "@".
inline std::map<std::string, std::string> contents(const std::filesystem::path& folder) {
  std::map<std::string, std::string> all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder);
    if (entry.is_symlink()) {
      all[name + "@"] = std::filesystem::read_symlink(entry.path());
    } else if (entry.is_directory()) {
      all[name + "/"] = "";
    } else {
      all[name] = readFile(entry.path());
    }
  }
  return all;
}

}  // namespace lirvox::test
