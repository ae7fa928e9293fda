// A sequence that moves to a temporary file when it gets long.
#include "catalog/Spool.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "catalog/CatalogError.h"

namespace lirvox::catalog {
namespace {

// What waits in memory once there is a file.
constexpr std::size_t kWriteBuffer = std::size_t{1} << 17;

// Not /tmp, which may be in memory.
std::string folder() {
  const char* const wanted = std::getenv("TMPDIR");
  return wanted && *wanted ? wanted : "/var/tmp";
}

[[noreturn]] void fail(int error) {
  throw CatalogError("temporary file in " + folder() + ": " + std::strerror(error));
}

int openUnlinked() {
  std::string path = folder() + "/lirvox-XXXXXX";
  const int file = ::mkostemp(path.data(), O_CLOEXEC);
  if (file < 0) fail(errno);
  ::unlink(path.c_str());
  return file;
}

// Repeats `transfer(offset done so far)`, pread or pwrite, until `count` bytes are through.
template <typename Transfer>
void transferAll(std::size_t count, Transfer transfer) {
  for (std::size_t done = 0; done < count;) {
    const ssize_t now = transfer(done);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) fail(now < 0 ? errno : EIO);
    done += static_cast<std::size_t>(now);
  }
}

}  // namespace

ByteSpool::~ByteSpool() {
  if (file_ >= 0) ::close(file_);
}

void ByteSpool::append(const void* bytes, std::size_t count) {
  const std::size_t limit = file_ < 0 ? limit_ : kWriteBuffer;
  if (memory_.size() + count > limit) flush();
  const auto* const first = static_cast<const std::byte*>(bytes);
  memory_.insert(memory_.end(), first, first + count);
}

void ByteSpool::flush() {
  if (file_ < 0) file_ = openUnlinked();
  transferAll(memory_.size(), [&](std::size_t done) {
    return ::pwrite(file_, memory_.data() + done, memory_.size() - done,
                    static_cast<off_t>(inFile_ + done));
  });
  inFile_ += memory_.size();
  memory_.clear();
  if (memory_.capacity() > kWriteBuffer) memory_.shrink_to_fit();
}

void ByteSpool::read(std::size_t first, std::size_t count, void* bytes) const {
  auto* const out = static_cast<std::byte*>(bytes);
  const std::size_t fromFile = first < inFile_ ? std::min(count, inFile_ - first) : 0;
  transferAll(fromFile, [&](std::size_t done) {
    return ::pread(file_, out + done, fromFile - done, static_cast<off_t>(first + done));
  });
  if (fromFile == count) return;
  const std::size_t inMemory = first + fromFile - inFile_;
  std::memcpy(out + fromFile, memory_.data() + inMemory, count - fromFile);
}

void ByteSpool::clear() {
  if (file_ >= 0) ::close(file_);
  file_ = -1;
  inFile_ = 0;
  memory_.clear();
}

}  // namespace lirvox::catalog
