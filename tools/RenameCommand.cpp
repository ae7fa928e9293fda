// lirvox rename: other names for a track.
#include <filesystem>
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

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string format;
  std::string track;
  catalog::NewNames names;
};

int rename(Options options) {
  catalog::NewNames& names = options.names;
  if (!names.title && !names.artist && !names.path) {
    complain("nothing to change: give --title, --artist or --path");
    return exitUsage;
  }
  catalog::expectWritableCatalog(options.database);
  const std::vector<catalog::ListedTrack> tracks = findTracks(options.database, {options.track});
  if (tracks.empty()) return exitSomeFailed;
  if (tracks.size() > 1) {
    std::cerr << CatalogReport::lines(tracks);
    complain(options.track + ": " + std::to_string(tracks.size()) +
             " tracks match; choose one by its id");
    return exitSomeFailed;
  }
  std::error_code ignored;
  if (names.path) names.path = std::filesystem::weakly_canonical(*names.path, ignored).string();
  catalog::renameTrack(options.database, tracks.front(), names);
  const auto renamed = findTracks(options.database, {std::to_string(tracks.front().id)});
  if (options.format == "json") {
    CatalogReport(options.format).changed(renamed);
  } else {
    std::cerr << CatalogReport::lines(renamed);
  }
  return exitDone;
}

}  // namespace

Command renameCommand() {
  const auto options = std::make_shared<Options>();
  catalog::NewNames& names = options->names;
  return {.name = "rename",
          .summary = "Give a track another title, artist or path",
          .details = std::string(kTrackHelp) +
                     "\n"
                     "One track must match. The id and the fingerprint stay. --path tells where "
                     "a file is now, so\n"
                     "that lirvox index knows it there. A file that has changed gets the names in "
                     "it when it is\n"
                     "indexed again.\n"
                     "\n"
                     "Examples:\n"
                     "  lirvox rename 12 --title 'Night Train' --artist 'The Sleepers'\n"
                     "  lirvox rename old/song.ogg --path new/song.ogg",
          .options =
              {databaseOption(options->database),
               {.names = "--title", .value = &names.title, .help = "New title", .unit = "TEXT"},
               {.names = "--artist", .value = &names.artist, .help = "New artist", .unit = "TEXT"},
               {.names = "--path",
                .value = &names.path,
                .help = "Where its file is now",
                .unit = "FILE"},
               formatOption(options->format),
               {.names = "TRACK",
                .value = &options->track,
                .help = "Track to rename",
                .required = true}},
          .run = [options] { return rename(*options); }};
}

}  // namespace lirvox::tools
