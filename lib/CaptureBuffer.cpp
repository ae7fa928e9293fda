// The samples of one capture while it grows.
#include "lib/CaptureBuffer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace lirvox {
namespace {

std::size_t segmentSize(std::size_t first, std::size_t index) {
  return first << index;
}

}  // namespace

CaptureBuffer::~CaptureBuffer() {
  for (const auto& segment : segments_) {
    const std::unique_ptr<std::byte[]> owned(segment.load(std::memory_order_relaxed));
  }
}

// Segment k covers the positions from (2^k - 1) first segments on.
CaptureBuffer::Place CaptureBuffer::placeOf(std::size_t position) {
  std::size_t index = 0;
  std::size_t start = 0;
  while (position - start >= segmentSize(kFirstSegment, index)) {
    start += segmentSize(kFirstSegment, index++);
  }
  const std::size_t offset = position - start;
  return {index, offset, segmentSize(kFirstSegment, index) - offset};
}

std::byte* CaptureBuffer::segment(std::size_t index) {
  std::atomic<std::byte*>& slot = segments_.at(index);
  std::byte* existing = slot.load(std::memory_order_acquire);
  if (existing) return existing;
  // Zero-filled, so that the system has given the pages before the writer needs them.
  auto fresh = std::make_unique<std::byte[]>(segmentSize(kFirstSegment, index));
  if (slot.compare_exchange_strong(existing, fresh.get(), std::memory_order_acq_rel)) {
    return fresh.release();
  }
  return existing;
}

void CaptureBuffer::append(const void* bytes, std::size_t count) {
  const auto* from = static_cast<const std::byte*>(bytes);
  std::size_t position = size_.load(std::memory_order_relaxed);
  while (count > 0) {
    const Place place = placeOf(position);
    const std::size_t part = std::min(count, place.room);
    std::memcpy(segment(place.segment) + place.offset, from, part);
    from += part;
    position += part;
    count -= part;
  }
  size_.store(position, std::memory_order_release);
}

void CaptureBuffer::reserve(std::size_t size) {
  if (size == 0) return;
  const std::size_t last = placeOf(size - 1).segment;
  for (std::size_t index = 0; index <= last; ++index) segment(index);
}

void CaptureBuffer::copy(std::size_t begin, std::size_t count, void* out) const {
  auto* to = static_cast<std::byte*>(out);
  while (count > 0) {
    const Place place = placeOf(begin);
    const std::size_t part = std::min(count, place.room);
    const std::byte* const from = segments_[place.segment].load(std::memory_order_acquire);
    std::memcpy(to, from + place.offset, part);
    to += part;
    begin += part;
    count -= part;
  }
}

std::vector<std::byte> CaptureBuffer::prefix(std::size_t count) const {
  std::vector<std::byte> bytes(count);
  copy(0, count, bytes.data());
  return bytes;
}

}  // namespace lirvox
