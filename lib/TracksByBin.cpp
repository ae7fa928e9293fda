// Which tracks have votes at an offset.
#include "lib/TracksByBin.h"

#include <algorithm>
#include <numeric>

#include "lib/OffsetHistogram.h"

namespace lirvox {
namespace {

constexpr std::uint32_t kMostVotes = 512;  // of a bin; more than any search has use for

}  // namespace

TracksByBin::TracksByBin(const HitsByTrack& hits)
    : ends_(hits.binCount() + 1), tracks_(hits.hitCount()) {
  for (const HitsByTrack::Track& track : hits.tracks()) {
    for (const Bin bin : track) ++ends_[bin + 1];
  }
  std::partial_sum(ends_.begin(), ends_.end(), ends_.begin());
  // The ends move from where each bin begins to where it ends, and are put back.
  for (std::size_t track = 0; track < hits.tracks().size(); ++track) {
    for (const Bin bin : hits.tracks()[track]) {
      tracks_[ends_[bin]++] = static_cast<std::uint32_t>(track);
    }
  }
  ends_.insert(ends_.begin(), 0);
  ends_.pop_back();
}

std::vector<TracksByBin::Voter> TracksByBin::voters(Bin peak) const {
  std::vector<Voter> single;  // one for each vote
  for (Bin bin = OffsetHistogram::windowStart(peak); bin <= peak; ++bin) {
    const std::uint32_t end = std::min(ends_[bin + 1], ends_[bin] + kMostVotes);
    for (std::uint32_t i = ends_[bin]; i < end; ++i) single.push_back({tracks_[i], bin == peak, 1});
  }
  std::sort(single.begin(), single.end(),
            [](const Voter& a, const Voter& b) { return a.track < b.track; });
  std::vector<Voter> voters;
  for (const Voter& vote : single) {
    if (voters.empty() || voters.back().track != vote.track) {
      voters.push_back(vote);
    } else {
      voters.back().votesAtPeak += vote.votesAtPeak;
      ++voters.back().votesInWindow;
    }
  }
  return voters;
}

}  // namespace lirvox
