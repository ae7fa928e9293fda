// Extraction of zip archives.
#pragma once

#include <cstdint>
#include <string>

#include "../LirvoxError.h"
#include "../LirvoxExport.h"

namespace lirvox {

/// How much one extraction may produce, its nested archives included.
struct ZipLimits {
  /// Expanded bytes: at most `bytes`, and at most `freeBytes` plus `ratio` times
  /// the size of the archive. Databases shrink to a quarter at best.
  std::uint64_t bytes = std::uint64_t{64} << 30;
  std::uint64_t freeBytes = std::uint64_t{256} << 20;
  std::uint64_t ratio = 100;
  std::uint64_t entries = 10000;
  /// Archives within archives.
  int nesting = 4;
};

/// Unpacks archives that come from the network or from a host.
class LIRVOX_EXPORT ZipArchive {
 public:
  ZipArchive() = delete;

  /// Extracts the archive at `path` into the folder `destination`, which is made
  /// when missing; existing files are replaced, dates and permission bits restored.
  /// Entries with the extension "zip" are extracted in turn into the folder that
  /// holds them and then removed; one that is no archive stays as it is. Returns
  /// whether all entries were processed.
  ///
  /// Nothing is written outside `destination`, no link below it is followed, and every file
  /// appears whole or not at all. An archive that holds a name leading outside, a link or device,
  /// a journal (".sqlite-journal", "-wal", "-shm"), a folder named as a database (".sqlite"), the
  /// same file twice, an encrypted entry, entries that together are larger than the archive, or
  /// more than `limits` allow, fails before its first file is written; a damaged one fails at the
  /// damaged entry, and the files before it stay. The reason is logged and put into `error`, with
  /// the domain "SSZipArchiveErrorDomain" and the code -1 (not an archive), -2 (no first entry) or
  /// -3 (everything else).
  ///
  /// Blocks; callable from any thread. Memory use does not depend on file sizes.
  static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                              LirvoxError& error, const ZipLimits& limits = {});

  /// The same for who needs no error.
  static bool unzipFileAtPath(const std::string& path, const std::string& destination);
};

}  // namespace lirvox
