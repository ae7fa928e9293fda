// One extraction, with what its nested archives may still use.
#include "lib/ZipArchive/Extraction.h"

#include <algorithm>
#include <set>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "lib/ZipArchive/DestinationFolder.h"
#include "lib/platform/Platform.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox {
namespace {

using platform::FileDescriptor;

bool fail(const std::string& reason, LirvoxError& error) {
  error = zipError(ZipErrorCode::kFailed, reason);
  return false;
}

// Links, devices and pipes have a type; many archives state none at all.
bool isFileOrFolder(const ZipEntry& entry) {
  const std::uint32_t type = entry.mode & S_IFMT;
  return type == 0 || type == S_IFREG || type == S_IFDIR;
}

// Failures are reported and do no harm: the content is there.
void restoreAttributes(const ZipEntry& entry, mode_t alwaysGranted, int descriptor) {
  const auto permissions = static_cast<mode_t>(entry.mode & 0777U);
  if (permissions != 0 && ::fchmod(descriptor, permissions | alwaysGranted) != 0) {
    platform::log("[SSZipArchive] Failed to set attributes - whilst setting permissions");
  }
  struct timespec times[2] = {};
  if (entry.modified) times[0].tv_sec = times[1].tv_sec = *entry.modified;
  if (!entry.modified || ::futimens(descriptor, times) != 0) {
    platform::log("[SSZipArchive] Failed to set attributes - whilst setting modification date");
  }
}

}  // namespace

bool Extraction::run(FileDescriptor archive, int destination, LirvoxError& error) {
  const auto reader = ZipReader::open(std::move(archive));
  if (!reader) {
    error = zipError(ZipErrorCode::kCannotOpen, "failed to open zip file");
    return false;
  }
  if (depth_ == 0) {
    entriesLeft_ = limits_.entries;
    bytesLeft_ = std::min(limits_.bytes, limits_.freeBytes + limits_.ratio * reader->archiveSize());
  }
  Plan entries;
  return plan(*reader, entries, error) && write(*reader, entries, destination, error);
}

// Looks at every entry before the first one is written, so that an archive with one
// bad name changes nothing at all.
bool Extraction::plan(ZipReader& reader, Plan& plan, LirvoxError& error) {
  ZipReader::Step step = reader.first();
  if (step != ZipReader::Step::kEntry) {
    error = zipError(ZipErrorCode::kNoFirstEntry, "failed to open first file in zip file");
    return false;
  }
  // Entries that share their packed bytes would have them expanded over and over.
  std::uint64_t packedBytesLeft = reader.archiveSize();
  for (; step == ZipReader::Step::kEntry; step = reader.next()) {
    const auto entry = reader.entry();
    if (!entry) return fail("damaged directory", error);
    if (!planEntry(*entry, plan, error)) return false;
    if (entry->packedSize > packedBytesLeft) return fail("entries overlap", error);
    packedBytesLeft -= entry->packedSize;
  }
  if (step == ZipReader::Step::kDamaged) return fail("damaged directory", error);

  std::set<EntryPath> files;
  for (const auto& [path, entry] : plan) {
    if (!entry.isFolder() && !files.insert(path).second) {
      return fail("two files with the name " + printable(entry.name), error);
    }
  }
  return true;
}

bool Extraction::planEntry(const ZipEntry& entry, Plan& plan, LirvoxError& error) {
  auto path = entryPath(entry.name);
  const std::string name = printable(entry.name);
  if (!path || (path->empty() && !entry.isFolder())) return fail("unsafe name " + name, error);
  if (!isFileOrFolder(entry)) return fail("neither file nor folder: " + name, error);
  if (entry.encrypted) return fail("encrypted entry " + name, error);
  if (!withinLimits(entry, error)) return false;
  plan.push_back({std::move(*path), entry});
  return true;
}

bool Extraction::withinLimits(const ZipEntry& entry, LirvoxError& error) {
  if (entriesLeft_ == 0) return fail("too many entries", error);
  if (entry.size > bytesLeft_) return fail("expands too far", error);
  --entriesLeft_;
  bytesLeft_ -= entry.size;
  return true;
}

bool Extraction::write(ZipReader& reader, const Plan& plan, int destination, LirvoxError& error) {
  ZipReader::Step step = reader.first();
  for (const PlannedEntry& planned : plan) {
    if (step != ZipReader::Step::kEntry) return fail("archive changed", error);
    if (planned.entry.isFolder()) {
      std::error_code systemError;
      if (!openBelow(destination, planned.path, systemError)) {
        return fail(printable(planned.entry.name) + ": " + systemError.message(), error);
      }
    } else if (!writeFile(reader, planned, destination, error)) {
      return false;
    }
    step = reader.next();
  }
  // Only now: files that were written into a folder have changed its date.
  for (auto planned = plan.rbegin(); planned != plan.rend(); ++planned) {
    std::error_code ignored;
    if (!planned->entry.isFolder() || planned->path.empty()) continue;
    const FileDescriptor folder = openBelow(destination, planned->path, ignored);
    // A folder that its owner may not enter could neither be filled nor removed.
    if (folder) restoreAttributes(planned->entry, S_IRWXU, folder.get());
  }
  return true;
}

bool Extraction::writeFile(ZipReader& reader, const PlannedEntry& file, int destination,
                           LirvoxError& error) {
  const EntryPath parents(file.path.begin(), file.path.end() - 1);
  const std::string& name = file.path.back();
  const std::string shown = printable(file.entry.name);
  std::error_code systemError;
  const FileDescriptor folder = openBelow(destination, parents, systemError);
  if (!folder) return fail(shown + ": " + systemError.message(), error);
  auto temporary = platform::TemporaryFile::createIn(folder.get(), systemError);
  if (systemError) return fail(shown + ": " + systemError.message(), error);

  const bool intact = reader.read(file.entry, [&](std::string_view bytes) {
    systemError = temporary.append(bytes);
    return !systemError;
  });
  if (systemError) return fail(shown + ": " + systemError.message(), error);
  if (!intact) return fail("damaged entry " + shown, error);
  restoreAttributes(file.entry, 0, temporary.descriptor());
  systemError = temporary.moveTo(name);
  if (systemError) return fail(shown + ": " + systemError.message(), error);
  return !isArchiveName(name) || expandNested(name, folder.get(), error);
}

bool Extraction::expandNested(const std::string& name, int folder, LirvoxError& error) {
  platform::log("Unzipping nested .zip file: " + printable(name));
  if (depth_ == limits_.nesting) return fail("archives nested too deeply", error);
  ++depth_;
  FileDescriptor archive(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  const bool done = run(std::move(archive), folder, error);
  --depth_;
  if (done) ::unlinkat(folder, name.c_str(), 0);
  // A file that is no archive but for its name stays; a hostile or damaged archive
  // is no better for being nested.
  if (done || error.code == static_cast<std::int32_t>(ZipErrorCode::kFailed)) return done;
  error = {};
  return true;
}

}  // namespace lirvox
