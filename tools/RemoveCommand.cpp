// lirvox remove: tracks out of a catalogue.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/TrackChanges.h"
#include "tools/CatalogReport.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/NamedTracks.h"
#include "tools/Question.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string format;
  bool yes = false;
  std::vector<std::string> tracks;
};

int remove(const Options& options) {
  catalog::expectWritableCatalog(options.database);  // nobody is asked about another file
  const std::vector<catalog::ListedTrack> tracks = findTracks(options.database, options.tracks);
  if (tracks.empty()) return exitSomeFailed;
  std::cerr << CatalogReport::lines(tracks);
  const std::string number = counted(tracks.size(), "track");
  if (const auto status =
          refused("Remove " + number + " from " + options.database + '?', options.yes))
    return *status;
  catalog::removeTracks(options.database, tracks);
  std::cerr << number << " removed: " << options.database << '\n';
  if (options.format == "json") CatalogReport(options.format).changed(tracks);
  return exitDone;
}

}  // namespace

Command removeCommand() {
  const auto options = std::make_shared<Options>();
  return {.name = "remove",
          .summary = "Remove tracks from a database",
          .details = std::string(kTrackHelp) +
                     "\n"
                     "The tracks that match are listed before they go, and a question is asked. "
                     "The music itself\n"
                     "is left alone. Ids of removed tracks are not given again. The file keeps its "
                     "size; lirvox\n"
                     "merge -o small.sqlite music.sqlite makes one without the gaps.\n"
                     "\n"
                     "Examples:\n"
                     "  lirvox remove 12\n"
                     "  lirvox remove -d radio.sqlite '*/jingles/*' ~/Music/old.ogg\n"
                     "  lirvox remove --yes 'Some Artist - *'",
          .options = {databaseOption(options->database),
                      yesOption(options->yes),
                      formatOption(options->format),
                      {.names = "TRACK",
                       .value = &options->tracks,
                       .help = "Tracks to remove",
                       .required = true}},
          .run = [options] { return remove(*options); }};
}

}  // namespace lirvox::tools
