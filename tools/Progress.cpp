// How far a long command is, on one line of a terminal.
#include "tools/Progress.h"

#include <cmath>
#include <iostream>

#include <unistd.h>

#include "tools/Console.h"

namespace lirvox::tools {

using Clock = std::chrono::steady_clock;

Progress::Progress(std::size_t files, std::uint64_t totalWork)
    : files_(files), totalWork_(totalWork), terminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  hide();
}

void Progress::add(std::uint64_t work, double secondsOfSound) {
  ++filesDone_;
  workDone_ += work;
  sound_ += secondsOfSound;
  if (terminal_ && Clock::now() - shown_ >= std::chrono::milliseconds(100)) show();
}

void Progress::hide() {
  if (terminal_) std::cerr << "\r\033[K" << std::flush;
}

double Progress::elapsedSeconds() const {
  return std::chrono::duration<double>(Clock::now() - start_).count();
}

double Progress::speed() const {
  const double elapsed = elapsedSeconds();
  return elapsed > 0.0 ? sound_ / elapsed : 0.0;
}

void Progress::show() {
  shown_ = Clock::now();
  const double done = static_cast<double>(workDone_) / static_cast<double>(totalWork_);
  const double remaining = done > 0.0 ? elapsedSeconds() * (1.0 - done) / done : 0.0;
  hide();
  std::cerr << filesDone_ << '/' << files_ << " files, " << clockTime(sound_) << " of sound, "
            << std::llround(speed()) << " x real time, " << clockTime(remaining) << " left"
            << std::flush;
}

}  // namespace lirvox::tools
