// A recording of any length, recognised window by window.
#include "tools/Scanner.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "catalog/CatalogError.h"
#include "lib/LirvoxSettings.h"
#include "tools/Examination.h"

namespace lirvox::tools {
namespace {

std::size_t samplesIn(double seconds) {
  return static_cast<std::size_t>(seconds * LirvoxSettings::sampleRate());
}

double framesInSeconds(std::int32_t frames) {
  return secondsOf(DecimalString(frames));
}

// The share of the winner's votes that another place of the track needs to be as good.
constexpr double kAsGood = 0.5;

// What votes for a track at an offset: how many hits, from frame to frame.
struct Voters {
  std::int32_t count = 0;
  std::int32_t first = std::numeric_limits<std::int32_t>::max();
  std::int32_t last = 0;
};

// The hits up to `tolerance` frames beside the offset.
Voters votersOf(const Examination& examined, DecimalString track, std::int32_t offset,
                std::int32_t tolerance) {
  // The six lower bits of a hash say how much later its second peak is.
  constexpr std::int32_t kDistanceMask = 63;
  Voters voters;
  for (const auto& shift : examined.hashesByShift()) {
    for (const QueryHash& query : shift) {
      for (const LirvoxDBRow& row : examined.rows()->find(DecimalString(query.hash))) {
        const std::int64_t place = std::int64_t{row.time_in_track.intValue()} - query.time;
        if (row.track_id != track || std::abs(place - offset) > tolerance) continue;
        ++voters.count;
        voters.first = std::min(voters.first, query.time);
        voters.last = std::max(voters.last, query.time + (query.hash & kDistanceMask));
      }
    }
  }
  return voters;
}

}  // namespace

Scanner::Scanner(const Options& options, Stretches::Handler handler)
    : size_(samplesIn(options.windowInSeconds)),
      step_(samplesIn(options.stepInSeconds)),
      minimum_(options.minimumVotes),
      database_(options.database),
      stretches_(options.stepInSeconds, std::move(handler)) {}

void Scanner::add(const std::int32_t* words, std::size_t count) {
  while (count > 0) {
    // A step may be longer than a window: then some samples are in none.
    const auto before = static_cast<std::size_t>(std::max<std::int64_t>(start_ - received_, 0));
    const std::size_t skipped = std::min(count, before);
    const std::size_t taken = std::min(count - skipped, size_ - window_.size());
    window_.insert(window_.end(), words + skipped, words + skipped + taken);
    words += skipped + taken;
    count -= skipped + taken;
    received_ += static_cast<std::int64_t>(skipped + taken);
    if (window_.size() == size_) {
      look();
      advance();
    }
  }
}

void Scanner::advance() {
  const std::size_t gone = std::min(step_, window_.size());
  window_.erase(window_.begin(), window_.begin() + static_cast<std::ptrdiff_t>(gone));
  start_ += static_cast<std::int64_t>(step_);
}

void Scanner::finish() {
  if (!window_.empty() && received_ > lookedTo_) look();
  stretches_.finish(seconds());
}

void Scanner::look() {
  stretches_.add(secondsOf(start_), secondsOf(received_), sighting());
  lookedTo_ = received_;
}

std::optional<Stretches::Sighting> Scanner::sighting() {
  const Examination examined(window_, &database_, minimum_);
  if (!examined.rows()) {
    throw catalog::CatalogError(database_.sqlitePath() + ": the database could not be read");
  }
  const auto& result = examined.decision()->result;
  if (!result) return std::nullopt;
  const std::int32_t place = placeOf(examined, *result);
  // A vote counts the hits in a window of three offsets.
  const Voters voters = votersOf(examined, result->result_id, place, 1);
  const double start = secondsOf(start_);
  const bool isTheWinners = place == result->result_time.intValue();
  return Stretches::Sighting{result->result_id.intValue(), start - framesInSeconds(place),
                             isTheWinners ? result->result_count.intValue() : voters.count,
                             start + framesInSeconds(voters.first),
                             std::min(start + framesInSeconds(voters.last), seconds())};
}

// Music that repeats itself is found now in one of the places that are alike, now in another.
// The one in which it would simply go on is preferred.
std::int32_t Scanner::placeOf(const Examination& examined, const LirvoxResult& result) const {
  const double start = secondsOf(start_);
  const std::int32_t needed =
      std::max(minimum_, static_cast<std::int32_t>(kAsGood * result.result_count.intValue()));
  for (const double origin : stretches_.originsToGoOnWith(result.result_id.intValue(), start)) {
    const auto expected =
        static_cast<std::int32_t>(std::lround((start - origin) / framesInSeconds(1)));
    for (const std::int32_t place : {expected, expected - 1, expected + 1}) {
      if (votersOf(examined, result.result_id, place, 1).count > needed) return place;
    }
  }
  return result.result_time.intValue();
}

double Scanner::secondsOf(std::int64_t samples) {
  return static_cast<double>(samples) / LirvoxSettings::sampleRate();
}

}  // namespace lirvox::tools
