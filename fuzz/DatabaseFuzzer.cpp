// Fingerprint files that were damaged or made to do harm.
#include <iterator>

#include "fuzz/Support.h"
#include "lib/LirvoxDatabase.h"

namespace {

namespace fs = std::filesystem;

// What the files to begin with hold, and more.
std::vector<lirvox::QueryHash> queryHashes() {
  std::vector<lirvox::QueryHash> hashes;
  for (std::int32_t i = 0; i < 200; ++i) hashes.push_back({i, i % 64});
  hashes.push_back({7, -1});
  hashes.push_back({8, 1048575});
  return hashes;
}

}  // namespace

// An input is a database, and what else lies beside it: a journal, a log.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lirvox::fuzz::require;
  static const lirvox::fuzz::QuietPlatform platform;
  static const fs::path path = platform.folder.path("store/db1.sqlite");
  static const std::vector<lirvox::QueryHash> hashes = queryHashes();
  fs::create_directory(path.parent_path());

  std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string database(lirvox::fuzz::takePart(input));
  lirvox::fuzz::overwrite(path, database);
  for (const char* const ending : {"-journal", "-wal"}) {
    const std::string_view part = lirvox::fuzz::takePart(input);
    if (!part.empty()) lirvox::fuzz::overwrite(path.string() + ending, part);
  }
  lirvox::LirvoxDatabase store(path.string());
  if (const auto rows = store.selectFingerprints(hashes)) {
    lirvox::fuzz::voteOn(*rows, hashes, 30);
    lirvox::fuzz::voteOn(*rows, hashes, 5);
  }
  store.databaseInfo();
  require(lirvox::test::readFile(path) == database, "the file is as it was");
  for (const auto& entry : fs::directory_iterator(path.parent_path())) {
    if (entry.path() != path) fs::remove(entry);
  }
  return 0;
}
