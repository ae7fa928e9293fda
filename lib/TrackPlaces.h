// Numbers for the tracks of a pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace lirvox {

/// Numbers track ids 0, 1, 2, ... in the order in which they are first asked for. A
/// pass asks for each of its hits, so this is a table of its own, with open addressing:
/// with std::unordered_map, forming the hits takes three times as long.
class TrackPlaces {
 public:
  /// The number of `id`.
  std::uint32_t of(std::int32_t id) {
    // Rows of one hash come track by track, so the last one is often asked for again.
    if (last_.number == kNone || last_.id != id) last_ = find(id);
    return last_.number;
  }

 private:
  static constexpr std::uint32_t kNone = ~std::uint32_t{0};

  struct Slot {
    std::int32_t id = 0;
    std::uint32_t number = kNone;
  };

  Slot find(std::int32_t id) {
    if (2 * count_ >= slots_.size()) grow();
    Slot& slot = slotFor(id);
    if (slot.number == kNone) slot = {id, count_++};
    return slot;
  }

  // Spreads neighbouring ids, and those that a file was given so that they fall into one place
  // (the finalizer of MurmurHash3).
  std::uint32_t mixed(std::int32_t id) const {
    std::uint32_t x = static_cast<std::uint32_t>(id) ^ seed_;
    x = (x ^ (x >> 16)) * 0x85ebca6bU;
    x = (x ^ (x >> 13)) * 0xc2b2ae35U;
    return x ^ (x >> 16);
  }

  // Where `id` is or belongs.
  Slot& slotFor(std::int32_t id) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = mixed(id) >> shift_;
    while (slots_[i].number != kNone && slots_[i].id != id) i = (i + 1) & mask;
    return slots_[i];
  }

  void grow() {
    const std::vector<Slot> old(std::move(slots_));
    slots_.assign(old.empty() ? std::size_t{1} << (32 - shift_) : 2 * old.size(), Slot{});
    if (!old.empty()) --shift_;
    for (const Slot& slot : old) {
      if (slot.number != kNone) slotFor(slot.id) = slot;
    }
  }

  std::vector<Slot> slots_;  // a power of two of them, at most half taken
  unsigned shift_ = 22;      // leaves as many bits as number the slots
  std::uint32_t count_ = 0;
  std::uint32_t seed_ = std::random_device{}();  // the numbers do not depend on it
  Slot last_;
};

}  // namespace lirvox
