// Names of archive entries, which come from outside and are not trusted.
#include "lib/ZipArchive/EntryName.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <string_view>

namespace lirvox {
namespace {

// Far above any real archive, and shallow enough for whatever removes a tree.
constexpr std::size_t kLongestName = 1024;
constexpr std::size_t kDeepestName = 32;
constexpr std::size_t kLongestLogged = 200;

// What SQLite looks for beside a database, and believes: a journal names files to remove.
bool isJournalName(const std::string& component) {
  constexpr std::array<std::string_view, 3> kEndings = {".sqlite-journal", ".sqlite-wal",
                                                        ".sqlite-shm"};
  return std::any_of(kEndings.begin(), kEndings.end(), [&](std::string_view ending) {
    return std::string_view(component).ends_with(ending);
  });
}

bool isDatabaseName(const std::string& component) {
  return std::string_view(component).ends_with(".sqlite");
}

}  // namespace

std::optional<EntryPath> entryPath(const std::string& name) {
  if (name.empty() || name.size() > kLongestName || name.front() == '/') return std::nullopt;
  if (name.find('\\') != std::string::npos || name.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  EntryPath path;
  std::istringstream rest(name);
  for (std::string component; std::getline(rest, component, '/');) {
    if (component == "..") return std::nullopt;
    if (!component.empty() && component != ".") path.push_back(component);
  }
  if (path.size() > kDeepestName) return std::nullopt;
  if (std::any_of(path.begin(), path.end(), isJournalName)) return std::nullopt;
  // A folder in the place of a database would keep every later one out.
  const auto folders = path.end() - (name.back() == '/' || path.empty() ? 0 : 1);
  if (std::any_of(path.begin(), folders, isDatabaseName)) return std::nullopt;
  return path;
}

bool isArchiveName(const std::string& lastComponent) {
  const std::string extension = std::filesystem::path(lastComponent).extension();
  constexpr std::string_view kExtension = ".zip";
  // As ASCII has it: in the host's locale an I may be no capital of i.
  return std::equal(extension.begin(), extension.end(), kExtension.begin(), kExtension.end(),
                    [](char given, char lower) {
                      return given == lower || (lower != '.' && lower == given + ('a' - 'A'));
                    });
}

std::string printable(const std::string& name) {
  std::string text = name.substr(0, kLongestLogged);
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
  return name.size() > kLongestLogged ? text + "..." : text;
}

}  // namespace lirvox
