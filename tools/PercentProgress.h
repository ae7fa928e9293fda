// How far a long operation is, on one line of a terminal.
#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "catalog/ProgressHandler.h"
#include "tools/TerminalLine.h"

namespace lirvox::tools {

/// Shows a percentage on the standard error stream when that is a terminal, else nothing.
class PercentProgress {
 public:
  explicit PercentProgress(std::string operation) : operation_(std::move(operation)) {}

  /// To be given to the operation; it must not outlive this object.
  catalog::ProgressHandler handler() {
    return [this](double done) { show(done); };
  }

  /// Clears the line, so that something else can be written.
  void hide() const { line_.hide(); }

 private:
  void show(double done);

  const std::string operation_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  TerminalLine line_;
};

}  // namespace lirvox::tools
