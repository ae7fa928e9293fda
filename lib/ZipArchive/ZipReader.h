// Reading a zip archive entry by entry.
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "../LirvoxError.h"
#include "../platform/FileDescriptor.h"
#include "EntryDecoder.h"

namespace lirvox {

enum class ZipErrorCode : std::int32_t { kCannotOpen = -1, kNoFirstEntry = -2, kFailed = -3 };

/// An error of extraction, in the domain of its operation.
LirvoxError zipError(ZipErrorCode code, const std::string& description);

/// What the archive's directory says about an entry; nothing of it is verified.
struct ZipEntry {
  std::string name;
  /// Expanded bytes.
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;
  std::uint32_t checksum = 0;
  std::uint32_t method = 0;
  bool encrypted = false;
  /// Type and permission bits; 0 if the archive carries none.
  std::uint32_t mode = 0;
  /// Nothing if the date does not exist.
  std::optional<std::time_t> modified;

  bool isFolder() const { return !name.empty() && name.back() == '/'; }
};

/// Walks the entries of one archive in their order. One thread at a time.
class ZipReader {
 public:
  /// Null if the descriptor is no regular file or the file no archive.
  static std::unique_ptr<ZipReader> open(platform::FileDescriptor archive);

  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  std::uint64_t archiveSize() const { return archiveSize_; }

  enum class Step { kEntry, kEnd, kDamaged };
  Step first();
  Step next();
  /// The entry that the walk has reached; nothing if its record is damaged.
  std::optional<ZipEntry> entry();

  /// Expands that entry. True if it was read to its end, has exactly the length that
  /// the directory states and its checksum is right.
  bool read(const ZipEntry& entry, const EntryDecoder::Sink& sink);

 private:
  struct Close {
    void operator()(void* handle) const;
  };
  using Handle = std::unique_ptr<void, Close>;

  ZipReader(platform::FileDescriptor archive, Handle handle, std::uint64_t archiveSize)
      : archive_(std::move(archive)), handle_(std::move(handle)), archiveSize_(archiveSize) {}
  static Step step(int status);

  const platform::FileDescriptor archive_;
  const Handle handle_;
  const std::uint64_t archiveSize_;
};

}  // namespace lirvox
