// The library from other languages: a host in C, and the example in Python.
#include "tests/support/MusicTest.h"

namespace lirvox::test {
namespace {

// A folder with a database of three tunes, its archive, and 5 seconds of the second tune.
struct Bindings : MusicTest {
  void SetUp() override {
    writeRecording(path("excerpt.dat"), excerptOf(2, 7.5));
    writeWav(path("excerpt.wav"), excerptOf(2, 7.5));
    expectEach({{"index -d tracks.sqlite music", 0, "3 tracks"},
                {"pack -d tracks.sqlite -o tracks.zip", 0, "tracks.zip"}});
  }
};

TEST_F(Bindings, ServeAHostInC) {
  const Finished host = shell("LIRVOX_API_URL=http://127.0.0.1:1 " LIRVOX_C_HOST " \"$PWD\"");
  EXPECT_EQ(host.status, 0) << host.output;
}

#ifdef LIRVOX_PYTHON_EXAMPLE
TEST_F(Bindings, RecognizeAFileFromPython) {
  for (const std::string file : {"excerpt.wav", "excerpt.dat"}) {
    const Finished example = shell("LIRVOX_C_LIBRARY=" LIRVOX_C_LIBRARY
                                   " python3 " LIRVOX_PYTHON_EXAMPLE " -d tracks.sqlite " +
                                   file);
    EXPECT_EQ(example.output.rfind("track 2 at 7.5", 0), 0U) << example.output;
  }
}
#endif

}  // namespace
}  // namespace lirvox::test
