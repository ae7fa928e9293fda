// User defaults in a JSON file.
#include "lib/platform/linux/JsonUserDefaults.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "lib/platform/Platform.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox::platform {
namespace {

using Json = nlohmann::json;

// Far above what is ever stored.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{16} << 20;

// Whether this may be what was stored: no arrays or objects within. Writing what is nested
// deeply takes more stack than there is.
bool isFlatObject(const Json& json) {
  return json.is_object() &&
         std::none_of(json.begin(), json.end(), [](const Json& v) { return v.is_structured(); });
}

// A missing file is an empty object; one that cannot have been stored is set aside. A file
// that cannot be read is left alone: that tells nothing of what it holds.
Json readObject(const std::string& path, std::error_code& error) {
  std::error_code ignored;
  const bool isTooLarge = std::filesystem::file_size(path, ignored) > kLargestFile && !ignored;
  if (!isTooLarge) {
    const std::string text = readWholeFile(path, error);
    if (error) {
      if (error == std::errc::no_such_file_or_directory) error.clear();
      return Json::object();
    }
    constexpr bool kThrows = false;
    Json object = Json::parse(text, nullptr, kThrows);
    if (isFlatObject(object)) return object;
  }
  const std::string aside = path + ".damaged";
  std::filesystem::rename(path, aside, ignored);
  log("User defaults are damaged and were moved to " + aside);
  return Json::object();
}

}  // namespace

std::optional<std::string> JsonUserDefaults::stringForKey(const std::string& key) const {
  const MutexLock lock(mutex_);
  if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) return unsaved->second;
  std::error_code ignored;
  const Json object = readObject(path_, ignored);
  const auto value = object.find(key);
  if (value == object.end() || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

void JsonUserDefaults::setString(const std::string& value, const std::string& key) {
  const MutexLock lock(mutex_);
  unsaved_[key] = value;
}

bool JsonUserDefaults::synchronize() {
  const MutexLock lock(mutex_);
  if (unsaved_.empty()) return true;
  std::error_code error;
  Json object = readObject(path_, error);
  for (const auto& [key, value] : unsaved_) object[key] = value;
  // Bytes that are no UTF-8 are replaced: a stamp that comes back changed only means
  // another download, a file that cannot be written would mean one every time.
  constexpr auto kBadBytes = Json::error_handler_t::replace;
  const std::string content = object.dump(2, ' ', false, kBadBytes) + '\n';
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
