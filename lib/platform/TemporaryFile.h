// Files that appear under their name whole or not at all.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

#include "FileDescriptor.h"

namespace lirvox::platform {

/// A file under a random hidden name that is written first and named afterwards.
///
/// Whoever looks at the final name sees the previous file or the new one, complete
/// and with its attributes, also when the process is killed or the disk is full.
/// One thread at a time. Destroying the object removes a file that was not named.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  /// In a folder that is open already; `folder` is not closed by this object.
  static TemporaryFile createIn(int folder, std::error_code& error);
  static TemporaryFile createIn(const std::string& folder, std::error_code& error);
  ~TemporaryFile() { remove(); }

  TemporaryFile(TemporaryFile&& other) noexcept;
  TemporaryFile& operator=(TemporaryFile&& other) noexcept;

  explicit operator bool() const { return static_cast<bool>(file_); }
  int descriptor() const { return file_.get(); }
  /// The hidden name, within the folder.
  const std::string& name() const { return name_; }

  std::error_code append(std::string_view bytes);

  /// Gives the file its name in the same folder, replacing what has it. What was
  /// written is on the disk before the name is.
  std::error_code moveTo(const std::string& name);

 private:
  void create(std::error_code& error);
  bool tryCreate(std::error_code& error);
  void remove();

  FileDescriptor folder_;
  FileDescriptor file_;
  std::string name_;  // empty: nothing to remove
};

/// All bytes of a file; empty with an error: `file_too_large` beyond `limit` bytes,
/// `not_supported` for what is no regular file.
std::string readWholeFile(const std::string& path, std::error_code& error,
                          std::size_t limit = static_cast<std::size_t>(-1));

/// Writes a file that appears whole or not at all.
std::error_code writeWholeFile(const std::string& path, std::string_view content);

/// Copies the content of a file to `to`, where it appears whole or not at all; `to`
/// gets the permissions of `from`, which is a regular file. Its folder must exist.
std::error_code copyWholeFile(const std::string& from, const std::string& to);

/// Removes what killed processes have left unnamed in `folder`. Files that are
/// still being written stay.
void removeAbandonedFiles(const std::string& folder);

}  // namespace lirvox::platform
