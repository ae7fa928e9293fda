// How far a long command is, on one line of a terminal.
#include "tools/Progress.h"

#include <cmath>
#include <sstream>

#include "tools/Console.h"

namespace lirvox::tools {

using Clock = std::chrono::steady_clock;

void Progress::add(std::uint64_t work, double secondsOfSound) {
  ++filesDone_;
  workDone_ += work;
  sound_ += secondsOfSound;
  if (line_.isDue()) show();
}

double Progress::elapsedSeconds() const {
  return std::chrono::duration<double>(Clock::now() - start_).count();
}

double Progress::speed() const {
  const double elapsed = elapsedSeconds();
  return elapsed > 0.0 ? sound_ / elapsed : 0.0;
}

void Progress::show() {
  const double done = static_cast<double>(workDone_) / static_cast<double>(totalWork_);
  const double remaining = done > 0.0 ? elapsedSeconds() * (1.0 - done) / done : 0.0;
  std::ostringstream text;
  text << filesDone_ << '/' << counted(files_, "file") << ", " << clockTime(sound_) << " of sound, "
       << std::llround(speed()) << " x real time, " << clockTime(remaining) << " left";
  line_.show(text.str());
}

}  // namespace lirvox::tools
