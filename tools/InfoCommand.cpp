// lirvox info: what a database holds.
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

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

struct Options {
  std::string database;
  std::string format;
};

// The two lines for people that any host gets.
std::string recognizersSummary(const std::string& path) {
  const InstalledDatabase installed(path);
  platform::Platform platform = *platform::current();
  platform.directories = installed.directories();
  platform::install(std::move(platform));
  return LirvoxDatabase(LirvoxSettings::databasePath()).databaseInfo().value_or("");
}

void printText(const std::string& path, const catalog::CatalogSummary& summary) {
  std::cout << recognizersSummary(path) << '\n'
            << std::fixed << std::setprecision(2) << "Tracks: " << summary.tracks << '\n'
            << "Hours: " << summary.hours << '\n'
            << "Rows: " << summary.rows << '\n'
            << "Rows kept aside: " << summary.heldRows << '\n'
            << "Bytes: " << summary.bytes << '\n';
  if (summary.hours > 0) {
    std::cout << std::setprecision(0)
              << "Bytes per hour: " << static_cast<double>(summary.bytes) / summary.hours << '\n';
  }
}

void printJson(const std::string& path, const catalog::CatalogSummary& summary) {
  nlohmann::ordered_json json = {{"database", path},         {"track_ids", catalog::trackIds(path)},
                                 {"tracks", summary.tracks}, {"hours", summary.hours},
                                 {"rows", summary.rows},     {"held_rows", summary.heldRows},
                                 {"bytes", summary.bytes},   {"bytes_per_hour", nullptr}};
  if (summary.hours > 0) {
    json["bytes_per_hour"] = std::llround(static_cast<double>(summary.bytes) / summary.hours);
  }
  std::cout << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

int info(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const catalog::CatalogSummary summary = catalog::summarize(options.database);
  (options.format == "json" ? printJson : printText)(options.database, summary);
  return exitDone;
}

}  // namespace

Command infoCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "info",
      .summary = "Say what a database holds",
      .details =
          "The summary of the recognizer (size and track ids), then tracks, hours, rows that\n"
          "recognitions look at, rows kept aside because their hashes are too common to tell\n"
          "tracks apart, and the size of the file.\n"
          "\n"
          "JSON: one object with database, track_ids, tracks, hours, rows, held_rows, bytes and\n"
          "bytes_per_hour (null where no hours are known).\n"
          "\n"
          "Examples:\n"
          "  lirvox info -d music.sqlite\n"
          "  lirvox info --format json | jq .hours",
      .options = {databaseOption(options->database), formatOption(options->format)},
      .run = [options] { return info(*options); }};
}

}  // namespace lirvox::tools
