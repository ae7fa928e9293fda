// The examples, run as their readers run them.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/MusicFolder.h"
#include "tests/support/PulseServer.h"

namespace lirvox::test {
namespace {

// A caches folder in which a database of three tunes is installed.
class Examples : public ::testing::Test {
 protected:
  void SetUp() override {
    const Finished index = folder_.run("index music");
    ASSERT_EQ(index.status, 0) << index.output;
  }

  Finished run(const std::string& example) const {
    return folder_.shell(LIRVOX_EXAMPLES + example);
  }

  const MusicFolder folder_{20.0};
};

TEST_F(Examples, RecognizeSamplesOfTheirOwn) {
  std::ofstream file(folder_.path("stereo.raw"), std::ios::binary);
  for (const std::int32_t sample : excerptOf(2, 7.5)) {
    // Four times the rate, two channels.
    const std::vector<std::int16_t> frames(8, static_cast<std::int16_t>(sample));
    file.write(reinterpret_cast<const char*>(frames.data()), 16);
  }
  file.close();
  const Finished feed = run("feed < stereo.raw");
  EXPECT_EQ(feed.output.rfind("track 2 at 7.5", 0), 0U) << feed.output;
  EXPECT_EQ(run("feed < /dev/null").output, "no samples\n");
}

TEST_F(Examples, BuildACatalogueAndRecognizeAgainstIt) {
  std::filesystem::remove_all(folder_.path("caches"));
  for (int i = 0; i < 2; ++i) {  // the tracks of the first time are replaced
    const std::string told = run("catalogue").output;
    EXPECT_EQ(told.rfind("3 tracks in ", 0), 0U) << told;
    EXPECT_NE(told.find("\nrecognized tune 3 at 9"), std::string::npos) << told;
  }
}

TEST_F(Examples, WriteADatabaseInPython) {
  const Finished write = folder_.run("fingerprint music/tune3.wav | python3 " LIRVOX_DATABASE_WRITER
                                     " python.sqlite 7 'A song'");
  EXPECT_EQ(write.status, 0) << write.output;
  const std::string info = folder_.run("info -d python.sqlite").output;
  EXPECT_NE(info.find("Video id's: 7\nTracks: 1\n"), std::string::npos) << info;
  const std::string found =
      folder_.run("recognize --start 8 -d python.sqlite music/tune3.wav").output;
  EXPECT_NE(found.find(": A song at 0:0"), std::string::npos) << found;
}

#if LIRVOX_WITH_PULSE
TEST_F(Examples, ListenWhereTheHostWantsThemTo) {
  if (!PulseServer::isInstalled()) GTEST_SKIP() << "PulseAudio is not installed";
  const PulseServer server;
  ::setenv("PULSE_SERVER", server.address().c_str(), 1);
  EXPECT_EQ(run("listen").output, "not recognized\n");
  if (!std::filesystem::exists(LIRVOX_EXAMPLES "glib")) GTEST_SKIP() << "GLib is not installed";
  EXPECT_EQ(run("glib").output.rfind("listening\nlistening\n", 0), 0U);
  std::filesystem::remove_all(folder_.path("caches"));
  EXPECT_EQ(run("glib").output, "No database file\n");
}
#endif

}  // namespace
}  // namespace lirvox::test
