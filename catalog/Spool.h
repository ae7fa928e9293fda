// A sequence that moves to a temporary file when it gets long.
#pragma once

#include <cstddef>
#include <vector>

namespace lirvox::catalog {

/// Bytes that are appended and read again. Beyond a limit they are in an unlinked file in
/// the folder that TMPDIR names, otherwise in /var/tmp. `CatalogError` when that fails.
class ByteSpool {
 public:
  /// Holds up to `limit` bytes in memory.
  explicit ByteSpool(std::size_t limit) : limit_(limit) {}
  ~ByteSpool();

  ByteSpool(const ByteSpool&) = delete;
  ByteSpool& operator=(const ByteSpool&) = delete;

  std::size_t size() const { return inFile_ + memory_.size(); }
  void append(const void* bytes, std::size_t count);
  /// Reads bytes [first, first + count), which must be there.
  void read(std::size_t first, std::size_t count, void* bytes) const;
  /// Back to an empty spool; memory stays ready for the next content.
  void clear();

 private:
  void flush();

  const std::size_t limit_;
  std::vector<std::byte> memory_;  // what follows the bytes in the file
  std::size_t inFile_ = 0;
  int file_ = -1;
};

/// The same for values that may be copied byte by byte.
template <typename Value>
class Spool {
 public:
  /// Holds up to `limit` bytes in memory.
  explicit Spool(std::size_t limit) : bytes_(limit) {}

  std::size_t size() const { return bytes_.size() / sizeof(Value); }
  void append(const Value* values, std::size_t count) {
    bytes_.append(values, count * sizeof(Value));
  }
  void read(std::size_t first, std::size_t count, Value* values) const {
    bytes_.read(first * sizeof(Value), count * sizeof(Value), values);
  }
  void clear() { bytes_.clear(); }

 private:
  ByteSpool bytes_;
};

}  // namespace lirvox::catalog
