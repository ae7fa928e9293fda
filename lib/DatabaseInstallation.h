// Installing the fingerprint database from an archive.
#pragma once

#include <functional>
#include <string>

namespace lirvox {

/// Where installation works, all below the caches directory.
struct DatabaseLocations {
  DatabaseLocations();

  std::string cachesRoot;
  /// The downloaded archive, while it is unpacked.
  std::string downloadArchive;
  /// What an archive of the service unpacks to; removed after an installation.
  std::string scratchFolder;
  /// The database within it.
  std::string extractedDatabase;
  /// The library's own folder, which holds the live database.
  std::string sdkFolder;
  std::string liveDatabase;
};

/// Installs the database from an archive that was downloaded to `downloadedFile`, which
/// is removed when it has its place. Calls `completion` with whether the installed
/// database opens, unless it did not come that far, and then clears up. Blocks for as
/// long as unpacking takes; the live database is replaced as a whole, and missing for as
/// long as it takes to copy it.
void installDownloadedArchive(const std::string& downloadedFile,
                              const std::function<void(bool)>& completion);

/// Unpacks an archive that holds the database at its top level into the library's
/// folder, which is made when missing. Returns whether a database is there now. The
/// archive stays. Blocks for as long as unpacking takes; a live database is replaced
/// as a whole.
bool installLocalArchive(const std::string& archive);

}  // namespace lirvox
