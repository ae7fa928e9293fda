// What is in a folder, and removing it: without memory from operator new, whose refusal the
// standard library's own functions do not survive.
#pragma once

#include <string>

#include <dirent.h>

#include "FileDescriptor.h"

namespace lirvox::platform {

/// The names in one folder, without "." and "..". One thread at a time.
class FolderEntries {
 public:
  /// Of an open folder; there are none if it is not open or cannot be read.
  explicit FolderEntries(FileDescriptor folder);
  ~FolderEntries();
  FolderEntries(const FolderEntries&) = delete;
  FolderEntries& operator=(const FolderEntries&) = delete;

  /// The folder, for functions such as `openat`; only while there are names.
  int folder() const { return ::dirfd(stream_); }
  /// The next name, which is good until the next call; null after the last.
  const char* next();

 private:
  DIR* const stream_;
};

/// Removes a file or a link, or a folder with all that is in it; what cannot be removed stays.
/// Follows no links below `path`, and goes no deeper than archives ever do.
void removeTree(const std::string& path);

}  // namespace lirvox::platform
