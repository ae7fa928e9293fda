// The order in which the vote visits the tracks.
#include "lib/TrackOrder.h"

#include <numeric>

namespace lirvox {

std::vector<std::size_t> chooseTrackOrder(const HitsByTrack& hits, std::int32_t) {
  std::vector<std::size_t> order(hits.tracks().size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

}  // namespace lirvox
