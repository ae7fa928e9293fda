// How much of two tracks is the same.
#include "catalog/Overlaps.h"

#include <algorithm>
#include <limits>

#include "lib/LirvoxSettings.h"

namespace lirvox::catalog {
namespace {

constexpr std::int32_t kSecondInFrames = 43;
// Times of one landmark differ by as much, as frame grids do.
constexpr std::int32_t kToleranceInFrames = 1;
// A second is in both tracks if they have this part of its rows in common, and no fewer
// than this.
constexpr double kRowsInCommon = 0.08;
constexpr int kLeastRowsInCommon = 2;
// What is nearly all of a track: fades and lossy coding cost some.
constexpr double kNearlyAll = 0.7;
// What is shorter than this part of a recording is an edit of it.
constexpr double kSameLength = 0.9;

void count(std::vector<std::uint16_t>& seconds, std::int32_t frame) {
  const auto second = static_cast<std::size_t>(frame / kSecondInFrames);
  if (seconds.size() <= second) seconds.resize(second + 1);
  if (seconds[second] < std::numeric_limits<std::uint16_t>::max()) ++seconds[second];
}

}  // namespace

Overlaps::Overlaps(const std::vector<Candidate>& candidates) {
  for (const Candidate& candidate : candidates) {
    if (pairs_.empty() || pairs_.back().first != candidate.first ||
        pairs_.back().second != candidate.second) {
      of_[candidate.first].push_back(pairs_.size());
      pairs_.push_back({candidate.first, candidate.second, {}});
    }
    pairs_.back().passages.push_back({candidate.offset, {}, {}});
    rows_[candidate.first];
    rows_[candidate.second];
  }
}

void Overlaps::add(const std::vector<StoredRow>& rows) {
  std::vector<std::pair<std::int32_t, Range>> tracks;
  const StoredRow* const end = rows.data() + rows.size();
  for (const StoredRow* first = rows.data(); first != end;) {
    const std::int32_t track = first->track;
    const StoredRow* const last =
        std::find_if(first, end, [&](const StoredRow& row) { return row.track != track; });
    if (const auto known = rows_.find(track); known != rows_.end()) {
      for (const StoredRow* row = first; row != last; ++row) count(known->second, row->time);
      tracks.push_back({track, {first, last}});
    }
    first = last;
  }
  for (const auto& [track, range] : tracks) {
    const auto pairs = of_.find(track);
    if (pairs == of_.end()) continue;
    for (const std::size_t index : pairs->second) {
      Pair& pair = pairs_[index];
      const auto partner = std::lower_bound(
          tracks.begin(), tracks.end(), pair.second,
          [](const auto& entry, std::int32_t wanted) { return entry.first < wanted; });
      if (partner == tracks.end() || partner->first != pair.second) continue;
      compare(pair, range, partner->second);
    }
  }
}

void Overlaps::compare(Pair& pair, const Range& first, const Range& second) {
  for (Passage& passage : pair.passages) {
    const StoredRow* next = second.first;
    for (const StoredRow* row = first.first; row != first.second; ++row) {
      const std::int32_t expected = row->time - passage.offset;
      while (next != second.second && next->time < expected - kToleranceInFrames) ++next;
      if (next == second.second) break;
      if (next->time > expected + kToleranceInFrames) continue;
      count(passage.inFirst, row->time);
      count(passage.inSecond, next->time);
    }
  }
}

// Seconds of one of the tracks that any passage covers, or `only` one.
double Overlaps::covered(const Pair& pair, bool first, const Passage* only) const {
  const Seconds& all = rows_.at(first ? pair.first : pair.second);
  int seconds = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const double enough = std::max<double>(kLeastRowsInCommon, kRowsInCommon * all[i]);
    seconds += std::any_of(pair.passages.begin(), pair.passages.end(), [&](const Passage& passage) {
      const Seconds& common = first ? passage.inFirst : passage.inSecond;
      return (only == nullptr || only == &passage) && i < common.size() && common[i] >= enough;
    });
  }
  return seconds;
}

double Overlaps::audible(std::int32_t track) const {
  const Seconds& rows = rows_.at(track);
  return static_cast<double>(std::count_if(
      rows.begin(), rows.end(), [](std::uint16_t count) { return count >= kLeastRowsInCommon; }));
}

Duplicate Overlaps::describe(const Pair& pair) const {
  const Passage* best = &pair.passages.front();
  for (const Passage& passage : pair.passages) {
    if (covered(pair, true, &passage) > covered(pair, true, best)) best = &passage;
  }
  const double secondsPerFrame = static_cast<double>(LirvoxSettings::settingNHop()) /
                                 static_cast<double>(LirvoxSettings::settingSampleRate());
  Duplicate duplicate;
  duplicate.track = pair.first;
  duplicate.other = pair.second;
  duplicate.offsetInSeconds = best->offset * secondsPerFrame;
  // Where one track repeats what the other has once, that counts once.
  duplicate.secondsInCommon = std::min(covered(pair, true, nullptr), covered(pair, false, nullptr));
  double length = std::max(1.0, audible(pair.first));
  double otherLength = std::max(1.0, audible(pair.second));
  if (length < otherLength) {
    std::swap(length, otherLength);
    std::swap(duplicate.track, duplicate.other);
    duplicate.offsetInSeconds = -duplicate.offsetInSeconds;
  }
  duplicate.shareOfTrack = duplicate.secondsInCommon / length;
  duplicate.shareOfOther = duplicate.secondsInCommon / otherLength;
  if (duplicate.shareOfOther >= kNearlyAll) {
    const bool isSame = duplicate.shareOfTrack >= kNearlyAll && otherLength >= kSameLength * length;
    duplicate.relation = isSame ? Duplicate::Relation::same : Duplicate::Relation::contains;
  }
  return duplicate;
}

std::vector<Duplicate> Overlaps::duplicates(double leastSeconds) const {
  std::vector<Duplicate> found;
  for (const Pair& pair : pairs_) {
    const Duplicate duplicate = describe(pair);
    const bool isLong = duplicate.secondsInCommon >= leastSeconds;
    if (isLong || duplicate.relation != Duplicate::Relation::shares) found.push_back(duplicate);
  }
  std::stable_sort(found.begin(), found.end(), [](const Duplicate& a, const Duplicate& b) {
    return a.secondsInCommon > b.secondsInCommon;
  });
  return found;
}

}  // namespace lirvox::catalog
