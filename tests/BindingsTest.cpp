// The library from other languages: a host in C, and the example in Python.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "catalog/Pack.h"
#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

// A folder with a database of three tunes, its archive, and 5 seconds of the second tune.
class Bindings : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(folder_.path("music"));
    std::vector<std::int32_t> tune;
    for (const unsigned seed : {1U, 3U, 2U}) {
      tune = makeTune(seed, 20.0);
      writeWav(path("music/tune" + std::to_string(seed) + ".wav"), tune);
    }
    const std::vector<std::int32_t> excerpt(tune.begin() + 82688, tune.begin() + 82688 + 55125);
    writeRecording(path("excerpt.dat"), excerpt);
    writeWav(path("excerpt.wav"), excerpt);
    const Finished index =
        runCommand(LIRVOX_PROGRAM " index -d " + path("tracks.sqlite") + ' ' + path("music"));
    ASSERT_EQ(index.status, 0) << index.output;
    catalog::pack(path("tracks.sqlite"), path("tracks.zip"));
  }

  std::string path(const std::string& name) const { return folder_.path(name).string(); }

  TemporaryFolder folder_;
};

TEST_F(Bindings, ServeAHostInC) {
  const Finished host =
      runCommand("LIRVOX_API_URL=http://127.0.0.1:1 " LIRVOX_C_HOST " " + path("."));
  EXPECT_EQ(host.status, 0) << host.output;
}

#ifdef LIRVOX_PYTHON_EXAMPLE
TEST_F(Bindings, RecognizeAFileFromPython) {
  for (const char* const file : {"excerpt.wav", "excerpt.dat"}) {
    const Finished example =
        runCommand("LIRVOX_C_LIBRARY=" LIRVOX_C_LIBRARY " python3 " LIRVOX_PYTHON_EXAMPLE " -d " +
                   path("tracks.sqlite") + ' ' + path(file));
    EXPECT_EQ(example.output.rfind("track 2 at 7.5", 0), 0U) << example.output;
  }
}
#endif

}  // namespace
}  // namespace lirvox::test
