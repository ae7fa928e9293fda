// User defaults in a JSON file.
#include "lib/platform/linux/JsonUserDefaults.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>

#include "lib/platform/JsonMembers.h"
#include "lib/platform/Platform.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox::platform {
namespace {

// Far above what is ever stored.
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

// Whether this may be what was stored: no arrays or objects within.
bool isFlat(const JsonMembers& members) {
  return std::none_of(members.begin(), members.end(), [](const auto& member) {
    return member.second.kind == JsonMember::Kind::structure;
  });
}

// A missing file is an empty object; one that cannot have been stored is set aside, as is a
// pipe or a folder. A file that cannot be read is left alone: that tells nothing of what it
// holds.
JsonMembers readObject(const std::string& path, std::error_code& error) {
  const std::string text = readWholeFile(path, error, kLargestFile);
  if (error && error != std::errc::file_too_large && error != std::errc::not_supported) {
    if (error == std::errc::no_such_file_or_directory) error.clear();
    return {};
  }
  if (!error) {
    if (auto members = parseJsonMembers(text); members && isFlat(*members)) return *members;
  }
  error.clear();
  std::error_code ignored;
  const std::string aside = path + ".damaged";
  std::filesystem::rename(path, aside, ignored);
  log("User defaults are damaged and were moved to " + aside);
  return {};
}

}  // namespace

std::optional<std::string> JsonUserDefaults::stringForKey(const std::string& key) const {
  const MutexLock lock(mutex_);
  if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) return unsaved->second;
  std::error_code ignored;
  return stringAt(readObject(path_, ignored), key);
}

void JsonUserDefaults::setString(const std::string& value, const std::string& key) {
  const MutexLock lock(mutex_);
  unsaved_[key] = value;
}

bool JsonUserDefaults::synchronize() {
  const MutexLock lock(mutex_);
  if (unsaved_.empty()) return true;
  std::error_code error;
  JsonMembers members = readObject(path_, error);
  for (const auto& [key, value] : unsaved_) members[key] = {JsonMember::Kind::string, value};
  // Bytes that are no UTF-8 are replaced: a stamp that comes back changed only means
  // another download, a file that cannot be written would mean one every time.
  const std::string content = jsonText(members);
  if (!error && content.size() > kLargestFile) error = make_error_code(std::errc::file_too_large);
  if (!error) {
    const std::filesystem::path folder = std::filesystem::path(path_).parent_path();
    std::filesystem::create_directories(folder, error);
    removeAbandonedFiles(folder);
    error = writeWholeFile(path_, content);
  }
  if (error) log("User defaults could not be stored in " + path_ + ": " + error.message());
  if (!error) unsaved_.clear();
  return !error;
}

}  // namespace lirvox::platform
