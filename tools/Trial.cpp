// Recognitions whose right answer is known.
#include "tools/Trial.h"

#include <cmath>
#include <optional>

#include "lib/Decision.h"
#include "tools/QueryPass.h"

namespace lirvox::tools {
namespace {

constexpr double kPlaceToleranceInSeconds = 0.5;

std::optional<LirvoxResult> voteOn(const PassHits& pass, std::int32_t minimum) {
  const HitsByTrack hits(pass);
  return chooseResult(vote(hits, chooseTrackOrder(hits, minimum).tracks).candidates, minimum);
}

// The hits of all tracks but one.
PassHits without(const PassHits& pass, std::int32_t track) {
  PassHits rest;
  rest.minimumOffset = pass.minimumOffset;
  std::vector<std::uint32_t> places;
  for (const TrackHitCount& count : pass.trackHitCounts) {
    places.push_back(static_cast<std::uint32_t>(rest.trackHitCounts.size()));
    if (count.track_id.intValue() != track) rest.trackHitCounts.push_back(count);
  }
  for (std::size_t i = 0; i < pass.hits.size(); ++i) {
    if (pass.hits[i].hit_id.intValue() == track) continue;
    rest.hits.push_back(pass.hits[i]);
    rest.trackOfHit.push_back(places[pass.trackOfHit[i]]);
  }
  return rest;
}

}  // namespace

std::vector<QueryHash> hashesOf(const std::vector<std::int32_t>& samples) {
  QueryPass pass;
  pass.add(samples.data(), samples.size());
  std::vector<QueryHash> hashes;
  for (const auto& shift : pass.hashesByShift()) {
    hashes.insert(hashes.end(), shift.begin(), shift.end());
  }
  return hashes;
}

void judge(const PassHits& pass, const Truth& truth, std::int32_t minimum, Rate& rate) {
  ++rate.trials;
  if (const auto result = voteOn(pass, minimum)) {
    const double start = secondsOf(result->result_time);
    const bool right = result->result_id.intValue() == truth.trackId;
    ++(right ? rate.right : rate.wrong);
    if (right && std::abs(start - truth.startInSeconds) < kPlaceToleranceInSeconds) {
      ++rate.rightPlace;
    }
  }
  if (voteOn(without(pass, truth.trackId), minimum)) ++rate.absentAnswered;
}

}  // namespace lirvox::tools
