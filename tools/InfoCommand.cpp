// lirvox info: what a database holds.
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "catalog/CatalogSummary.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/InstalledDatabase.h"

namespace lirvox::tools {
namespace {

int info(const std::string& path) {
  if (!databaseIsUsable(path)) return exitDatabase;
  const catalog::CatalogSummary summary = catalog::summarize(path);
  const InstalledDatabase installed(path);
  platform::Platform platform = platform::systemPlatform();
  platform.directories = installed.directories();
  platform::install(std::move(platform));
  LirvoxDatabase store(LirvoxSettings::databasePath());
  std::cout << store.databaseInfo().value_or("") << '\n'
            << std::fixed << std::setprecision(2) << "Tracks: " << summary.tracks << '\n'
            << "Hours: " << summary.hours << '\n'
            << "Rows: " << summary.rows << '\n'
            << "Rows kept aside: " << summary.heldRows << '\n'
            << "Bytes: " << summary.bytes << '\n';
  if (summary.hours > 0) {
    std::cout << std::setprecision(0)
              << "Bytes per hour: " << static_cast<double>(summary.bytes) / summary.hours << '\n';
  }
  return exitDone;
}

}  // namespace

Command infoCommand() {
  const auto path = std::make_shared<std::string>();
  return {.name = "info",
          .summary = "Say what a database holds",
          .details =
              "The summary of the recognizer (size and track ids), then tracks, hours, rows that\n"
              "recognitions look at, rows kept aside because their hashes are too common to tell\n"
              "tracks apart, and the size of the file.\n"
              "\n"
              "Example:\n"
              "  lirvox info -d music.sqlite",
          .options = {databaseOption(*path)},
          .run = [path] { return info(*path); }};
}

}  // namespace lirvox::tools
