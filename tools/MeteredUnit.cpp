// An audio unit that is watched.
#include "tools/MeteredUnit.h"

#include <algorithm>

namespace lirvox::tools {

MeteredUnit::Status MeteredUnit::noted(Status status) {
  if (status != platform::audioNoError) level_->failed = true;
  return platform::audioNoError;
}

MeteredUnit::Status MeteredUnit::stop() {
  const Status status = unit_->stop();
  stopped_();
  return noted(status);
}

MeteredUnit::Status MeteredUnit::render(RenderActionFlags& actionFlags,
                                        const platform::AudioTimeStamp& timeStamp,
                                        std::uint32_t busNumber, std::uint32_t numberFrames,
                                        platform::AudioBufferList& list) {
  const Status status = unit_->render(actionFlags, timeStamp, busNumber, numberFrames, list);
  if (status != platform::audioNoError) return status;
  const auto* const samples = static_cast<const std::int32_t*>(list.buffers.front().data);
  const auto [low, high] = std::minmax_element(samples, samples + numberFrames);
  const auto peak = static_cast<std::uint32_t>(std::max(-std::int64_t{*low}, std::int64_t{*high}));
  std::uint32_t known = level_->peak.load();
  while (known < peak && !level_->peak.compare_exchange_weak(known, peak)) {
  }
  level_->frames += numberFrames;
  return status;
}

}  // namespace lirvox::tools
