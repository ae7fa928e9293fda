// The standard input stream as FFmpeg reads it.
#include "tools/StandardInput.h"

#include <cerrno>

#include <poll.h>
#include <unistd.h>

#include "tools/Wakeup.h"

namespace lirvox::tools::av {
namespace {

constexpr int kBufferSize = 32768;
// A signal that comes just before the wait does not end it.
constexpr int kLongestWaitInMilliseconds = 200;

int read(void*, std::uint8_t* buffer, int size) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (::poll(&input, 1, kLongestWaitInMilliseconds) < 1) {
    if (signalCaught()) return AVERROR_EOF;
  }
  const ssize_t count = ::read(STDIN_FILENO, buffer, static_cast<std::size_t>(size));
  if (count < 0) return AVERROR(errno);
  return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

}  // namespace

Stream standardInput() {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
  if (!buffer) return nullptr;
  Stream stream(avio_alloc_context(buffer, kBufferSize, 0, nullptr, read, nullptr, nullptr));
  if (!stream) av_free(buffer);
  return stream;
}

}  // namespace lirvox::tools::av
