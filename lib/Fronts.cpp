// Tracks that go first, and draw the counting to places of their own.
#include "lib/Fronts.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace lirvox {
namespace {

// The most votes that a front's own count is padded with to become a harmless text.
constexpr std::int32_t kMostPadding = 12;

// Tracks tried as fronts of a crowd.
constexpr std::size_t kCrowdFronts = 24;

// The most refused tracks for which clearing crowds is worth trying.
constexpr std::size_t kMostRefused = 400;

}  // namespace

bool Fronts::canBeFront(std::int32_t count, std::int32_t leaderCount) {
  for (std::int32_t padding = 0; padding <= kMostPadding; ++padding) {
    if (ranksBelow(count + padding, leaderCount)) return true;
  }
  return false;
}

bool Fronts::raise(std::size_t front, Bin bin) {
  return pad(front, bin) && trial_.visitBefore(front, LeaderTrial::Peak::raised);
}

bool Fronts::pad(std::size_t front, Bin bin) {
  std::vector<TracksByBin::Voter> voters = votersApart(bin);
  // Votes at the peak make it higher too; tracks with few hits raise no other place.
  std::stable_sort(voters.begin(), voters.end(), [&](const auto& a, const auto& b) {
    return std::make_tuple(a.votesAtPeak == 0, hits_.tracks()[a.track].hitCount()) <
           std::make_tuple(b.votesAtPeak == 0, hits_.tracks()[b.track].hitCount());
  });
  std::int32_t count =
      OffsetHistogram::windowVotes(hits_.tracks()[front], bin) + trial_.windowVotes(bin);
  for (const TracksByBin::Voter& voter : voters) {
    const bool isHarmless = ranksBelow(count, trial_.count());
    if (isHarmless && voter.votesAtPeak == 0) break;
    const std::int32_t padded = count + voter.votesInWindow;
    const bool isUseful =
        isHarmless ? ranksBelow(padded, trial_.count()) : canBeFront(padded, trial_.count());
    if (voter.track == front || !isUseful) continue;
    if (trial_.visitBefore(voter.track, LeaderTrial::Peak::kept)) count = padded;
  }
  return ranksBelow(count, trial_.count());
}

std::vector<Fronts::Crowd> Fronts::crowdsOf(const std::vector<std::size_t>& refused) {
  if (refused.size() > kMostRefused) return {};
  std::set<Bin> places;
  for (const std::size_t track : refused) places.insert(trial_.placeOf(track));
  places.erase(statistics_[statistics_.leader()].peak.bin);
  std::vector<Crowd> crowds;
  for (const Bin place : places) {
    std::ptrdiff_t excess = 1;
    for (const std::size_t track : refused) {
      const HitsByTrack::Track& hits = hits_.tracks()[track];
      excess += std::count(hits.begin(), hits.end(), place);
    }
    crowds.push_back({place, static_cast<std::int32_t>(excess)});
  }
  return crowds;
}

bool Fronts::clear(const Crowd& crowd) {
  std::vector<TracksByBin::Voter> voters = votersApart(crowd.bin);
  std::stable_sort(voters.begin(), voters.end(), [&](const auto& a, const auto& b) {
    return std::make_tuple(-a.votesAtPeak, hits_.tracks()[a.track].hitCount()) <
           std::make_tuple(-b.votesAtPeak, hits_.tracks()[b.track].hitCount());
  });
  if (!raiseAt(crowd.bin, voters)) return false;
  std::int32_t left = crowd.excess;
  for (const TracksByBin::Voter& voter : voters) {
    if (left <= 0 || voter.votesAtPeak == 0) break;
    if (trial_.visitBefore(voter.track, LeaderTrial::Peak::kept)) left -= voter.votesAtPeak;
  }
  return left <= 0;
}

bool Fronts::raiseAt(Bin bin, const std::vector<TracksByBin::Voter>& voters) {
  const auto most = std::min(voters.size(), kCrowdFronts);
  return std::any_of(voters.begin(), voters.begin() + static_cast<std::ptrdiff_t>(most),
                     [&](const auto& voter) { return raise(voter.track, bin); }) &&
         trial_.peak().bin == bin;
}

// Tracks with votes at a place and none for the leader.
std::vector<TracksByBin::Voter> Fronts::votersApart(Bin bin) {
  if (!tracksByBin_) {
    tracksByBin_.emplace(hits_);
    trial_.spend(hits_.hitCount());
  }
  std::vector<TracksByBin::Voter> apart;
  for (const TracksByBin::Voter& voter : tracksByBin_->voters(bin)) {
    trial_.spend(static_cast<std::size_t>(voter.votesInWindow));
    if (statistics_.votesForLeader(voter.track) == 0) apart.push_back(voter);
  }
  return apart;
}

}  // namespace lirvox
