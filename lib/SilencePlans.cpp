// Orders under which the vote answers with nothing.
#include "lib/SilencePlans.h"

#include <algorithm>

namespace lirvox {
namespace {

constexpr std::size_t kFronts = 48;

// Tracks to visit first, the most silencing one first.
std::vector<std::size_t> silencers(const TrackStatistics& statistics, std::int32_t minimum) {
  std::vector<std::size_t> tracks;
  for (const std::size_t track : statistics.ranking()) {
    if (track == statistics.leader() ||
        (statistics[track].peak.isCandidate() && statistics[track].count <= minimum)) {
      tracks.push_back(track);
    }
  }
  std::stable_sort(tracks.begin(), tracks.end(), [&](std::size_t a, std::size_t b) {
    return DecimalString(statistics[b].count) < DecimalString(statistics[a].count);
  });
  tracks.resize(std::min(tracks.size(), kFronts));
  return tracks;
}

}  // namespace

std::optional<std::vector<std::size_t>> findSilentOrder(const HitsByTrack& hits,
                                                        const TrackStatistics& statistics,
                                                        std::int32_t minimum) {
  VoteTrial trial(hits);
  for (const std::size_t first : silencers(statistics, minimum)) {
    if (trial.isExhausted()) break;
    DecimalString best(0);
    // A count above the minimum is no answer once a small one ranks above it.
    const auto isSilent = [&](const VoteTrial::Visit& visit) {
      if (!visit.isCandidate) return true;
      if (visit.count > minimum) return !(best < DecimalString(visit.count));
      best = std::max(best, DecimalString(visit.count));
      return true;
    };
    trial.restart();
    if (trial.visit(first, isSilent) && trial.visitAll(statistics.ranking(), isSilent).empty()) {
      return trial.order();
    }
  }
  return std::nullopt;
}

}  // namespace lirvox
