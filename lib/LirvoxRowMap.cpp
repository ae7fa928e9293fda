// The answer of a lookup: rows by hash.
#include "lib/LirvoxRowMap.h"

#include <algorithm>
#include <utility>

namespace lirvox {

LirvoxRowMap::LirvoxRowMap(std::vector<LirvoxDBRow> rows) : rows_(std::move(rows)) {
  const auto byHash = [](const LirvoxDBRow& a, const LirvoxDBRow& b) {
    return a.hash1.intValue() < b.hash1.intValue();
  };
  if (!std::is_sorted(rows_.begin(), rows_.end(), byHash)) {
    std::stable_sort(rows_.begin(), rows_.end(), byHash);
  }
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const std::int32_t hash = rows_[i].hash1.intValue();
    if (groups_.empty() || groups_.back().hash != hash) groups_.push_back({hash, i});
  }
}

LirvoxRowMap::Rows LirvoxRowMap::find(DecimalString hash) const {
  const auto group = std::lower_bound(
      groups_.begin(), groups_.end(), hash.intValue(),
      [](const Group& candidate, std::int32_t wanted) { return candidate.hash < wanted; });
  if (group == groups_.end() || group->hash != hash.intValue()) return {};
  const auto next = group + 1;
  const std::size_t last = next == groups_.end() ? rows_.size() : next->first;
  return {rows_.data() + group->first, rows_.data() + last};
}

}  // namespace lirvox
