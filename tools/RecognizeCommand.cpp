// lirvox recognize: which track a file is, and where in it.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"
#include "tools/FileRecognizer.h"
#include "tools/QueryPass.h"
#include "tools/Report.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  double start = 0.0;
  double seconds = LirvoxSettings::recordTime();
  std::int32_t minimumVotes = 0;
  std::string format;
  std::vector<std::string> files;
};

// The samples from `start` on, `seconds` of them or as many as there are.
std::vector<std::int32_t> readExcerpt(const std::string& file, double start, double seconds) {
  const auto rate = static_cast<double>(LirvoxSettings::sampleRate());
  auto skip = static_cast<std::size_t>(start * rate);
  const auto wanted = static_cast<std::size_t>(seconds * rate);
  std::vector<std::int32_t> samples;
  readAudio(file, [&](const std::int32_t* words, std::size_t count) {
    const std::size_t skipped = std::min(skip, count);
    skip -= skipped;
    const std::size_t taken = std::min(count - skipped, wanted - samples.size());
    samples.insert(samples.end(), words + skipped, words + skipped + taken);
    return samples.size() < wanted;
  });
  if (samples.empty()) throw AudioError(AudioError::Kind::noAudio, "no audio at that place");
  return samples;
}

// The delegate does not tell the votes, so the pieces of the pass are asked for them.
std::int32_t votesOf(const std::vector<std::int32_t>& samples, const Options& options) {
  QueryPass pass;
  pass.add(samples.data(), samples.size());
  std::vector<QueryHash> hashes;
  for (const auto& shift : pass.hashesByShift())
    hashes.insert(hashes.end(), shift.begin(), shift.end());
  LirvoxDatabase database(options.database);
  const auto result = lookUp(database, hashes, options.minimumVotes);
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
      const auto samples = std::make_shared<const std::vector<std::int32_t>>(
          readExcerpt(file, options.start, options.seconds));
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
                  {.names = "--start",
                   .value = &options->start,
                   .help = "Where the excerpt starts",
                   .unit = "SECONDS",
                   .range = {{0, 1e7}}},
                  {.names = "--seconds",
                   .value = &options->seconds,
                   .help = "Length of the excerpt",
                   .unit = "SECONDS",
                   .range = {{0.001, 3600}}},
                  votesOption(options->minimumVotes),
                  formatOption(options->format),
                  {.names = "FILE",
                   .value = &options->files,
                   .help = "Sound or video files, *.dat recordings, or - for standard input",
                   .required = true}},
      .run = [options] { return recognize(*options); }};
}

}  // namespace lirvox::tools
