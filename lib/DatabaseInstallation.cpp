// Installing the fingerprint database from an archive.
#include "lib/DatabaseInstallation.h"

#include <filesystem>
#include <system_error>

#include <sqlite3.h>

#include "lib/LirvoxSettings.h"
#include "lib/ZipArchive/ZipArchive.h"
#include "lib/platform/FolderTree.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox {
namespace {

bool exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

// SQLite reads a file when it is first used: what counts as open may still be no
// database. That is meant; a lookup then finds nothing.
bool databaseOpens(const std::string& path) {
  sqlite3* database = nullptr;
  const bool opened = sqlite3_open(path.c_str(), &database) == SQLITE_OK;
  if (!opened) platform::log("Failed to open database!");
  sqlite3_close(database);
  return opened;
}

void report(const std::string& path, const std::error_code& error) {
  platform::log(path + ": " + error.message());
}

// A folder "home" in it would be everybody's.
bool isRoot(const std::string& folder) {
  std::error_code ignored;
  const auto path = std::filesystem::weakly_canonical(folder, ignored);
  return path == path.root_path();
}

// What an earlier archive has put in the place of a file or a folder would keep every later
// one out.
void clearTheWay(const DatabaseLocations& at) {
  std::error_code ignored;
  for (const std::string& file : {at.downloadArchive, at.liveDatabase}) {
    if (std::filesystem::is_directory(file, ignored)) platform::removeTree(file);
  }
  if (!std::filesystem::is_directory(at.sdkFolder, ignored)) {
    std::filesystem::remove(at.sdkFolder, ignored);
  }
}

// Journals that lie beside it belong to another database, or the archive planted them.
void removeJournals(const DatabaseLocations& at) {
  for (const char* const ending : {"-journal", "-wal", "-shm"}) {
    platform::removeTree(at.liveDatabase + ending);
  }
}

// The live file is removed first, as is meant: until the copy is complete there is no
// database, rather than an old one under a new stamp. Whatever happens in between,
// the next check finds no file and downloads again.
bool replaceLiveDatabase(const DatabaseLocations& at) {
  std::error_code ignored;
  std::filesystem::remove(at.liveDatabase, ignored);
  removeJournals(at);
  // The folder is not made: who never prepared it gets no database over the network.
  const std::error_code error = platform::copyWholeFile(at.extractedDatabase, at.liveDatabase);
  if (error) report(at.liveDatabase, error);
  return !error;
}

}  // namespace

DatabaseLocations::DatabaseLocations()
    : cachesRoot(platform::current()->directories->cachesDirectory()),
      downloadArchive(cachesRoot + "/tmp.zip"),
      scratchFolder(cachesRoot + "/home"),
      extractedDatabase(scratchFolder + '/' + LirvoxSettings::serviceHostFolder() +
                        "/www/tmp/db1.sqlite"),
      sdkFolder(cachesRoot + "/lirvox"),
      liveDatabase(LirvoxSettings::databasePath()) {}

void installDownloadedArchive(const std::string& downloadedFile,
                              const std::function<void(bool)>& completion) {
  const DatabaseLocations at;
  if (isRoot(at.cachesRoot)) {
    platform::log(at.cachesRoot + ": the caches folder must be the application's own; no update");
    return;
  }
  std::error_code ignored;
  std::filesystem::create_directories(at.cachesRoot, ignored);
  platform::removeAbandonedFiles(at.cachesRoot);
  platform::removeAbandonedFiles(at.sdkFolder);
  clearTheWay(at);
  if (const auto error = platform::copyWholeFile(downloadedFile, at.downloadArchive)) {
    report(at.downloadArchive, error);
    return;
  }
  std::filesystem::remove(downloadedFile, ignored);  // a host may end with its answer
  platform::removeTree(at.scratchFolder);
  // On these two ways out the archive stays, and what was unpacked, for whoever wants
  // to know why.
  if (!ZipArchive::unzipFileAtPath(at.downloadArchive, at.cachesRoot)) return;
  if (!exists(at.extractedDatabase)) return;

  if (replaceLiveDatabase(at)) {
    const bool opened = databaseOpens(at.liveDatabase);
    // The host's; what it throws must not keep the rest from being removed.
    if (completion) platform::runLogged([&] { completion(opened); });
  }
  platform::removeTree(at.scratchFolder);
  std::filesystem::remove(at.downloadArchive, ignored);
}

bool installLocalArchive(const std::string& archive) {
  if (!exists(archive)) {
    platform::log("Lirvox: File does not exist");
    return false;
  }
  const DatabaseLocations at;
  platform::removeAbandonedFiles(at.sdkFolder);
  clearTheWay(at);
  const bool installed =
      ZipArchive::unzipFileAtPath(archive, at.sdkFolder) && exists(at.sdkFolder + "/db1.sqlite");
  if (installed) {
    removeJournals(at);
  } else {
    platform::log("Lirvox: Wrong file format!");
  }
  return installed;
}

}  // namespace lirvox
