// How often each hash occurs, and which ones are too common to say anything.
#include "catalog/HashCounts.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace lirvox::catalog {
namespace {

// Variable-length integers: seven bits a byte, lowest first, the top bit set on all but
// the last (LEB128).
void append(std::string& bytes, std::uint32_t value) {
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>(value | 0x80);
  bytes += static_cast<char>(value);
}

std::uint32_t take(std::string_view& bytes) {
  std::uint32_t value = 0;
  for (unsigned shift = 0; shift < 32; shift += 7) {
    if (bytes.empty()) break;
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    value |= (byte & 0x7FU) << shift;
    if (byte < 0x80) return value;
  }
  throw std::invalid_argument("hash counts are damaged");
}

}  // namespace

std::string pack(const HashCounts& counts) {
  std::string bytes;
  std::uint32_t next = 0;
  for (std::uint32_t hash = 0; hash < counts.size(); ++hash) {
    if (counts[hash] == 0) continue;
    append(bytes, hash - next);
    append(bytes, counts[hash]);
    next = hash + 1;
  }
  return bytes;
}

HashCounts unpack(std::string_view packed) {
  HashCounts counts(kHashes);
  std::uint32_t next = 0;
  while (!packed.empty()) {
    const std::uint32_t hash = next + take(packed);
    if (hash < next || hash >= kHashes) throw std::invalid_argument("hash counts are damaged");
    counts[hash] = take(packed);
    next = hash + 1;
  }
  return counts;
}

std::uint32_t commonHashLimit(const HashCounts& counts, const CommonHashRule& rule) {
  constexpr auto kNone = std::numeric_limits<std::uint32_t>::max();
  const auto occurring =
      counts.size() - static_cast<std::size_t>(std::count(counts.begin(), counts.end(), 0U));
  if (occurring == 0 || rule.timesMean <= 0.0) return kNone;
  const double rows = std::accumulate(counts.begin(), counts.end(), 0.0);
  const double limit = rule.timesMean * rows / static_cast<double>(occurring);
  return std::max(rule.floor, static_cast<std::uint32_t>(std::min<double>(limit, kNone)));
}

}  // namespace lirvox::catalog
