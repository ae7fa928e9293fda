// Archives from the network.
#include "fuzz/Support.h"
#include "lib/ZipArchive/ZipArchive.h"

namespace {

namespace fs = std::filesystem;

// Small, so that what expands without end is found soon.
lirvox::ZipLimits limits() {
  lirvox::ZipLimits limits;
  limits.bytes = std::uint64_t{1} << 20;
  limits.entries = 50;
  return limits;
}

void checkTree(const fs::path& folder) {
  std::uintmax_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    lirvox::fuzz::require(!entry.is_symlink(), "no link is made");
    lirvox::fuzz::require(entry.is_directory() || entry.is_regular_file(), "files and folders");
    if (entry.is_regular_file()) bytes += entry.file_size();
  }
  lirvox::fuzz::require(bytes <= limits().bytes, "the limit holds");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const lirvox::fuzz::QuietPlatform platform;
  static const fs::path archive = platform.folder.path("archive.zip");
  static const fs::path above = platform.folder.path("above");
  static const fs::path destination = above / "destination";
  lirvox::fuzz::overwrite(archive, {reinterpret_cast<const char*>(data), size});

  lirvox::LirvoxError error;
  const bool done = lirvox::ZipArchive::unzipFileAtPath(archive, destination, error, limits());
  lirvox::fuzz::require(done == error.localizedDescription.empty(), "a failure has its reason");
  checkTree(destination);
  lirvox::fuzz::require(fs::hard_link_count(above) == 3, "no folder is made outside");
  const auto outside = std::distance(fs::directory_iterator(above), fs::directory_iterator());
  lirvox::fuzz::require(outside == 1, "nothing is written outside");
  for (const auto& entry : fs::directory_iterator(destination)) fs::remove_all(entry);
  return 0;
}
