// A folder with music, in which the program runs.
#pragma once

#include <filesystem>
#include <string>

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
  Finished run(const std::string& arguments) const {
    const std::string folder = "'" + folder_.path().string() + "'";
    return runCommand("cd " + folder + " && LIRVOX_CACHES_DIR=" + folder + "/caches " +
                      LIRVOX_PROGRAM " " + arguments);
  }

 private:
  const TemporaryFolder folder_;
};

}  // namespace lirvox::test
