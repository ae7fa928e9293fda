// lirvox update: the database of the recognition service.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/file.h>

#include "lib/Lirvox.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/FileDescriptor.h"
#include "lib/platform/Platform.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/KeptCatalog.h"
#include "tools/UpdateWatch.h"

namespace lirvox::tools {
namespace {

namespace fs = std::filesystem;

struct Options {
  std::string key;
  double timeout = 120.0;
};

// Lies beside the database while an update runs, and after one that came to nothing. The
// new stamp is stored when a download begins: this tells that it means nothing.
class UnfinishedMark {
 public:
  explicit UnfinishedMark(const std::string& database) : path_(database + ".updating") {
    std::error_code ignored;
    if (fs::exists(path_, ignored)) Lirvox::sharedInstance()->setDtDbGenerated("");
    std::ofstream file(path_);
  }
  void remove() const {
    std::error_code ignored;
    fs::remove_all(path_, ignored);  // an archive may have brought a folder of the name
  }

 private:
  const fs::path path_;
};

// Held while an update runs: two would take each other's archive away. It goes with the
// process, however that ends. False, with a word to the user, when it cannot be had.
bool lock(const fs::path& folder, platform::FileDescriptor& held) {
  held = platform::FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (held && ::flock(held.get(), LOCK_EX | LOCK_NB) == 0) return true;
  const int reason = errno;
  complain(held && reason == EWOULDBLOCK ? "another update is running"
                                         : folder.string() + ": " + std::strerror(reason));
  return false;
}

std::shared_ptr<UpdateWatch> installWatchedPlatform() {
  const auto watch = std::make_shared<UpdateWatch>();
  platform::Platform platform = *platform::current();
  platform.audioSession = std::make_shared<platform::NullAudioSession>();
  watch->attachTo(platform);
  platform::install(std::move(platform));
  return watch;
}

UpdateOutcome runUpdate(const Options& options, const std::string& database) {
  const auto watch = installWatchedPlatform();
  const auto lirvox = Lirvox::sharedInstance();
  const UnfinishedMark unfinished(database);
  lirvox->setUserApiKey(options.key);
  lirvox->downloadDatabaseIfNeeded([watch](bool good) { watch->answer(good); });
  UpdateOutcome outcome = watch->wait(std::chrono::duration<double>(options.timeout));
  lirvox->setSession(nullptr);
  const bool changedNothing = !outcome.good && !outcome.downloaded;
  // Any file at the right place counts as installed.
  outcome.good = outcome.good && databaseIsUsable(database);
  if (outcome.good || changedNothing) unfinished.remove();
  return outcome;
}

int report(const UpdateOutcome& outcome, const std::string& database) {
  for (const std::string& note : outcome.notes) complain(note);
  std::error_code ignored;
  if (!outcome.good) {
    complain(fs::exists(database, ignored) ? "update failed"
                                           : "update failed, and there is no database");
    return exitUpdate;
  }
  std::cout << (outcome.downloaded ? "installed: " : "up to date: ") << database << '\n';
  return exitDone;
}

int update(const Options& options) {
  const std::string database = LirvoxSettings::databasePath();
  // An update does not make the folder, and not every archive brings it along.
  std::error_code error;
  fs::create_directories(fs::path(database).parent_path(), error);
  if (error) {
    complain(database + ": " + error.message());
    return exitUpdate;
  }
  platform::FileDescriptor held;
  if (!lock(fs::path(database).parent_path(), held)) return exitUpdate;
  const KeptCatalog kept(database);
  return report(runUpdate(options, database), database);
}

}  // namespace

Command updateCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "update",
      .summary = "Fetch the database of the recognition service",
      .details =
          "Asks the service for its current database, and fetches and installs that unless it is\n"
          "here already. It becomes the one that all commands use when -d is not given. If that\n"
          "was made by lirvox index, it is kept beside it.\n"
          "\n"
          "The service is the one that this lirvox was built for, unless the environment "
          "variables\n"
          "LIRVOX_API_URL and LIRVOX_SERVICE_HOST_FOLDER name another, as lirvox publish makes "
          "it.\n"
          "\n"
          "Examples:\n"
          "  lirvox update\n"
          "  lirvox update --key 0123456789abcdef --timeout 30",
      .options = {{.names = "--key",
                   .value = &options->key,
                   .help = "Access key, sent to the service as it is",
                   .unit = "KEY"},
                  {.names = "--timeout",
                   .value = &options->timeout,
                   .help = "What the update may take in all",
                   .unit = "SECONDS",
                   .range = {{0.1, 3600}}}},
      .run = [options] { return update(*options); }};
}

}  // namespace lirvox::tools
