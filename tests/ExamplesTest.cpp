// The examples, run as their readers run them.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Command.h"
#include "tests/support/PulseServer.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

// A caches folder in which a database of three tunes is installed.
class Examples : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(folder_.path("music"));
    for (const unsigned seed : {1U, 2U, 3U}) {
      const std::string name = "music/tune" + std::to_string(seed) + ".wav";
      writeWav(folder_.path(name).string(), makeTune(seed, 20.0));
    }
    const Finished index =
        runCommand(environment_ + LIRVOX_PROGRAM " index " + folder_.path("music").string());
    ASSERT_EQ(index.status, 0) << index.output;
  }

  Finished run(const std::string& example) const {
    return runCommand(environment_ + LIRVOX_EXAMPLES + example);
  }

  TemporaryFolder folder_;
  const std::string environment_ = "LIRVOX_CACHES_DIR=" + folder_.path("caches").string() +
                                   " LIRVOX_CONFIG_DIR=" + folder_.path("config").string() + ' ';
};

TEST_F(Examples, RecognizeSamplesOfTheirOwn) {
  const std::vector<std::int32_t> tune = makeTune(2, 20.0);
  std::ofstream file(folder_.path("stereo.raw"), std::ios::binary);
  for (std::size_t i = 82688; i < 82688 + 55125; ++i) {
    // Four times the rate, two channels.
    const std::vector<std::int16_t> frames(8, static_cast<std::int16_t>(tune[i]));
    file.write(reinterpret_cast<const char*>(frames.data()), 16);
  }
  file.close();
  const Finished feed = run("feed < " + folder_.path("stereo.raw").string());
  EXPECT_EQ(feed.output.rfind("track 2 at 7.5", 0), 0U) << feed.output;
  EXPECT_EQ(run("feed < /dev/null").output, "no samples\n");
}

TEST_F(Examples, BuildACatalogueAndRecognizeAgainstIt) {
  std::filesystem::remove_all(folder_.path("caches"));
  for (int i = 0; i < 2; ++i) {  // the tracks of the first time are replaced
    const Finished catalogue = run("catalogue");
    EXPECT_EQ(catalogue.output.rfind("3 tracks in ", 0), 0U) << catalogue.output;
    EXPECT_NE(catalogue.output.find("\nrecognized tune 3 at 9"), std::string::npos)
        << catalogue.output;
  }
}

TEST_F(Examples, WriteADatabaseInPython) {
  const std::string tune = folder_.path("music/tune3.wav").string();
  const std::string database = " -d " + folder_.path("python.sqlite").string() + ' ';
  const std::string program = environment_ + LIRVOX_PROGRAM " ";
  const Finished write =
      runCommand(program + "fingerprint " + tune + " | python3 " + LIRVOX_DATABASE_WRITER " " +
                 folder_.path("python.sqlite").string() + " 7 'A song'");
  EXPECT_EQ(write.status, 0) << write.output;
  const Finished info = runCommand(program + "info" + database);
  EXPECT_NE(info.output.find("Video id's: 7\nTracks: 1\n"), std::string::npos) << info.output;
  const Finished found = runCommand(program + "recognize --start 8" + database + tune);
  EXPECT_NE(found.output.find(": A song at 0:0"), std::string::npos) << found.output;
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
