// lirvox pack: a database as an archive.
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "catalog/Pack.h"
#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string archive;
};

int pack(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  catalog::pack(options.database, options.archive);
  std::cout << options.archive << ": " << std::filesystem::file_size(options.archive) << " bytes\n";
  return exitDone;
}

}  // namespace

Command packCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "pack",
      .summary = "Pack a database for lirvox install",
      .details =
          "The archive holds what recognition needs and nothing else: no paths of your files. It\n"
          "appears whole or not at all.\n"
          "\n"
          "Example:\n"
          "  lirvox pack -d music.sqlite -o music.zip",
      .options = {databaseOption(options->database),
                  {.names = "-o,--output",
                   .value = &options->archive,
                   .help = "Archive to write",
                   .unit = "ARCHIVE",
                   .required = true}},
      .run = [options] { return pack(*options); }};
}

}  // namespace lirvox::tools
