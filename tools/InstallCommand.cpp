// lirvox install: the database out of an archive.
#include <iostream>
#include <memory>
#include <string>

#include "lib/Lirvox.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/KeptCatalog.h"

namespace lirvox::tools {
namespace {

int install(const std::string& archive) {
  platform::Platform platform = *platform::current();
  platform.audioSession = std::make_shared<platform::NullAudioSession>();
  platform::install(std::move(platform));
  const std::string database = LirvoxSettings::databasePath();
  const KeptCatalog kept(database);
  const auto lirvox = Lirvox::sharedInstance();
  // The stored stamp is that of another database: the next update shall not believe it.
  if (lirvox->dtDbGenerated()) lirvox->setDtDbGenerated("");
  if (!lirvox->updateDatabasePath(archive)) {
    complain(archive + ": not installed");
    return exitUpdate;
  }
  // Any file of the right name counts as installed.
  if (!databaseIsUsable(database)) return exitUpdate;
  std::cout << "installed: " << database << '\n';
  return exitDone;
}

}  // namespace

Command installCommand() {
  const auto archive = std::make_shared<std::string>();
  return {
      .name = "install",
      .summary = "Install the database from an archive",
      .details =
          "The archive is a zip file with db1.sqlite at its top level, as lirvox pack writes it.\n"
          "The database becomes the one that all commands use when -d is not given. If that was\n"
          "made by lirvox index, it is kept beside it.\n"
          "\n"
          "Example:\n"
          "  lirvox install music.zip && lirvox info",
      .options = {{.names = "ARCHIVE",
                   .value = archive.get(),
                   .help = "Archive to install",
                   .required = true}},
      .run = [archive] { return install(*archive); }};
}

}  // namespace lirvox::tools
