// Orders under which the vote answers with nothing.
#include "lib/SilencePlans.h"

#include <algorithm>

namespace lirvox {
namespace {

constexpr std::size_t kFronts = 48;
constexpr int kAttempts = 8;  // with one front

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

// Moves `chosen` to the front of `tracks`; both parts keep their order.
void moveToFront(std::vector<std::size_t>& tracks, const std::vector<std::size_t>& chosen) {
  std::vector<char> isChosen(tracks.size());
  for (const std::size_t track : chosen) isChosen[track] = true;
  std::stable_partition(tracks.begin(), tracks.end(),
                        [&](std::size_t track) { return isChosen[track]; });
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
    std::vector<std::size_t> order = statistics.ranking();
    for (int attempt = 0; attempt < kAttempts && !trial.isExhausted(); ++attempt) {
      trial.restart();
      best = DecimalString(0);
      if (!trial.visit(first, isSilent)) break;
      const std::vector<std::size_t> refused = trial.visitAll(order, isSilent);
      if (refused.empty()) return trial.order();
      // A few tracks come too late, when the votes of thousands have piled up: they go first
      // next time.
      moveToFront(order, refused);
    }
  }
  return std::nullopt;
}

}  // namespace lirvox
