// Notices an input that is dead or silent.
#include "tools/SoundWatch.h"

namespace lirvox::tools {
namespace {

// The least step of 16-bit sound, which is all that dither makes of silence.
constexpr std::uint32_t kFaintest = 1U << 16;

}  // namespace

void SoundWatch::begin(Time now) {
  begin_ = lastArrival_ = now;
  heard_ = false;
}

std::optional<SoundWatch::State> SoundWatch::note(Time now, std::uint64_t frames,
                                                  std::uint32_t peak) {
  if (frames != frames_) lastArrival_ = now;
  frames_ = frames;
  if (peak > kFaintest) heard_ = true;
  const State state = stateAt(now);
  if (state == told_) return std::nullopt;
  told_ = state;
  return state;
}

SoundWatch::State SoundWatch::stateAt(Time now) const {
  if (now - lastArrival_ >= patience) return State::noAudio;
  if (heard_) return State::sound;
  return now - begin_ >= patience ? State::silence : told_;
}

}  // namespace lirvox::tools
