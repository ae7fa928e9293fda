// The hits of a pass, laid out for the vote.
#include "lib/HitsByTrack.h"

#include <algorithm>

namespace lirvox {
namespace {

// Offsets up to this many frames (27 hours) are bins as they are: 16 MB at worst.
constexpr std::uint32_t kDirectBins = 1U << 22;

// Bins further apart than this never share a window.
constexpr std::uint32_t kGap = 3;

std::uint32_t normalized(const LirvoxHit& hit) {
  return static_cast<std::uint32_t>(hit.hit_time.intValue());
}

}  // namespace

HitsByTrack::HitsByTrack(const PassHits& pass) : minimumOffset_(pass.minimumOffset) {
  const std::vector<Bin> binOfHit = binsOf(pass);
  std::vector<Bin*> ends;
  bins_.resize(pass.hits.size());
  Bin* next = bins_.data();
  for (const TrackHitCount& track : pass.trackHitCounts) {
    ends.push_back(next);
    next += track.count;
    tracks_.push_back({track.track_id, ends.back(), next});
  }
  for (std::size_t i = 0; i < pass.hits.size(); ++i) {
    *ends[pass.trackOfHit[i]]++ = binOfHit[i];
  }
}

std::vector<HitsByTrack::Bin> HitsByTrack::binsOf(const PassHits& pass) {
  std::vector<Bin> bins(pass.hits.size());
  std::transform(pass.hits.begin(), pass.hits.end(), bins.begin(), normalized);
  if (bins.empty()) return bins;
  const std::uint32_t largest = *std::max_element(bins.begin(), bins.end());
  if (largest < kDirectBins) {
    binCount_ = std::size_t{largest} + 1;
    return bins;
  }
  // A damaged or odd file: number the offsets that occur, with gaps cut short.
  std::vector<Bin> occurring = bins;
  std::sort(occurring.begin(), occurring.end());
  occurring.erase(std::unique(occurring.begin(), occurring.end()), occurring.end());
  std::vector<Bin> numbers(occurring.size());
  for (std::size_t i = 1; i < occurring.size(); ++i) {
    numbers[i] = numbers[i - 1] + std::min(occurring[i] - occurring[i - 1], kGap);
  }
  binCount_ = std::size_t{numbers.back()} + 1;
  offsets_.resize(binCount_);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    offsets_[numbers[i]] = static_cast<std::int32_t>(occurring[i]);
  }
  for (Bin& bin : bins) {
    const auto place = std::lower_bound(occurring.begin(), occurring.end(), bin);
    bin = numbers[static_cast<std::size_t>(place - occurring.begin())];
  }
  return bins;
}

std::int32_t HitsByTrack::offset(Bin bin) const {
  const auto normalizedOffset = offsets_.empty() ? static_cast<std::int32_t>(bin) : offsets_[bin];
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(normalizedOffset) +
                                   static_cast<std::uint32_t>(minimumOffset_));
}

}  // namespace lirvox
