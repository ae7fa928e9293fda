// What `lirvox index` made, saved from being replaced.
#include "tools/KeptCatalog.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include <sys/stat.h>

#include "catalog/CatalogFile.h"
#include "lib/platform/TemporaryFile.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

namespace fs = std::filesystem;

// Read as bytes: what lies at the path may be anybody's.
bool isCatalog(const std::string& path) {
  constexpr std::streamoff kApplicationIdInFile = 68;
  std::ifstream file(path, std::ios::binary);
  file.seekg(kApplicationIdInFile);
  std::uint32_t id = 0;
  for (int i = 0; i < 4; ++i) id = id << 8 | static_cast<std::uint32_t>(file.get() & 0xff);
  return file && id == catalog::kApplicationId;
}

// Tells a file from any that has its place later, and from itself after a change.
std::string stampOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  std::ostringstream text;
  text << status.st_ino << ' ' << status.st_size << ' ' << status.st_mtim.tv_sec << ' '
       << status.st_mtim.tv_nsec;
  return text.str();
}

// Notes the stamp of a catalogue that an archive has brought.
std::string noteOf(const std::string& path) {
  return path + ".installed";
}

bool isInstalled(const std::string& path) {
  std::ifstream note(noteOf(path));
  std::string stamp;
  return std::getline(note, stamp) && stamp == stampOf(path);
}

void noteInstalled(const std::string& path) {
  std::error_code ignored;
  fs::remove_all(noteOf(path), ignored);  // the archive may have brought one, or a folder
  if (!isCatalog(path)) return;
  if (const auto error = platform::writeWholeFile(noteOf(path), stampOf(path) + '\n')) {
    complain(noteOf(path) + ": " + error.message());
  }
}

std::string freeName(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  fs::path name = folder / "indexed.sqlite";
  for (int i = 2; fs::exists(name); ++i) {
    name = folder / ("indexed-" + std::to_string(i) + ".sqlite");
  }
  return name;
}

}  // namespace

KeptCatalog::KeptCatalog(const std::string& path) : path_(path), stamp_(stampOf(path)) {
  if (!isCatalog(path_) || isInstalled(path_)) return;
  // A journal would stay behind.
  if (fs::exists(path_ + "-journal")) catalog::expectWritableCatalog(path_);
  kept_ = freeName(path_);
  std::error_code error;
  fs::create_hard_link(path_, kept_, error);
  if (error) throw catalog::CatalogError(kept_ + ": " + error.message());
}

KeptCatalog::~KeptCatalog() {
  if (stampOf(path_) != stamp_) noteInstalled(path_);
  if (kept_.empty()) return;
  std::error_code ignored;
  if (fs::equivalent(path_, kept_, ignored)) {
    fs::remove(kept_, ignored);
  } else {
    complain("what lirvox index had made is now " + kept_);
  }
}

}  // namespace lirvox::tools
