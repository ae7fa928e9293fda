// Extraction of zip archives.
#include "lib/ZipArchive/ZipArchive.h"

#include <filesystem>

#include <fcntl.h>

#include "lib/ZipArchive/DestinationFolder.h"
#include "lib/ZipArchive/EntryName.h"
#include "lib/ZipArchive/Extraction.h"
#include "lib/platform/Platform.h"

namespace lirvox {

bool ZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                 LirvoxError& error, const ZipLimits& limits) {
  std::error_code systemError;
  const platform::FileDescriptor folder = openDestination(destination, systemError);
  // A device or a pipe must not make the opening wait.
  platform::FileDescriptor archive(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  bool done = false;
  if (!folder) {
    error = zipError(ZipErrorCode::kFailed, "no destination folder: " + systemError.message());
  } else {
    done = Extraction(limits).run(std::move(archive), folder.get(), error);
  }
  if (!done) {
    const std::string name = std::filesystem::path(path).filename();
    platform::log("Extraction of " + printable(name) + " failed: " + error.localizedDescription);
  }
  return done;
}

bool ZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination) {
  LirvoxError error;
  return unzipFileAtPath(path, destination, error);
}

}  // namespace lirvox
