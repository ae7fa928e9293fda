// How far a long command is, on one line of a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "tools/TerminalLine.h"

namespace lirvox::tools {

/// Shows progress on the standard error stream when that is a terminal, else nothing.
/// One thread at a time.
class Progress {
 public:
  /// `totalWork` is in any unit that work done is counted in, such as bytes.
  Progress(std::size_t files, std::uint64_t totalWork) : files_(files), totalWork_(totalWork) {}

  /// One more file is done: its share of the work and the sound it held.
  void add(std::uint64_t work, double secondsOfSound);

  /// Clears the line, so that something else can be written; it comes back with `add`.
  void hide() const { line_.hide(); }

  double secondsOfSound() const { return sound_; }
  double elapsedSeconds() const;
  /// Seconds of sound per second, or 0 at the very beginning.
  double speed() const;

 private:
  void show();

  const std::size_t files_;
  const std::uint64_t totalWork_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  TerminalLine line_;
  std::size_t filesDone_ = 0;
  std::uint64_t workDone_ = 0;
  double sound_ = 0.0;
};

}  // namespace lirvox::tools
