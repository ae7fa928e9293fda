// lirvox evaluate: how much is recognised, with which settings.
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "lib/LirvoxSettings.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/EvaluationReport.h"
#include "tools/FileList.h"
#include "tools/OptionText.h"
#include "tools/PercentProgress.h"

namespace lirvox::tools {
namespace {

using catalog::ListedTrack;

struct Options {
  std::string database;
  int excerpts = 100;
  int seed = 1;
  std::string seconds;
  std::string minimums;
  std::string format;
  std::string picture;
  std::vector<std::string> music;
};

constexpr Interval kSeconds = {0.5, 60};
constexpr Interval kVotes = {1, 1'000'000};

// The numbers of a list with commas; none if there is anything else in it.
std::vector<double> numbersIn(const std::string& list, Interval range) {
  std::vector<double> numbers;
  for (const std::string& text : split(list, ",")) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    const bool isNumber = !text.empty() && *end == '\0';
    if (!isNumber || !(number >= range.least && number <= range.most)) return {};
    numbers.push_back(number);
  }
  return numbers;
}

Option listOption(const std::string& names, std::string& value, Interval range,
                  const std::string& help, const std::string& unit) {
  return {.names = names,
          .value = &value,
          .help = help,
          .unit = unit,
          .check = [range](const std::string& list) -> std::string {
            if (!numbersIn(list, range).empty()) return "";
            std::ostringstream text;
            text << list << ": not a list of numbers in [" << range.least << ", " << range.most
                 << "] with commas";
            return text.str();
          }};
}

// The tracks of the database whose files are among the music.
std::vector<ListedTrack> tracksIn(const Options& options, std::size_t& failed) {
  std::map<std::string, ListedTrack> tracks;
  for (const ListedTrack& track : catalog::listTracks(options.database)) {
    tracks[track.info.path] = track;
  }
  std::vector<ListedTrack> found;
  for (const ListedFile& file : listFiles(options.music, failed)) {
    const auto track = tracks.find(file.path);
    if (track != tracks.end()) {
      found.push_back(track->second);
    } else if (file.named) {
      complain(file.path + ": not in the database");
      ++failed;
    }
  }
  return found;
}

bool drawn(const Evaluation& evaluation, const std::string& picture) {
  const std::string headline = counted(evaluation.rows().front().rate.trials, "excerpt") + " of " +
                               counted(evaluation.trackCount(), "track");
  const auto error = drawEvaluation(evaluation.rows(), headline, picture);
  if (error) complain(picture + ": " + error.message());
  return !error;
}

int evaluate(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const std::vector<double> votes = numbersIn(options.minimums, kVotes);
  const EvaluationSettings settings{numbersIn(options.seconds, kSeconds),
                                    {votes.begin(), votes.end()},
                                    options.excerpts,
                                    static_cast<unsigned>(options.seed)};
  if (!options.picture.empty() && settings.seconds.size() * votes.size() > kMostDrawnSettings) {
    complain("a picture has room for " + std::to_string(kMostDrawnSettings) +
             " pairs of length and minimum");
    return exitUsage;
  }
  std::size_t failed = 0;
  Evaluation evaluation(options.database, tracksIn(options, failed), settings);
  if (evaluation.trackCount() == 0) {
    complain("no track of the database among these files that is long enough");
    return exitSomeFailed;
  }
  PercentProgress progress("evaluating");
  evaluation.run(progress.handler());
  progress.hide();
  printEvaluation(evaluation.rows(), options.format);
  if (!options.picture.empty() && !drawn(evaluation, options.picture)) return exitSomeFailed;
  return failed > 0 || evaluation.failedCount() > 0 ? exitSomeFailed : exitDone;
}

Option plotOption(std::string& path) {
  Option option = pictureOption(path);
  option.names = "--plot";
  option.help = "Also draw it: a .svg, .png or .pdf";
  option.required = false;
  return option;
}

}  // namespace

Command evaluateCommand() {
  const auto options = std::make_shared<Options>();
  options->seconds = (std::ostringstream() << LirvoxSettings::recordTime()).str();
  options->minimums = std::to_string(LirvoxSettings::minimumFindedCntDefault());
  return {
      .name = "evaluate",
      .summary = "Measure how much is recognised, to choose length and minimum votes",
      .details =
          "Cuts random excerpts out of MUSIC that is in the database, makes them worse in ways\n"
          "that are usual, and looks each up: among all tracks, and with its own left out.\n"
          "\n"
          "How to read it: RIGHT is the rate at which the right track was answered, higher is\n"
          "better; PLACE the rate at which the place in it was right too, within half a second\n"
          "(music that repeats itself has several). WRONG is another track, ABSENT any track for\n"
          "music that is not in the database: lower is better. More seconds or fewer votes raise\n"
          "RIGHT, fewer votes raise ABSENT too: choose the sound that is like yours, the highest\n"
          "ABSENT you can live with, then the pair with the highest RIGHT. With 100 excerpts a\n"
          "figure near 95 is good to 4 points, one near 50 to 10; for half of that take four\n"
          "times as many. All rows are of the same places and noises, so that their differences\n"
          "are better than that. The same seed gives the same figures.\n"
          "\n"
          "JSON: one object per row, with seconds, min_votes, degradation, excerpts, recognized,\n"
          "right_place, wrong and absent_answered (of 1).\n"
          "\n"
          "Examples:\n"
          "  lirvox evaluate ~/Music\n"
          "  lirvox evaluate --seconds 3,5,8 --min-votes 20,40 --plot rates.png ~/Music\n"
          "  lirvox evaluate --excerpts 400 --format json ~/Music > rates.json",
      .options = {databaseOption(options->database),
                  {.names = "--excerpts",
                   .value = &options->excerpts,
                   .help = "Number of excerpts",
                   .unit = "N",
                   .range = {{1, 100'000}}},
                  {.names = "--seed",
                   .value = &options->seed,
                   .help = "Where chance starts: other places, other noise",
                   .unit = "N",
                   .range = {{0, 2'147'483'647}}},
                  listOption("--seconds", options->seconds, kSeconds,
                             "Lengths to compare, with commas", "SECONDS"),
                  listOption("--min-votes", options->minimums, kVotes,
                             "Minimums to compare, with commas", "N"),
                  formatOption(options->format),
                  plotOption(options->picture),
                  {.names = "MUSIC",
                   .value = &options->music,
                   .help = "Files and folders from which the database was made",
                   .required = true}},
      .run = [options] { return evaluate(*options); }};
}

}  // namespace lirvox::tools
