// How often each hash occurs, and which ones are too common to say anything.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lirvox::catalog {

/// Number of possible hashes: they have 20 bits.
constexpr std::uint32_t kHashes = 1U << 20;

/// Rows per hash, of all rows of a catalogue.
using HashCounts = std::vector<std::uint32_t>;

/// The counts as a few bytes for each hash that occurs, for keeping.
std::string pack(const HashCounts& counts);

/// The counts of `packed`, which `pack` made. Throws `std::invalid_argument` when it is
/// damaged.
HashCounts unpack(std::string_view packed);

/// Which hashes are common: those with more rows than a multiple of the mean of the hashes
/// that occur, and never those with fewer than `floor`, so that a small catalogue loses
/// nothing. A few values occur nearly everywhere: they make most of the matches and tell
/// nothing.
struct CommonHashRule {
  double timesMean = 20.0;  ///< 0: none is common
  std::uint32_t floor = 100;
};

/// The largest number of rows that a hash may have before it counts as common.
std::uint32_t commonHashLimit(const HashCounts& counts, const CommonHashRule& rule);

}  // namespace lirvox::catalog
