// A vote whose visits can be refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "HitsByTrack.h"
#include "OffsetHistogram.h"

namespace lirvox {

/// Plays the vote track by track, so that an order can be put together from visits that
/// do no harm. A refused visit leaves no trace but the work it took.
class VoteTrial {
 public:
  /// What the vote would make of a visit.
  struct Visit {
    bool isCandidate;    // a bin has reached the threshold, here or earlier
    std::int32_t count;  // votes in the window, of all tracks visited and not yet taken
    OffsetHistogram::Peak peak;
  };

  explicit VoteTrial(const HitsByTrack& hits)
      : hits_(hits),
        histogram_(hits.binCount()),
        isVisited_(hits.tracks().size()),
        workLeft_(kWorkPerHit * static_cast<std::int64_t>(hits.hitCount()) + kFreeWork) {}

  /// Forgets all visits, in time linear in their hits, but not the work done.
  void restart() {
    for (const std::size_t track : order_) {
      histogram_.clear(hits_.tracks()[track]);
      isVisited_[track] = false;
    }
    histogram_.clearPeak();
    order_.clear();
  }

  /// Visits `track` if `accept(visit)` agrees; says whether it did.
  template <class Accept>
  bool visit(std::size_t track, Accept accept) {
    const HitsByTrack::Track& hits = hits_.tracks()[track];
    const OffsetHistogram::Peak before = histogram_.peak();
    workLeft_ -= hits.hitCount();
    histogram_.add(hits);
    const bool isCandidate = histogram_.peak().isCandidate();
    const Visit visit{isCandidate, isCandidate ? histogram_.windowVotes() : 0, histogram_.peak()};
    if (!accept(visit)) {
      histogram_.undo(hits, before);
      return false;
    }
    if (isCandidate) histogram_.clearWindow();
    order_.push_back(track);
    isVisited_[track] = true;
    return true;
  }

  /// Visits `tracks`, passing over those visited already; a refused one gets another
  /// chance after the others. Returns the ones that are not visited in the end.
  template <class Accept>
  std::vector<std::size_t> visitAll(std::vector<std::size_t> tracks, Accept accept) {
    for (int round = 0; round < kRounds && !tracks.empty() && !isExhausted(); ++round) {
      std::vector<std::size_t> refused;
      for (const std::size_t track : tracks) {
        if (!isVisited_[track] && !visit(track, accept)) refused.push_back(track);
      }
      const bool isStuck = refused.size() == tracks.size();
      tracks = std::move(refused);
      if (isStuck) break;
    }
    std::erase_if(tracks, [&](std::size_t track) { return isVisited_[track]; });
    return tracks;
  }

  OffsetHistogram::Peak peak() const { return histogram_.peak(); }
  std::int32_t votes(OffsetHistogram::Bin bin) const { return histogram_.votes(bin); }
  bool isVisited(std::size_t track) const { return isVisited_[track]; }

  /// The tracks in the order in which they were visited.
  const std::vector<std::size_t>& order() const { return order_; }

  /// Counts work that was done elsewhere.
  void spend(std::size_t votes) { workLeft_ -= static_cast<std::int64_t>(votes); }

  /// Whether the work that a pass is worth has been done: time to give up.
  bool isExhausted() const { return workLeft_ < 0; }

 private:
  static constexpr int kRounds = 4;
  // In votes looked at. Far below what the lookup spent on each hit, and eight times the
  // work finds no more.
  static constexpr std::int64_t kWorkPerHit = 12;
  static constexpr std::int64_t kFreeWork = 20000;

  const HitsByTrack& hits_;
  OffsetHistogram histogram_;
  std::vector<char> isVisited_;
  std::vector<std::size_t> order_;
  std::int64_t workLeft_;
};

}  // namespace lirvox
