// Expanding the content of one archive entry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace lirvox {

/// Turns the packed bytes of an entry into its content, and compares length and checksum.
class EntryDecoder {
 public:
  /// Receives the next bytes of the content; returns false to give up.
  using Sink = std::function<bool(std::string_view)>;

  /// `method` is the archive's number of the packing; `size` the stated length.
  EntryDecoder(std::uint32_t method, std::uint64_t size, const Sink& sink);
  ~EntryDecoder();

  EntryDecoder(const EntryDecoder&) = delete;
  EntryDecoder& operator=(const EntryDecoder&) = delete;

  /// Takes more packed bytes; false when they are damaged or the sink gave up.
  bool feed(std::string_view packed);
  /// Whether the content is complete, so that no more bytes are wanted.
  bool ended() const { return ended_; }
  /// Whether the content is complete and right.
  bool matches(std::uint32_t checksum) const {
    return ended_ && written_ == size_ && checksum_ == checksum;
  }

 private:
  bool inflateAll(std::string_view packed);
  bool emit(std::string_view bytes);

  const std::uint32_t method_;
  const std::uint64_t size_;
  const Sink& sink_;
  z_stream stream_{};
  bool ready_ = false;
  bool ended_ = false;
  std::uint64_t written_ = 0;
  std::uint32_t checksum_ = 0;
  std::vector<char> buffer_;
};

}  // namespace lirvox
