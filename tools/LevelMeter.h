// How loud it is, on one line of a terminal.
#pragma once

#include <cstdint>

namespace lirvox::tools {

/// Drawn on the standard error stream when that is a terminal; else nothing happens.
class LevelMeter {
 public:
  LevelMeter();
  ~LevelMeter() { hide(); }
  LevelMeter(const LevelMeter&) = delete;
  LevelMeter& operator=(const LevelMeter&) = delete;

  bool isShown() const { return terminal_; }
  /// `peak` is a magnitude in [0, 2^31], `seconds` how much of a capture there is. The
  /// bar falls slowly.
  void show(std::uint32_t peak, double seconds, double secondsOfCapture);
  /// Clears the line, so that something else can be written; it comes back with `show`.
  void hide();

 private:
  const bool terminal_;
  std::uint32_t level_ = 0;
};

}  // namespace lirvox::tools
