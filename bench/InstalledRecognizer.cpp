// The process's recognizer, set up for a benchmark.
#include "bench/InstalledRecognizer.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "bench/GeneratedDatabase.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"

namespace lirvox::bench {

std::shared_ptr<Lirvox> installRecognizer(platform::MemoryAudioUnit::Samples samples) {
  namespace fs = std::filesystem;
  const fs::path caches = fs::temp_directory_path() / "lirvox-bench-caches";
  ::setenv("LIRVOX_CACHES_DIR", caches.c_str(), 1);
  fs::create_directories(caches / "lirvox");
  fs::remove(caches / "lirvox/db1.sqlite");
  fs::create_symlink(GeneratedDatabase::file(), caches / "lirvox/db1.sqlite");

  platform::Platform platform = platform::systemPlatform();
  platform.audioSession = std::make_shared<platform::NullAudioSession>();
  platform.makeInputUnit = [samples = std::move(samples)](platform::AudioStatus&) {
    return std::make_unique<platform::MemoryAudioUnit>(samples);
  };
  platform::install(std::move(platform));
  auto lirvox = Lirvox::sharedInstance();
  lirvox->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
  return lirvox;
}

}  // namespace lirvox::bench
