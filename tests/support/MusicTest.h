// What tests of the program start from: a folder with music, in which it runs.
#pragma once

#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"

namespace lirvox::test {

/// How a command must end, and what it must say.
struct Expectation {
  std::string command;
  int status;
  std::string says;
};

/// Tunes 1 to 3, of equal length, in the folder "music". For tests that know LIRVOX_PROGRAM.
class MusicTest : public testing::Test {
 protected:
  explicit MusicTest(double seconds = 20.0) {
    std::filesystem::create_directory(path("music"));
    for (unsigned seed = 1; seed <= 3; ++seed) {
      writeWav(path("music/tune" + std::to_string(seed) + ".wav"), makeTune(seed, seconds));
    }
  }

  std::string path(const std::string& name) const { return folder_.path(name).string(); }

  /// Runs any command in the folder, with caches of its own.
  Finished shell(const std::string& command, const WithLine& withLine = {}) const {
    const std::string folder = "'" + folder_.path().string() + "'";
    return runCommand("cd " + folder + " && export LIRVOX_CACHES_DIR=" + folder +
                          "/caches LIRVOX_CONFIG_DIR=" + folder + "/config && " + command,
                      withLine);
  }
  /// Runs the program there.
  Finished run(const std::string& arguments, const WithLine& withLine = {}) const {
    return shell(LIRVOX_PROGRAM " " + arguments, withLine);
  }
  void expect(const std::string& arguments, int status, const std::string& says,
              const WithLine& withLine = {}) const {
    const Finished finished = run(arguments, withLine);
    SCOPED_TRACE(arguments + '\n' + finished.output);
    EXPECT_EQ(finished.status, status);
    EXPECT_NE(finished.output.find(says), std::string::npos);
  }
  void expectEach(const std::vector<Expectation>& expectations) const {
    for (const auto& [arguments, status, says] : expectations) expect(arguments, status, says);
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
