// What is in a folder, and removing it.
#include "lib/platform/FolderTree.h"

#include <string_view>
#include <utility>

#include <fcntl.h>

namespace lirvox::platform {
namespace {

// An archive and the 4 nested in each other make 32 levels each. One descriptor for each.
constexpr int kDeepest = 200;

DIR* streamOf(FileDescriptor folder) {
  DIR* const stream = folder ? ::fdopendir(folder.get()) : nullptr;
  if (stream) folder.release();
  return stream;
}

void removeBelow(int parent, const char* name, int depth) {
  if (::unlinkat(parent, name, 0) == 0 || depth == kDeepest) return;
  FolderEntries entries(
      FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
  while (const char* const entry = entries.next()) removeBelow(entries.folder(), entry, depth + 1);
  ::unlinkat(parent, name, AT_REMOVEDIR);
}

}  // namespace

FolderEntries::FolderEntries(FileDescriptor folder) : stream_(streamOf(std::move(folder))) {}

FolderEntries::~FolderEntries() {
  if (stream_) ::closedir(stream_);
}

const char* FolderEntries::next() {
  while (const dirent* const entry = stream_ ? ::readdir(stream_) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return entry->d_name;
  }
  return nullptr;
}

void removeTree(const std::string& path) {
  removeBelow(AT_FDCWD, path.c_str(), 0);
}

}  // namespace lirvox::platform
