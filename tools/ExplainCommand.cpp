// lirvox explain: why something was or was not recognised, in words.
#include <iostream>
#include <memory>
#include <string>

#include "lib/LirvoxDatabase.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"
#include "tools/Excerpt.h"
#include "tools/Explanation.h"
#include "tools/Report.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  ExcerptOptions excerpt;
  int minimumVotes = 0;
  int rows = 10;
  std::string format;
  std::string file;
};

int explain(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const Report report(options.database, options.format);
  try {
    const auto samples = readExcerpt(options.file, options.excerpt);
    LirvoxDatabase database(options.database);
    const Examination examined(samples, &database, options.minimumVotes);
    const Titles titles(options.database);
    const Verdict verdict = verdictOn(examined, titles);
    const Explanation explanation{options.file, examined, titles, verdict};
    if (options.format == "json") {
      std::cout << explanation.json() << std::endl;
    } else {
      report.file(options.file, verdict.answer, verdict.votes);
      explanation.print(std::cout, static_cast<std::size_t>(options.rows));
    }
    return verdict.answer.recognized ? exitDone : exitNotRecognized;
  } catch (const AudioError& error) {
    report.failure(options.file, error.what(), 0);
    return exitSomeFailed;
  }
}

}  // namespace

Command explainCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "explain",
      .summary = "Say why a file is or is not recognised",
      .details =
          "Takes the steps of lirvox recognize and shows what each gives: the hashes, what the\n"
          "database has of them, the best aligned tracks, the order in which the vote visits the\n"
          "tracks with what it counts for each, and the reason for the outcome. A place is where\n"
          "in the track the excerpt starts.\n"
          "\n"
          "The best aligned track is the one with the most hits at one offset. It should be the\n"
          "answer if its votes exceed the minimum and stand out: 1.75 times those of the fourth\n"
          "best track, or 4 times those of the 17th. Votes are the hits at that offset and the "
          "two\n"
          "below it, and of the tracks behind the best the one with the most votes comes next.\n"
          "In the vote itself hits stay counted from track to track, and the count that comes "
          "last\n"
          "as text wins: a track may get other votes there than its own.\n"
          "\n"
          "JSON: one object with file, recognized, track_id, title, position, votes, reason,\n"
          "explanation, minimum_votes, query, standing, order and visits (all of them, in their "
          "order).\n"
          "Reasons: stands-out, copy, nobody-silences; too-short, silence, no-landmarks,\n"
          "no-hash-in-database, too-few-votes, no-candidate, does-not-stand-out,\n"
          "hidden-in-the-vote, track-0, database-failure.\n"
          "\n"
          "Examples:\n"
          "  lirvox explain excerpt.ogg\n"
          "  lirvox explain --start 60 --min-votes 20 film.mkv\n"
          "  lirvox explain --format json excerpt.ogg | jq .reason",
      .options = {databaseOption(options->database),
                  startOption(options->excerpt),
                  secondsOption(options->excerpt),
                  votesOption(options->minimumVotes),
                  formatOption(options->format),
                  {.names = "--rows",
                   .value = &options->rows,
                   .help = "Tracks to show in a table of text",
                   .unit = "N",
                   .range = {{1, 1'000'000}}},
                  soundOption(options->file)},
      .run = [options] { return explain(*options); }};
}

}  // namespace lirvox::tools
