// lirvox recognize: which track a file is, and where in it.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "lib/LirvoxDatabase.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"
#include "tools/Examination.h"
#include "tools/Excerpt.h"
#include "tools/FileRecognizer.h"
#include "tools/Report.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  ExcerptOptions excerpt;
  std::int32_t minimumVotes = 0;
  std::string format;
  std::vector<std::string> files;
};

// The delegate does not tell the votes, so the steps of the pass are asked for them.
std::int32_t votesOf(const std::vector<std::int32_t>& samples, const Options& options) {
  LirvoxDatabase database(options.database);
  const Examination examined(samples, &database, options.minimumVotes);
  const auto& result = examined.decision()->result;
  return result ? result->result_count.intValue() : 0;
}

int recognize(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const Report report(options.database, options.format);
  FileRecognizer recognizer(options.database, options.minimumVotes);
  bool recognizedAny = false;
  bool failedAny = false;
  for (const std::string& file : options.files) {
    try {
      const auto samples =
          std::make_shared<const std::vector<std::int32_t>>(readExcerpt(file, options.excerpt));
      const Answer answer = recognizer.recognize(samples);
      recognizedAny = recognizedAny || answer.recognized;
      report.file(file, answer, answer.recognized ? votesOf(*samples, options) : 0);
    } catch (const AudioError& error) {
      failedAny = true;
      report.failure(file, error.what(), 0);
    }
  }
  if (failedAny) return exitSomeFailed;
  return recognizedAny ? exitDone : exitNotRecognized;
}

}  // namespace

Command recognizeCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "recognize",
      .summary = "Say which track a file is, and where in it",
      .details =
          "JSON: one object per file and line, with file, recognized, track_id, title, position\n"
          "(seconds in the track at the excerpt's start) and votes.\n"
          "\n"
          "Examples:\n"
          "  lirvox recognize excerpt.ogg\n"
          "  lirvox recognize --start 60 --seconds 8 --format json film.mkv\n"
          "  some-recorder | lirvox recognize -",
      .options = {databaseOption(options->database),
                  startOption(options->excerpt),
                  secondsOption(options->excerpt),
                  votesOption(options->minimumVotes),
                  formatOption(options->format),
                  {.names = "FILE",
                   .value = &options->files,
                   .help = "Sound or video files, *.dat recordings, or - for standard input",
                   .required = true}},
      .run = [options] { return recognize(*options); }};
}

}  // namespace lirvox::tools
