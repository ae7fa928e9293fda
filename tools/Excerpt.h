// The part of a sound file that is looked at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// Where the part begins and how long it is; without options, as long as a capture.
struct ExcerptOptions {
  ExcerptOptions();

  double start = 0.0;
  double seconds;
};

/// --start, and --seconds with the most it may be.
Option startOption(ExcerptOptions& excerpt);
Option secondsOption(ExcerptOptions& excerpt, double most = 3600);

/// The samples from `start` on (32-bit words, mono, 11025 Hz), `seconds` of them or as many
/// as there are, but one at least. Throws `AudioError`.
std::vector<std::int32_t> readExcerpt(const std::string& file, const ExcerptOptions& excerpt);

}  // namespace lirvox::tools
