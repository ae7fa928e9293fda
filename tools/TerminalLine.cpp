// One line of a terminal that is written again and again.
#include "tools/TerminalLine.h"

#include <iostream>

#include <unistd.h>

namespace lirvox::tools {

using Clock = std::chrono::steady_clock;

TerminalLine::TerminalLine() : terminal_(::isatty(STDERR_FILENO) == 1) {}

bool TerminalLine::isDue() const {
  return terminal_ && Clock::now() - shown_ >= std::chrono::milliseconds(100);
}

void TerminalLine::show(const std::string& text) {
  shown_ = Clock::now();
  hide();
  if (terminal_) std::cerr << text << std::flush;
}

void TerminalLine::hide() const {
  if (terminal_) std::cerr << "\r\033[K" << std::flush;
}

}  // namespace lirvox::tools
