// lirvox replay: a capture that was kept, recognised again.
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"
#include "tools/FileRecognizer.h"
#include "tools/Report.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::int32_t minimumVotes = 0;
  std::string format;
  std::string file;
};

int replay(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const Report report(options.database, options.format);
  // A recording that is missing would be taken for one in which nothing is recognized.
  if (std::ifstream(options.file, std::ios::binary).peek() == std::ifstream::traits_type::eof()) {
    report.failure(options.file, "no recording");
    return exitSomeFailed;
  }
  const Answer answer = FileRecognizer(options.database, options.minimumVotes).replay(options.file);
  report.file(options.file, answer);
  return answer.recognized ? exitDone : exitNotRecognized;
}

}  // namespace

Command replayCommand() {
  const auto options = std::make_shared<Options>();
  return {.name = "replay",
          .summary = "Recognise a capture that listen --save has kept",
          .details =
              "The recording is replayed as an application replays the one among its resources:\n"
              "all of it, and in 4 seconds, however long it is. lirvox recognize reads it too, at\n"
              "once.\n"
              "\n"
              "Example:\n"
              "  lirvox replay heard.dat",
          .options = {databaseOption(options->database),
                      votesOption(options->minimumVotes),
                      formatOption(options->format),
                      {.names = "FILE",
                       .value = &options->file,
                       .help = "A recording: 32-bit samples, mono, 11025 Hz",
                       .required = true}},
          .run = [options] { return replay(*options); }};
}

}  // namespace lirvox::tools
