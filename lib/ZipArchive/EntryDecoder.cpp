// Expanding the content of one archive entry.
#include "lib/ZipArchive/EntryDecoder.h"

#include <algorithm>

namespace lirvox {
namespace {

constexpr std::uint32_t kStored = 0;
constexpr std::uint32_t kDeflated = 8;
constexpr std::size_t kBufferBytes = std::size_t{1} << 16;

}  // namespace

EntryDecoder::EntryDecoder(std::uint32_t method, std::uint64_t size, const Sink& sink)
    : method_(method), size_(size), sink_(sink) {
  if (method == kStored) {
    ready_ = true;
    ended_ = size == 0;
  } else if (method == kDeflated) {
    buffer_.resize(kBufferBytes);
    // Negative: bare deflate data, without a header of its own.
    ready_ = inflateInit2(&stream_, -MAX_WBITS) == Z_OK;
  }
}

EntryDecoder::~EntryDecoder() {
  if (method_ == kDeflated && ready_) inflateEnd(&stream_);
}

bool EntryDecoder::feed(std::string_view packed) {
  if (!ready_) return false;
  if (method_ == kDeflated) return inflateAll(packed);
  const std::uint64_t missing = size_ - written_;
  const bool taken = emit(
      packed.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(missing, packed.size()))));
  ended_ = written_ == size_;
  return taken;
}

bool EntryDecoder::inflateAll(std::string_view packed) {
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream_.avail_in = static_cast<uInt>(packed.size());
  do {
    stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
    stream_.avail_out = static_cast<uInt>(buffer_.size());
    const int status = inflate(&stream_, Z_NO_FLUSH);
    if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) return false;
    if (!emit({buffer_.data(), buffer_.size() - stream_.avail_out})) return false;
    ended_ = status == Z_STREAM_END;
  } while (!ended_ && stream_.avail_out == 0);
  return true;
}

bool EntryDecoder::emit(std::string_view bytes) {
  if (bytes.size() > size_ - written_) return false;
  written_ += bytes.size();
  checksum_ = static_cast<std::uint32_t>(crc32(
      checksum_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
  return sink_(bytes);
}

}  // namespace lirvox
