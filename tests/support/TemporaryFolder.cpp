// A folder for one test.
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace lirvox::test {

TemporaryFolder::TemporaryFolder() {
  std::string name = std::filesystem::temp_directory_path() / "lirvox-test-XXXXXX";
  if (!::mkdtemp(name.data())) throw std::system_error(errno, std::generic_category(), name);
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::path(const std::string& below) const {
  return below.empty() ? path_ : path_ / below;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::map<std::string, std::string> contents(const std::filesystem::path& folder) {
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
