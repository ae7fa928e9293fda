// Folders below a destination, opened without following links.
#include "lib/ZipArchive/DestinationFolder.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace lirvox {
namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr mode_t kFolderMode = 0777;  // less the process's umask

}  // namespace

platform::FileDescriptor openDestination(const std::string& path, std::error_code& error) {
  std::filesystem::create_directories(path, error);
  platform::FileDescriptor folder(::open(path.c_str(), kOpenFolder));
  error = folder ? std::error_code() : std::error_code(errno, std::generic_category());
  return folder;
}

platform::FileDescriptor openBelow(int root, const EntryPath& path, std::error_code& error) {
  platform::FileDescriptor folder(::fcntl(root, F_DUPFD_CLOEXEC, 0));
  for (const std::string& component : path) {
    if (!folder) break;
    // It may be there already; if it cannot be made, opening it says why.
    ::mkdirat(folder.get(), component.c_str(), kFolderMode);
    folder = platform::FileDescriptor(
        ::openat(folder.get(), component.c_str(), kOpenFolder | O_NOFOLLOW));
  }
  error = folder ? std::error_code() : std::error_code(errno, std::generic_category());
  return folder;
}

}  // namespace lirvox
