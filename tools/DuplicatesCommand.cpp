// lirvox duplicates: tracks that have sound in common.
#include <iostream>
#include <memory>
#include <string>

#include "catalog/Duplicates.h"
#include "catalog/TrackList.h"
#include "tools/CatalogReport.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/PercentProgress.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string format;
  double seconds = 10.0;
};

int duplicates(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  PercentProgress progress("comparing tracks");
  const auto found = catalog::findDuplicates(options.database, options.seconds, progress.handler());
  progress.hide();
  CatalogReport(options.format).duplicates(found, catalog::listTracks(options.database));
  if (options.format == "text") {
    std::cerr << counted(found.size(), "pair")
              << " of tracks with sound in common: " << options.database << '\n';
  }
  return exitDone;
}

}  // namespace

Command duplicatesCommand() {
  const auto options = std::make_shared<Options>();
  return {.name = "duplicates",
          .summary = "Find tracks that are the same, or contain each other",
          .details =
              "From the fingerprints alone: copies in another format or quality, an edit and its\n"
              "album cut, a mix and the tracks in it, but not the same music played again or "
              "faster.\n"
              "The offset is where in the first track the second begins.\n"
              "\n"
              "Examples:\n"
              "  lirvox duplicates\n"
              "  lirvox duplicates -d radio.sqlite --seconds 30 --format json",
          .options = {databaseOption(options->database),
                      {.names = "--seconds",
                       .value = &options->seconds,
                       .help = "The least that two tracks must have in common",
                       .unit = "SECONDS",
                       .range = {{1, 1e6}}},
                      formatOption(options->format)},
          .run = [options] { return duplicates(*options); }};
}

}  // namespace lirvox::tools
