// The examples, run as their readers run them.
#include "tests/support/MusicTest.h"
#include "tests/support/PulseServer.h"

namespace lirvox::test {
namespace {

// A caches folder in which a database of three tunes is installed.
struct Examples : MusicTest {
  void SetUp() override { expect("index music", 0, "3 tracks"); }

  Finished example(const std::string& name) const { return shell(LIRVOX_EXAMPLES + name); }
};

TEST_F(Examples, RecognizeSamplesOfTheirOwn) {
  std::ofstream file(path("stereo.raw"), std::ios::binary);
  for (const std::int32_t sample : excerptOf(2, 7.5)) {
    // Four times the rate, two channels.
    const std::vector<std::int16_t> frames(8, static_cast<std::int16_t>(sample));
    file.write(reinterpret_cast<const char*>(frames.data()), 16);
  }
  file.close();
  const Finished feed = example("feed < stereo.raw");
  EXPECT_EQ(feed.output.rfind("track 2 at 7.5", 0), 0U) << feed.output;
  EXPECT_EQ(example("feed < /dev/null").output, "no samples\n");
}

TEST_F(Examples, BuildACatalogueAndRecognizeAgainstIt) {
  std::filesystem::remove_all(path("caches"));
  for (int i = 0; i < 2; ++i) {  // the tracks of the first time are replaced
    const std::string told = example("catalogue").output;
    EXPECT_EQ(told.rfind("3 tracks in ", 0), 0U) << told;
    EXPECT_NE(told.find("\nrecognized tune 3 at 9"), std::string::npos) << told;
  }
}

TEST_F(Examples, WriteADatabaseInPython) {
  expectEach(
      {{"fingerprint music/tune3.wav | python3 " LIRVOX_DATABASE_WRITER " python.sqlite 7 'A song'",
        0, ""},
       {"info -d python.sqlite", 0, "Video id's: 7\nTracks: 1\n"},
       {"recognize --start 8 -d python.sqlite music/tune3.wav", 0, ": A song at 0:0"}});
}

#if LIRVOX_WITH_PULSE
TEST_F(Examples, ListenWhereTheHostWantsThemTo) {
  if (!PulseServer::isInstalled()) GTEST_SKIP() << "PulseAudio is not installed";
  const PulseServer server;
  ::setenv("PULSE_SERVER", server.address().c_str(), 1);
  EXPECT_EQ(example("listen").output, "not recognized\n");
  if (!std::filesystem::exists(LIRVOX_EXAMPLES "glib")) GTEST_SKIP() << "GLib is not installed";
  EXPECT_EQ(example("glib").output.rfind("listening\nlistening\n", 0), 0U);
  std::filesystem::remove_all(path("caches"));
  EXPECT_EQ(example("glib").output, "No database file\n");
}
#endif

}  // namespace
}  // namespace lirvox::test
