// lirvox verify: whether a database is sound.
#include <memory>
#include <string>

#include "catalog/Verify.h"
#include "tools/CatalogReport.h"
#include "tools/CommandLine.h"
#include "tools/PercentProgress.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string format;
};

int verify(const Options& options) {
  PercentProgress progress("verifying");
  const auto verification = catalog::verify(options.database, progress.handler());
  progress.hide();
  CatalogReport(options.format).verified(verification, options.database);
  return verification.violations.empty() ? exitDone : exitDatabase;
}

}  // namespace

Command verifyCommand() {
  const auto options = std::make_shared<Options>();
  return {.name = "verify",
          .summary = "Check a database for damage",
          .details =
              "Reads all of the file: its pages and tables, every row (a track, a hash and a time\n"
              "that can be, none twice), and for what lirvox index made, its notes and which rows\n"
              "are kept aside. Says what is wrong, how often, with an example; the exit status is\n"
              "4 then. Changes nothing. Also for databases of lirvox install and of others.\n"
              "\n"
              "Example:\n"
              "  lirvox verify -d music.sqlite",
          .options = {databaseOption(options->database), formatOption(options->format)},
          .run = [options] { return verify(*options); }};
}

}  // namespace lirvox::tools
