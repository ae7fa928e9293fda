// The part of a sound file that is looked at.
#include "tools/Excerpt.h"

#include <algorithm>
#include <cstddef>

#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"

namespace lirvox::tools {

ExcerptOptions::ExcerptOptions() : seconds(LirvoxSettings::recordTime()) {}

Option startOption(ExcerptOptions& excerpt) {
  return {.names = "--start",
          .value = &excerpt.start,
          .help = "Where the excerpt starts",
          .unit = "SECONDS",
          .range = {{0, 1e7}}};
}

Option secondsOption(ExcerptOptions& excerpt, double most) {
  return {.names = "--seconds",
          .value = &excerpt.seconds,
          .help = "Length of the excerpt",
          .unit = "SECONDS",
          .range = {{0.001, most}}};
}

std::vector<std::int32_t> readExcerpt(const std::string& file, const ExcerptOptions& excerpt) {
  const auto rate = static_cast<double>(LirvoxSettings::sampleRate());
  auto skip = static_cast<std::size_t>(excerpt.start * rate);
  const auto wanted = static_cast<std::size_t>(excerpt.seconds * rate);
  std::vector<std::int32_t> samples;
  readAudio(file, [&](const std::int32_t* words, std::size_t count) {
    const std::size_t skipped = std::min(skip, count);
    skip -= skipped;
    const std::size_t taken = std::min(count - skipped, wanted - samples.size());
    samples.insert(samples.end(), words + skipped, words + skipped + taken);
    return samples.size() < wanted;
  });
  if (samples.empty()) throw AudioError(AudioError::Kind::noAudio, "no audio at that place");
  return samples;
}

}  // namespace lirvox::tools
