// lirvox scan: what is heard when in a long recording.
#include <memory>
#include <optional>
#include <string>

#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/ScanReport.h"
#include "tools/Scanner.h"
#include "tools/TerminalLine.h"
#include "tools/Wakeup.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  double seconds = LirvoxSettings::recordTime();
  std::optional<double> step;
  int minimumVotes = 0;
  std::string format;
  std::string file;
};

void read(const std::string& file, Scanner& scanner, TerminalLine& line) {
  bool ended = false;
  readAudio(file, [&](const std::int32_t* words, std::size_t count) {
    scanner.add(words, count);
    if (line.isDue()) line.show(file + ": " + clockTime(scanner.seconds()));
    ended = signalCaught() || outputIsClosed();
    return !ended;
  });
  if (!ended && scanner.seconds() == 0.0) {
    throw AudioError(AudioError::Kind::noAudio, "no audio");
  }
}

int scan(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  catchSignals();
  const ScanReport report(options.database, options.format);
  TerminalLine line;
  Scanner scanner({options.database, options.seconds, options.step.value_or(options.seconds / 2),
                   options.minimumVotes},
                  [&](const Stretch& stretch) {
                    line.hide();
                    report.stretch(stretch);
                  });
  try {
    read(options.file, scanner, line);
  } catch (const AudioError& error) {
    line.hide();
    if (!signalCaught()) {
      complain(options.file + ": " + error.what());
      return exitSomeFailed;
    }
  }
  if (scanner.seconds() > 0.0) scanner.finish();
  return scanner.recognizedAny() ? exitDone : exitNotRecognized;
}

}  // namespace

Command scanCommand() {
  const auto options = std::make_shared<Options>();
  Option format = formatOption(options->format);
  format.choices.push_back("csv");
  return {
      .name = "scan",
      .summary = "Say what is heard when in a long recording",
      .details =
          "Recognises window after window, and joins those that agree on the track and on when\n"
          "it began. A stretch is told as soon as it is over: from when to when, the title, the\n"
          "place in the track where the stretch starts, and the most votes that a window got.\n"
          "Gaps of a step or more are told too. The memory does not grow with the recording;\n"
          "Ctrl-C ends it with what was heard so far.\n"
          "\n"
          "A shorter step finds shorter pieces and takes longer; longer windows stand more\n"
          "noise. Music that repeats itself is told as one stretch as long as it may go on.\n"
          "\n"
          "JSON: one object per stretch and line, with from, to (seconds in the recording),\n"
          "recognized, track_id, title, position (seconds in the track), votes and windows. CSV\n"
          "has the same columns without recognized; those of a gap are empty.\n"
          "\n"
          "Examples:\n"
          "  lirvox scan broadcast.mp3\n"
          "  lirvox scan --format csv --seconds 8 film.mkv > music.csv\n"
          "  some-recorder | lirvox scan --format json - | jq .title",
      .options = {databaseOption(options->database),
                  {.names = "--seconds",
                   .value = &options->seconds,
                   .help = "Length of a window",
                   .unit = "SECONDS",
                   .range = {{1, 60}}},
                  {.names = "--step",
                   .value = &options->step,
                   .help = "Time from window to window",
                   .unit = "SECONDS",
                   .range = {{0.1, 3600}},
                   .standard = "half a window"},
                  votesOption(options->minimumVotes),
                  format,
                  soundOption(options->file)},
      .run = [options] { return scan(*options); }};
}

}  // namespace lirvox::tools
