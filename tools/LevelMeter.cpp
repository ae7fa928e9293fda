// How loud it is, on one line of a terminal.
#include "tools/LevelMeter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

namespace lirvox::tools {
namespace {

constexpr double kQuietest = -60;  // dB of full scale
constexpr int kWidth = 30;

}  // namespace

LevelMeter::LevelMeter() : terminal_(::isatty(STDERR_FILENO) == 1) {}

void LevelMeter::show(std::uint32_t peak, double seconds, double secondsOfCapture) {
  if (!terminal_) return;
  level_ = std::max(peak, level_ / 2);
  const double level = level_ > 0 ? 20 * std::log10(level_ / 2147483648.0) : -INFINITY;
  const double share = std::clamp(1 - level / kQuietest, 0.0, 1.0);
  const auto bars = static_cast<std::size_t>(std::lround(share * kWidth));
  std::array<char, 64> numbers{};
  if (level > kQuietest) {
    std::snprintf(numbers.data(), numbers.size(), "%4.0f dB", level);
  } else {
    std::snprintf(numbers.data(), numbers.size(), " silent");
  }
  std::string line = '[' + std::string(bars, '#') + std::string(kWidth - bars, ' ') + "] ";
  line += numbers.data();
  std::snprintf(numbers.data(), numbers.size(), "  %.1f of %g s", seconds, secondsOfCapture);
  std::cerr << "\r\033[K" << line << numbers.data() << std::flush;
}

void LevelMeter::hide() {
  if (terminal_) std::cerr << "\r\033[K" << std::flush;
}

}  // namespace lirvox::tools
