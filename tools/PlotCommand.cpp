// lirvox plot: why something was or was not recognised, as a picture.
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/Drawing.h"
#include "tools/Excerpt.h"
#include "tools/SpectrogramPlot.h"
#include "tools/Verdict.h"
#include "tools/VotesPlot.h"

namespace lirvox::tools {
namespace {

constexpr double kSpectrogramTop = 124.0;
constexpr double kSpectrogramBottom = 470.0;
constexpr double kVotesTop = 526.0;

struct Options {
  std::string database;
  ExcerptOptions excerpt;
  int minimumVotes = 0;
  std::string picture;
  std::string file;
};

// Where to look for votes: at the winner, or at the one that should be it.
std::optional<TrackPlace> placeOf(const Examination& examined) {
  if (!examined.statistics()) return std::nullopt;
  const Decision& decision = *examined.decision();
  if (decision.result) {
    return TrackPlace{decision.result->result_id.intValue(),
                      decision.result->result_time.intValue()};
  }
  const std::size_t leader = examined.statistics()->leader();
  return TrackPlace{decision.hits.tracks()[leader].id.intValue(), examined.ownOffset(leader)};
}

std::string headline(const Options& options, const Examination& examined, const Verdict& verdict,
                     const Titles& titles) {
  std::string text = shortened(std::filesystem::path(options.file).filename().string(), 50);
  if (options.excerpt.start > 0) text += " from " + clockTime(options.excerpt.start);
  if (!examined.decision()) return text;
  if (!verdict.answer.recognized) return text + ": not recognized";
  return text + ": " + shortened(titles.of(verdict.answer.trackId), 50) + " at " +
         clockTime(verdict.answer.positionInSeconds) + " (" + counted(verdict.votes, "vote") + ')';
}

void draw(Drawing& drawing, const Examination& examined, const Titles& titles,
          const std::string& headline, const std::string& reason) {
  const double width = kPageRight - kPageLeft;
  drawing.text({kPageLeft, 30}, headline, {.size = 20, .bold = true, .maxWidth = width});
  drawing.text({kPageLeft, 58}, reason,
               {.size = 14, .color = palette::pale, .maxWidth = width, .maxLines = 2});
  drawSpectrogram(drawing,
                  {kPageLeft, kSpectrogramTop, width, kSpectrogramBottom - kSpectrogramTop},
                  examined, placeOf(examined));
  if (examined.statistics()) drawVotes(drawing, kPageLeft, kPageRight, kVotesTop, examined, titles);
}

int plot(const Options& options, LirvoxDatabase* database, const Titles& titles) {
  const auto samples = readExcerpt(options.file, options.excerpt);
  const Examination examined(samples, database, options.minimumVotes);
  const Verdict verdict = database ? verdictOn(examined, titles) : Verdict{};
  const std::string title = headline(options, examined, verdict, titles);
  const double height = kVotesTop + (examined.statistics() ? votesHeight(examined) : 0.0);
  Drawing drawing(options.picture, kPageWidth, height);
  draw(drawing, examined, titles, title,
       database ? verdict.sentence : "Without a database, nothing is looked up");
  if (const auto error = drawing.save()) {
    complain(options.picture + ": " + error.message());
    return exitSomeFailed;
  }
  std::cout << title << '\n';
  return exitDone;
}

int plot(const Options& options) {
  // A picture of the sound alone is worth having, unless a database was asked for.
  std::error_code ignored;
  const bool hasDatabase = options.database != LirvoxSettings::databasePath() ||
                           std::filesystem::exists(options.database, ignored);
  if (hasDatabase && !databaseIsUsable(options.database)) return exitDatabase;
  try {
    if (!hasDatabase) return plot(options, nullptr, {});
    LirvoxDatabase database(options.database);
    return plot(options, &database, Titles(options.database));
  } catch (const AudioError& error) {
    complain(options.file + ": " + error.what());
    return exitSomeFailed;
  }
}

}  // namespace

Command plotCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "plot",
      .summary = "Draw why a file is or is not recognised",
      .details =
          "Above, what the recognizer sees: the spectrogram of one of the four shifts, its peaks,\n"
          "and the landmarks that pair them. Those that vote for the winner (or for the best\n"
          "aligned track, if nothing wins) stand out, and the shift is the one that has most of\n"
          "them. Below, the votes of the best aligned tracks by the place in the track: a track\n"
          "that is heard has one high bar. Without any database there is the upper part only.\n"
          "lirvox explain says the same in words.\n"
          "\n"
          "Examples:\n"
          "  lirvox plot excerpt.ogg -o excerpt.png\n"
          "  lirvox plot --start 60 -d music.sqlite film.mkv -o film.svg",
      .options = {databaseOption(options->database), startOption(options->excerpt),
                  secondsOption(options->excerpt, 60), votesOption(options->minimumVotes),
                  pictureOption(options->picture), soundOption(options->file)},
      .run = [options] { return plot(*options); }};
}

}  // namespace lirvox::tools
