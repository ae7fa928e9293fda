// What is heard from when to when, out of one answer after the other.
#include "tools/Stretches.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lirvox::tools {
namespace {

// How far apart two windows may place the beginning of one track. Played at another speed, it
// moves a little from window to window.
constexpr double kToleranceInSeconds = 0.25;

}  // namespace

Stretches::Stretches(double shortestGap, Handler handler)
    : shortestGap_(shortestGap), handler_(std::move(handler)) {}

std::vector<double> Stretches::originsToGoOnWith(std::int32_t trackId, double from) const {
  std::vector<double> origins;
  for (const Open& open : open_) {
    if (mayGoOn(open, trackId, from)) origins.push_back(open.origin);
  }
  return origins;
}

bool Stretches::mayGoOn(const Open& open, std::int32_t trackId, double from) {
  return open.stretch.trackId == trackId && open.windowsTo >= from;
}

void Stretches::add(double from, double to, const std::optional<Sighting>& sighting) {
  if (sighting && !extend(from, to, *sighting)) {
    const Stretch stretch{sighting->from,
                          sighting->to,
                          true,
                          sighting->trackId,
                          sighting->from - sighting->origin,
                          sighting->votes,
                          1};
    open_.push_back({stretch, sighting->origin, to});
  }
  // What ends where this window starts may still go on in the next one: with windows that
  // overlap, one that was not recognised leaves no hole.
  while (!open_.empty() && open_.front().windowsTo < from) {
    tell(open_.front().stretch);
    open_.pop_front();
  }
}

bool Stretches::extend(double from, double to, const Sighting& sighting) {
  for (Open& open : open_) {
    Stretch& stretch = open.stretch;
    if (!mayGoOn(open, sighting.trackId, from) ||
        std::abs(open.origin - sighting.origin) > kToleranceInSeconds) {
      continue;
    }
    stretch.to = std::max(stretch.to, sighting.to);
    stretch.votes = std::max(stretch.votes, sighting.votes);
    ++stretch.windows;
    open.origin = sighting.origin;
    open.windowsTo = to;
    return true;
  }
  return false;
}

void Stretches::finish(double end) {
  for (const Open& open : open_) tell(open.stretch);
  open_.clear();
  tellGap(end);
}

void Stretches::tell(const Stretch& stretch) {
  if (stretch.from - toldTo_ >= shortestGap_) tellGap(stretch.from);
  handler_(stretch);
  toldTo_ = std::max(toldTo_, stretch.to);
  toldAny_ = recognizedAny_ = true;
}

void Stretches::tellGap(double to) {
  // A recording of which nothing was recognised is told, however short.
  if (toldAny_ && to - toldTo_ < shortestGap_) return;
  handler_({.from = toldTo_, .to = to});
  toldTo_ = to;
  toldAny_ = true;
}

}  // namespace lirvox::tools
