// lirvox list: the tracks of a database.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "catalog/TrackList.h"
#include "tools/CatalogReport.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/PercentProgress.h"

namespace lirvox::tools {
namespace {

using catalog::ListedTrack;

struct Options {
  std::string database;
  std::string format;
  std::string order = "id";
  std::string pattern;
};

void sort(std::vector<ListedTrack>& tracks, const std::string& order) {
  const auto by = [&](auto key) {
    std::stable_sort(tracks.begin(), tracks.end(),
                     [&](const ListedTrack& a, const ListedTrack& b) { return key(a) < key(b); });
  };
  if (order == "title") by([](const ListedTrack& track) { return track.info.title; });
  if (order == "artist")
    by([](const ListedTrack& track) { return catalog::fullTitle(track.info); });
  if (order == "path") by([](const ListedTrack& track) { return track.info.path; });
  if (order == "duration")
    by([](const ListedTrack& track) { return track.info.durationInSeconds; });
}

int list(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  std::vector<ListedTrack> tracks = catalog::listTracks(options.database);
  if (!options.pattern.empty()) {
    const auto pattern = catalog::TrackPattern::anywhere(options.pattern);
    const auto other = [&](const ListedTrack& track) { return !pattern.matches(track); };
    tracks.erase(std::remove_if(tracks.begin(), tracks.end(), other), tracks.end());
    if (tracks.empty()) {
      complain(options.pattern + ": no such track");
      return exitSomeFailed;
    }
  }
  PercentProgress progress("counting rows");
  catalog::countRows(options.database, tracks, progress.handler());
  progress.hide();
  sort(tracks, options.order);
  CatalogReport(options.format).tracks(tracks);
  return exitDone;
}

}  // namespace

Command listCommand() {
  const auto options = std::make_shared<Options>();
  Option format = formatOption(options->format);
  format.choices.push_back("csv");
  return {.name = "list",
          .summary = "Say which tracks a database holds",
          .details =
              "PATTERN is an id, or a part of a title, an artist or a path, of either case; * "
              "stands\n"
              "for anything, ? for one character. Rows are those that recognitions look at.\n"
              "\n"
              "Examples:\n"
              "  lirvox list\n"
              "  lirvox list -d radio.sqlite --sort artist 'symphony*live'\n"
              "  lirvox list --format csv > tracks.csv",
          .options = {databaseOption(options->database),
                      {.names = "--sort",
                       .value = &options->order,
                       .help = "What to order the tracks by",
                       .choices = {"id", "title", "artist", "path", "duration"}},
                      format,
                      {.names = "PATTERN", .value = &options->pattern, .help = "Tracks to list"}},
          .run = [options] { return list(*options); }};
}

}  // namespace lirvox::tools
