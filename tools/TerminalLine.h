// One line of a terminal that is written again and again.
#pragma once

#include <chrono>
#include <string>

namespace lirvox::tools {

/// Shows text on the standard error stream when that is a terminal, else nothing. One
/// thread at a time.
class TerminalLine {
 public:
  TerminalLine();
  ~TerminalLine() { hide(); }

  TerminalLine(const TerminalLine&) = delete;
  TerminalLine& operator=(const TerminalLine&) = delete;

  /// Whether it is time to show something newer: ten times a second is enough.
  bool isDue() const;
  void show(const std::string& text);
  /// Clears the line, so that something else can be written.
  void hide() const;

 private:
  const bool terminal_;
  std::chrono::steady_clock::time_point shown_;
};

}  // namespace lirvox::tools
