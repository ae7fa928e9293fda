// The library from other languages: a host in C, and the example in Python.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "catalog/Pack.h"
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
    const std::string index =
        LIRVOX_PROGRAM " index -d " + path("tracks.sqlite") + ' ' + path("music") + " >/dev/null";
    ASSERT_EQ(std::system(index.c_str()), 0);
    catalog::pack(path("tracks.sqlite"), path("tracks.zip"));
  }

  std::string path(const std::string& name) const { return folder_.path(name).string(); }

  TemporaryFolder folder_;
};

TEST_F(Bindings, ServeAHostInC) {
  const std::string command = "LIRVOX_API_URL=http://127.0.0.1:1 " LIRVOX_C_HOST " " + path(".");
  EXPECT_EQ(std::system(command.c_str()), 0);
}

#ifdef LIRVOX_PYTHON_EXAMPLE
TEST_F(Bindings, RecognizeAFileFromPython) {
  for (const char* const file : {"excerpt.wav", "excerpt.dat"}) {
    const std::string command =
        "LIRVOX_C_LIBRARY=" LIRVOX_C_LIBRARY " python3 " LIRVOX_PYTHON_EXAMPLE " -d " +
        path("tracks.sqlite") + ' ' + path(file) + " | grep '^track 2 at 7.5'";
    EXPECT_EQ(std::system(command.c_str()), 0) << file;
  }
}
#endif

}  // namespace
}  // namespace lirvox::test
