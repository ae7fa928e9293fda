// The rows of each track that tell best where else it is.
#include "catalog/ProbeSelection.h"

#include <algorithm>

namespace lirvox::catalog {
namespace {

constexpr std::int32_t kSegmentInFrames = 1292;  // half a minute
constexpr std::size_t kProbesPerSegment = 48;

void offer(std::vector<Probe>& heap, const Probe& probe) {
  if (heap.size() == kProbesPerSegment) {
    if (!(probe < heap.front())) return;
    std::pop_heap(heap.begin(), heap.end());
    heap.pop_back();
  }
  heap.push_back(probe);
  std::push_heap(heap.begin(), heap.end());
}

}  // namespace

void ProbeSelection::add(std::uint32_t hash, const std::vector<StoredRow>& rows) {
  if (rows.empty() || rows.front().track == rows.back().track) return;
  for (const StoredRow& row : rows) {
    std::vector<Segment>& segments = segments_[row.track];
    const auto segment = static_cast<std::size_t>(row.time / kSegmentInFrames);
    if (segments.size() <= segment) segments.resize(segment + 1);
    offer(segments[segment], {static_cast<std::uint32_t>(rows.size()), hash, row.time});
  }
}

std::vector<std::int32_t> ProbeSelection::tracks() const {
  std::vector<std::int32_t> tracks;
  for (const auto& [track, segments] : segments_) tracks.push_back(track);
  return tracks;
}

std::vector<Probe> ProbeSelection::probesOf(std::int32_t track) const {
  std::vector<Probe> probes;
  for (const Segment& segment : segments_.at(track)) {
    probes.insert(probes.end(), segment.begin(), segment.end());
  }
  return probes;
}

}  // namespace lirvox::catalog
