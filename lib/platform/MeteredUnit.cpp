// An audio unit whose sound is measured.
#include "lib/platform/MeteredUnit.h"

#include <algorithm>

namespace lirvox::platform {

std::shared_ptr<SoundLevel> MeteredUnit::meterInput(Platform& platform) {
  auto level = std::make_shared<SoundLevel>();
  if (!platform.makeInputUnit) return level;
  platform.makeInputUnit = [makeUnit = platform.makeInputUnit,
                            level](AudioStatus& status) -> std::unique_ptr<AudioUnit> {
    auto unit = makeUnit(status);
    if (!unit) return nullptr;
    return std::make_unique<MeteredUnit>(std::move(unit), level);
  };
  return level;
}

AudioStatus MeteredUnit::render(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                                std::uint32_t busNumber, std::uint32_t numberFrames,
                                AudioBufferList& list) {
  const AudioStatus status = unit_->render(actionFlags, timeStamp, busNumber, numberFrames, list);
  if (status != audioNoError) return status;
  level_->frames += numberFrames;
  if (!measures_) return status;
  const auto* const samples = static_cast<const std::int32_t*>(list.buffers.front().data);
  const auto [low, high] = std::minmax_element(samples, samples + numberFrames);
  const auto peak = static_cast<std::uint32_t>(std::max(-std::int64_t{*low}, std::int64_t{*high}));
  std::uint32_t known = level_->peak.load();
  while (known < peak && !level_->peak.compare_exchange_weak(known, peak)) {
  }
  return status;
}

}  // namespace lirvox::platform
