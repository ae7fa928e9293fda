// A folder with music, in which the program runs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"

namespace lirvox::test {

/// Tunes 1 to 3, of equal length, in its folder "music". For tests that know LIRVOX_PROGRAM.
class MusicFolder {
 public:
  explicit MusicFolder(double seconds) {
    std::filesystem::create_directory(path("music"));
    for (unsigned seed = 1; seed <= 3; ++seed) {
      writeWav(path("music/tune" + std::to_string(seed) + ".wav"), makeTune(seed, seconds));
    }
  }

  std::string path(const std::string& name) const { return folder_.path(name).string(); }

  /// Runs the program there, with caches of its own.
  Finished run(const std::string& arguments) const { return shell(LIRVOX_PROGRAM " " + arguments); }
  /// Runs any command there.
  Finished shell(const std::string& command) const {
    const std::string folder = "'" + folder_.path().string() + "'";
    return runCommand("cd " + folder + " && export LIRVOX_CACHES_DIR=" + folder +
                      "/caches LIRVOX_CONFIG_DIR=" + folder + "/config && " + command);
  }

 private:
  const TemporaryFolder folder_;
};

/// Five seconds of a tune that is 20 s long.
inline std::vector<std::int32_t> excerptOf(unsigned seed, double from) {
  const std::vector<std::int32_t> tune = makeTune(seed, 20.0);
  const auto begin = tune.begin() + static_cast<std::ptrdiff_t>(from * 11025);
  return {begin, begin + 55125};
}

}  // namespace lirvox::test
