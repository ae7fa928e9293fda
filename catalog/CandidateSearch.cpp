// Which tracks may have sound in common, and at which offset.
#include "catalog/CandidateSearch.h"

#include <algorithm>

namespace lirvox::catalog {
namespace {

// Two frame grids differ by up to a frame at each end.
constexpr std::int32_t kWindowInFrames = 3;
// Chance gives single votes: even a track of an hour casts few thousand over all offsets.
constexpr std::ptrdiff_t kVotes = 5;
// Music that repeats itself agrees at many offsets; the best ones are enough.
constexpr std::size_t kOffsetsPerPair = 4;

}  // namespace

CandidateSearch::CandidateSearch(SQLite::Database& database)
    : query_(database, "SELECT track_id, num1 FROM db WHERE num2 = ?") {}

void CandidateSearch::look(std::int32_t track, const std::vector<Probe>& probes) {
  std::vector<Vote> votes;
  for (const Probe& probe : probes) {
    query_.reset();
    query_.bind(1, probe.hash);
    while (query_.executeStep()) {
      const std::int32_t other = query_.getColumn(0).getInt();
      if (other != track) votes.push_back({other, probe.time - query_.getColumn(1).getInt()});
    }
  }
  query_.reset();
  evaluate(track, std::move(votes));
}

void CandidateSearch::evaluate(std::int32_t track, std::vector<Vote> votes) {
  std::sort(votes.begin(), votes.end(), [](const Vote& a, const Vote& b) {
    return std::tie(a.track, a.offset) < std::tie(b.track, b.offset);
  });
  for (auto first = votes.begin(); first != votes.end();) {
    const auto last = std::find_if(first, votes.end(),
                                   [&](const Vote& vote) { return vote.track != first->track; });
    std::vector<std::pair<std::ptrdiff_t, std::int32_t>> peaks;  // votes, offset in the middle
    auto end = first;
    for (auto begin = first; begin != last; ++begin) {
      while (end != last && end->offset - begin->offset < kWindowInFrames) ++end;
      if (end - begin < kVotes) continue;
      peaks.emplace_back(begin - end, begin[(end - begin) / 2].offset);
    }
    std::sort(peaks.begin(), peaks.end());
    std::vector<std::int32_t> taken;
    for (const auto& [votesOfPeak, offset] : peaks) {
      const bool isNear = std::any_of(
          taken.begin(), taken.end(),
          [at = offset](std::int32_t other) { return std::abs(at - other) < 2 * kWindowInFrames; });
      if (isNear) continue;
      if (taken.size() == kOffsetsPerPair) break;
      taken.push_back(offset);
      enter(track, first->track, offset);
    }
    first = last;
  }
}

// The same passage is found from both tracks.
void CandidateSearch::enter(std::int32_t track, std::int32_t other, std::int32_t offset) {
  const Candidate candidate =
      track < other ? Candidate{track, other, offset} : Candidate{other, track, -offset};
  const auto known =
      found_.lower_bound({candidate.first, candidate.second, candidate.offset - kWindowInFrames});
  if (known != found_.end() && known->first == candidate.first &&
      known->second == candidate.second && known->offset <= candidate.offset + kWindowInFrames) {
    return;
  }
  found_.insert(candidate);
}

}  // namespace lirvox::catalog
