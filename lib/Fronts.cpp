// Tracks that go first, and draw the counting to places of their own.
#include "lib/Fronts.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace lirvox {
namespace {

// The most votes that a front's own count is padded with to become a harmless text: below the
// 5 votes of a candidate, three bins hold no more.
constexpr std::int32_t kMostPadding = 12;

// Tracks tried as fronts of a crowd: few places have more that are strong enough.
constexpr std::size_t kCrowdFronts = 24;

// The most refused tracks for which clearing crowds is worth trying. Where more are refused, the
// leader is weak and crowds are everywhere.
constexpr std::size_t kMostRefused = 400;

// What reading and sorting a voter costs, in votes looked at.
constexpr std::size_t kWorkPerVoter = 4;

}  // namespace

bool Fronts::canBeFront(std::int32_t count, std::int32_t leaderCount) {
  for (std::int32_t padding = 0; padding <= kMostPadding; ++padding) {
    if (ranksBelow(count + padding, leaderCount)) return true;
  }
  return false;
}

bool Fronts::raiseAt(Bin bin, std::size_t front) {
  pad(bin, front);
  return trial_.visitBefore(front, LeaderTrial::Peak::raised);
}

void Fronts::pad(Bin bin, std::size_t front) {
  std::vector<TracksByBin::Voter> voters = votersApart(bin);
  // Votes at the peak make it higher too, and tracks with few hits raise no other place. The id
  // decides last, so that the order does not depend on the hits'.
  const auto rank = [&](const TracksByBin::Voter& voter) {
    const HitsByTrack::Track& track = hits_.tracks()[voter.track];
    return std::make_tuple(voter.votesAtPeak == 0, track.hitCount(), track.id.intValue());
  };
  std::sort(voters.begin(), voters.end(),
            [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
  const std::int32_t own = OffsetHistogram::windowVotes(hits_.tracks()[front], bin);
  for (const TracksByBin::Voter& voter : voters) {
    const std::int32_t count = own + trial_.windowVotes(bin);
    const bool isHarmless = ranksBelow(count, trial_.count());
    if (isHarmless && voter.votesAtPeak == 0) break;
    const std::int32_t padded = count + voter.votesInWindow;
    const bool isUseful =
        isHarmless ? ranksBelow(padded, trial_.count()) : canBeFront(padded, trial_.count());
    if (isUseful && voter.track != front) trial_.visitBefore(voter.track, LeaderTrial::Peak::kept);
  }
}

std::vector<Fronts::Crowd> Fronts::crowdsOf(const std::vector<std::size_t>& refused) {
  if (refused.size() > kMostRefused) return {};
  std::map<Bin, std::int32_t> excess;
  for (const std::size_t track : refused) excess[trial_.placeOf(track)] = 1;
  excess.erase(statistics_[statistics_.leader()].peak.bin);
  for (const std::size_t track : refused) {
    trial_.spend(static_cast<std::size_t>(hits_.tracks()[track].hitCount()));
    for (const Bin bin : hits_.tracks()[track]) {
      const auto crowd = excess.find(bin);
      if (crowd != excess.end()) ++crowd->second;
    }
  }
  std::vector<Crowd> crowds;
  for (const auto& [bin, votes] : excess) crowds.push_back({bin, votes});
  return crowds;
}

bool Fronts::clear(const Crowd& crowd) {
  std::vector<TracksByBin::Voter> voters = votersApart(crowd.bin);
  const auto rank = [&](const TracksByBin::Voter& voter) {
    const HitsByTrack::Track& track = hits_.tracks()[voter.track];
    return std::make_tuple(-voter.votesAtPeak, track.hitCount(), track.id.intValue());
  };
  std::sort(voters.begin(), voters.end(),
            [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
  if (!raiseAt(crowd.bin, voters)) return false;
  std::int32_t left = crowd.excess;
  for (const TracksByBin::Voter& voter : voters) {
    if (trial_.isVisited(voter.track)) left -= voter.votesAtPeak;
  }
  for (const TracksByBin::Voter& voter : voters) {
    if (left <= 0 || voter.votesAtPeak == 0) break;
    if (trial_.visitBefore(voter.track, LeaderTrial::Peak::kept)) left -= voter.votesAtPeak;
  }
  return left <= 0;
}

// By the first of the voters that raises the peak at all. Says whether it did so at `bin`.
bool Fronts::raiseAt(Bin bin, const std::vector<TracksByBin::Voter>& voters) {
  for (std::size_t i = 0; i < std::min(voters.size(), kCrowdFronts); ++i) {
    if (raiseAt(bin, voters[i].track)) return trial_.peak().bin == bin;
  }
  return false;
}

// Tracks with votes at a place and none for the leader, which so is not among them.
std::vector<TracksByBin::Voter> Fronts::votersApart(Bin bin) {
  if (!tracksByBin_) {
    tracksByBin_.emplace(hits_);
    trial_.spend(hits_.hitCount());
  }
  std::vector<TracksByBin::Voter> apart;
  for (const TracksByBin::Voter& voter : tracksByBin_->voters(bin)) {
    trial_.spend(kWorkPerVoter * static_cast<std::size_t>(voter.votesInWindow));
    if (statistics_.votesForLeader(voter.track) == 0) apart.push_back(voter);
  }
  return apart;
}

}  // namespace lirvox
