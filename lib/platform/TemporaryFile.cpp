// Files that appear under their name whole or not at all.
#include "lib/platform/TemporaryFile.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "lib/platform/FolderTree.h"

namespace lirvox::platform {
namespace {

constexpr std::string_view kPrefix = ".lirvox-";
constexpr std::size_t kCopyBytes = std::size_t{1} << 20;

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::string randomName() {
  std::random_device random;
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x%08x", random(), random());
  return std::string(kPrefix) + digits.data();
}

std::string parentOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path();
  return parent.empty() ? "." : parent;
}

std::string nameOf(const std::string& path) {
  return std::filesystem::path(path).filename();
}

// A pipe or a device, which may be waited for or read without end, is an error.
FileDescriptor openRegularFile(const std::string& path, struct stat& status,
                               std::error_code& error) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  error = file && ::fstat(file.get(), &status) == 0 ? std::error_code() : lastError();
  if (!error && !S_ISREG(status.st_mode)) error = make_error_code(std::errc::not_supported);
  return file;
}

// Hands a file's bytes to `use` until it is at its end, or one of them fails.
template <typename Use>
std::error_code forEachPart(const FileDescriptor& file, Use use) {
  std::vector<char> buffer(kCopyBytes);
  for (;;) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return lastError();
    if (count == 0) return {};
    if (const auto error = use(std::string_view(buffer.data(), static_cast<std::size_t>(count)))) {
      return error;
    }
  }
}

}  // namespace

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : folder_(std::move(other.folder_)),
      file_(std::move(other.file_)),
      name_(std::exchange(other.name_, {})) {}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
  if (this != &other) {
    remove();
    folder_ = std::move(other.folder_);
    file_ = std::move(other.file_);
    name_ = std::exchange(other.name_, {});
  }
  return *this;
}

TemporaryFile TemporaryFile::createIn(int folder, std::error_code& error) {
  TemporaryFile file;
  file.folder_ = FileDescriptor(::fcntl(folder, F_DUPFD_CLOEXEC, 0));
  file.create(error);
  return file;
}

TemporaryFile TemporaryFile::createIn(const std::string& folder, std::error_code& error) {
  TemporaryFile file;
  file.folder_ = FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  file.create(error);
  return file;
}

void TemporaryFile::create(std::error_code& error) {
  error = folder_ ? std::error_code() : lastError();
  constexpr int kAttempts = 16;
  for (int attempt = 0; !error && attempt < kAttempts; ++attempt) {
    if (tryCreate(error)) return;
  }
  if (!error) error = std::make_error_code(std::errc::file_exists);
}

// False without an error: the name was taken, or `removeAbandonedFiles` has seen
// the file before it was locked.
bool TemporaryFile::tryCreate(std::error_code& error) {
  std::string name = randomName();
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor file(::openat(folder_.get(), name.c_str(), kFlags, 0666));
  if (!file) {
    if (errno != EEXIST) error = lastError();
    return false;
  }
  if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  struct stat status {};
  if (::fstat(file.get(), &status) == 0 && status.st_nlink == 0) return false;
  file_ = std::move(file);
  name_ = std::move(name);
  return true;
}

void TemporaryFile::remove() {
  if (!name_.empty()) ::unlinkat(folder_.get(), name_.c_str(), 0);
  name_.clear();
}

std::error_code TemporaryFile::append(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return lastError();
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

std::error_code TemporaryFile::moveTo(const std::string& name) {
  if (::fsync(file_.get()) != 0) return lastError();
  if (::renameat(folder_.get(), name_.c_str(), folder_.get(), name.c_str()) != 0) {
    return lastError();
  }
  name_.clear();
  file_.reset();
  // The new name is visible already; not every file system can flush a folder.
  ::fsync(folder_.get());
  return {};
}

std::error_code writeWholeFile(const std::string& path, std::string_view content) {
  std::error_code error;
  TemporaryFile file = TemporaryFile::createIn(parentOf(path), error);
  if (!error) error = file.append(content);
  return error ? error : file.moveTo(nameOf(path));
}

std::string readWholeFile(const std::string& path, std::error_code& error, std::size_t limit) {
  std::string content;
  struct stat ignored {};
  const FileDescriptor file = openRegularFile(path, ignored, error);
  if (!error) {
    error = forEachPart(file, [&](std::string_view part) {
      if (part.size() > limit - content.size()) return make_error_code(std::errc::file_too_large);
      content.append(part);
      return std::error_code();
    });
  }
  return error ? std::string() : content;
}

std::error_code copyWholeFile(const std::string& from, const std::string& to) {
  std::error_code error;
  struct stat status {};
  const FileDescriptor source = openRegularFile(from, status, error);
  if (error) return error;
  TemporaryFile copy = TemporaryFile::createIn(parentOf(to), error);
  if (error) return error;
  error = forEachPart(source, [&](std::string_view part) { return copy.append(part); });
  if (error) return error;
  if (::fchmod(copy.descriptor(), status.st_mode & 0777) != 0) return lastError();
  return copy.moveTo(nameOf(to));
}

void removeAbandonedFiles(const std::string& folder) {
  FolderEntries entries(FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
  while (const char* const name = entries.next()) {
    if (!std::string_view(name).starts_with(kPrefix)) continue;
    const FileDescriptor file(
        ::openat(entries.folder(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
      ::unlinkat(entries.folder(), name, 0);
    }
  }
}

}  // namespace lirvox::platform
