// How far a long operation is, on one line of a terminal.
#include "tools/PercentProgress.h"

#include <cmath>

#include "tools/Console.h"

namespace lirvox::tools {

void PercentProgress::show(double done) {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  // What is over at once needs no line.
  if (elapsed.count() < 0.5 || !line_.isDue()) return;
  std::string text = operation_ + ": " + std::to_string(std::lround(100.0 * done)) + " %";
  if (done > 0.02) text += ", " + clockTime(elapsed.count() * (1.0 - done) / done) + " left";
  line_.show(text);
}

}  // namespace lirvox::tools
