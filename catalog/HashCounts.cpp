// How often each hash occurs, and which ones are too common to say anything.
#include "catalog/HashCounts.h"

#include <algorithm>
#include <limits>

namespace lirvox::catalog {

std::uint32_t commonHashLimit(const HashCounts& counts, const CommonHashRule& rule) {
  HashCounts occurring;
  std::copy_if(counts.begin(), counts.end(), std::back_inserter(occurring),
               [](std::uint32_t count) { return count > 0; });
  const auto common = static_cast<std::size_t>(rule.share * static_cast<double>(occurring.size()));
  if (common == 0) return std::numeric_limits<std::uint32_t>::max();
  const auto last = occurring.begin() + static_cast<std::ptrdiff_t>(common);
  std::nth_element(occurring.begin(), last, occurring.end(), std::greater<>());
  return *last;
}

}  // namespace lirvox::catalog
