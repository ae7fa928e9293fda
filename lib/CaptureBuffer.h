// The samples of one capture while it grows.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <vector>

namespace lirvox {

/// A byte buffer that one thread appends to while others read what is there.
///
/// Bytes never move once written, so nobody takes a lock: the writer publishes the
/// new size after the bytes. Memory comes in segments of doubling size, allocated
/// ahead of the writer by `reserve`.
class CaptureBuffer {
 public:
  CaptureBuffer() = default;
  ~CaptureBuffer();

  CaptureBuffer(const CaptureBuffer&) = delete;
  CaptureBuffer& operator=(const CaptureBuffer&) = delete;

  /// Appends `count` bytes. One thread at a time. Allocates only when `reserve` has
  /// fallen behind, and waits for nobody.
  void append(const void* bytes, std::size_t count);

  /// Makes memory ready for the first `size` bytes. Any thread.
  void reserve(std::size_t size);

  /// The bytes so far. Any thread.
  std::size_t size() const { return size_.load(std::memory_order_acquire); }

  /// Copies the bytes [begin, begin + count), which must be there, to `out`. Any thread.
  void copy(std::size_t begin, std::size_t count, void* out) const;

  /// The first `count` bytes, which must be there. Any thread.
  std::vector<std::byte> prefix(std::size_t count) const;

 private:
  struct Place {
    std::size_t segment;
    std::size_t offset;
    std::size_t room;  // bytes from the place to the end of its segment
  };

  static constexpr std::size_t kFirstSegment = std::size_t{1} << 16;
  static constexpr std::size_t kSegments = 24;  // 1 TiB in all

  static Place placeOf(std::size_t position);
  std::byte* segment(std::size_t index);

  std::array<std::atomic<std::byte*>, kSegments> segments_{};
  std::atomic<std::size_t> size_{0};
};

}  // namespace lirvox
