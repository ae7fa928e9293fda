// One listening: a capture, or capture after capture.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "lib/LirvoxSettings.h"
#include "tools/LevelMeter.h"
#include "tools/LiveRecognizer.h"
#include "tools/RepeatFilter.h"
#include "tools/Report.h"
#include "tools/SoundWatch.h"

namespace lirvox::tools {

/// Listens and prints answers, and on a terminal the level; says what is amiss with the
/// input. One at a time, on the main thread: see `LiveRecognizer`.
class Listening {
 public:
  struct Options {
    std::string database;
    double seconds = LirvoxSettings::recordTime();
    bool continuous = false;
    std::string source;  ///< empty: the default source
    std::int32_t minimumVotes = 0;
    std::string format;
    std::string saveTo;  ///< empty: nowhere
  };

  explicit Listening(const Options& options);

  /// Returns the exit status, after one capture, or when it is interrupted or hears no more.
  int run();

 private:
  enum class End { answered, interrupted, inputGone, drought };

  End capture();
  std::optional<End> look();
  void watch();
  bool inputIsThere(std::chrono::milliseconds patience);
  void tellInput();
  void say(const std::string& text);
  void tell(const Answer& answer);
  void save();

  const Options options_;
  const Report report_;
  LiveRecognizer recognizer_;
  LevelMeter meter_;
  SoundWatch watch_;
  RepeatFilter repeats_;
  std::optional<std::string> inputIdentifier_;  // none before the first, "" for no input
  std::string inputName_;
  std::uint64_t framesBefore_ = 0;
  bool recognizedAny_ = false;
  bool saved_ = true;
};

}  // namespace lirvox::tools
