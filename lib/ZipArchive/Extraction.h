// One extraction, with what its nested archives may still use.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "EntryName.h"
#include "ZipArchive.h"
#include "ZipReader.h"

namespace lirvox {

/// Extracts one archive and what is nested in it. One thread; one use.
class Extraction {
 public:
  explicit Extraction(const ZipLimits& limits) : limits_(limits) {}

  /// Extracts `archive` into the open folder `destination`; see `ZipArchive`.
  bool run(platform::FileDescriptor archive, int destination, LirvoxError& error);

 private:
  struct PlannedEntry {
    EntryPath path;
    ZipEntry entry;
  };
  using Plan = std::vector<PlannedEntry>;

  bool plan(ZipReader& reader, Plan& plan, LirvoxError& error);
  bool planEntry(const ZipEntry& entry, Plan& plan, LirvoxError& error);
  bool write(ZipReader& reader, const Plan& plan, int destination, LirvoxError& error);
  bool writeFile(ZipReader& reader, const PlannedEntry& file, int destination, LirvoxError& error);
  bool expandNested(const std::string& name, int folder, LirvoxError& error);
  bool withinLimits(const ZipEntry& entry, LirvoxError& error);

  const ZipLimits limits_;
  std::uint64_t bytesLeft_ = 0;
  std::uint64_t entriesLeft_ = 0;
  int depth_ = 0;
};

}  // namespace lirvox
