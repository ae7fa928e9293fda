// The lirvox program, run as its users run it.
#include <nlohmann/json.hpp>

#include "tests/support/MusicTest.h"

namespace lirvox::test {
namespace {

struct Program : MusicTest {
  Program() { writeFile(path("music/cover.txt"), "no music in here"); }
};

TEST_F(Program, RecognizesWhatItHasIndexed) {
  ASSERT_EQ(run("index music").status, 0);
  writeRecording(path("excerpt.dat"), excerptOf(2, 7.5));
  expect("recognize excerpt.dat", 0, "excerpt.dat: tune2 at 0:07 (");

  const auto json = nlohmann::json::parse(run("recognize --format json excerpt.dat").output);
  EXPECT_EQ(json.at("file"), "excerpt.dat");
  EXPECT_EQ(json.at("recognized"), true);
  EXPECT_EQ(json.at("track_id"), 2);
  EXPECT_EQ(json.at("title"), "tune2");
  EXPECT_NEAR(json.at("position").get<double>(), 7.5, 0.05);
  EXPECT_GT(json.at("votes").get<int>(), 30);
}

TEST_F(Program, ReadsStandardInputStartsLaterAndTakesWhatAShortFileHas) {
  ASSERT_EQ(run("index music").status, 0);
  const std::string late = run("recognize --start 4 --format json - < music/tune3.wav").output;
  EXPECT_NEAR(nlohmann::json::parse(late).at("position").get<double>(), 4.0, 0.05) << late;
  EXPECT_EQ(run("recognize --start 16 music/tune3.wav").status, 0);
}

TEST_F(Program, SkipsWhatIsUnchangedAndReplacesWhatHasChanged) {
  expectEach({{"index music", 0, "3 tracks added"},
              {"index music/tune1.wav music music", 0, "0 tracks added"},
              {"index music/tune1.wav music music", 0, " 3 unchanged"}});
  writeWav(path("music/tune2.wav"), makeTune(77, 20.0));
  writeRecording(path("old.dat"), excerptOf(2, 7.5));
  expectEach({{"index music", 0, "1 track added"},
              {"recognize old.dat", 1, "not recognized"},
              {"recognize music/tune2.wav", 0, ": tune2 at 0:00"},
              {"info", 0, "Video id's: 1,2,3\n"}});
}

TEST_F(Program, KeepsACatalogueAndAsksBeforeItLosesAnything) {
  ASSERT_EQ(run("index -d a.sqlite music/tune1.wav music/tune2.wav").status, 0);
  ASSERT_EQ(run("index -d b.sqlite music/tune3.wav").status, 0);
  std::filesystem::copy(path("music/tune1.wav"), path("copy.wav"));
  ASSERT_EQ(run("index -d c.sqlite copy.wav").status, 0);
  expectEach({
      {"merge -o all.sqlite a.sqlite b.sqlite c.sqlite", 0, "4 tracks"},
      {"merge -o all.sqlite a.sqlite < /dev/null", 2, "--yes"},
      {"merge -o all.sqlite a.sqlite none < /dev/null", 4, "none: no database there"},
      {"duplicates -d all.sqlite --format json", 0, R"("relation":"same","track_id":1)"},
      {"remove -d all.sqlite copy < /dev/null", 2, "Remove 1 track from all.sqlite?"},
      {"list -d all.sqlite --format csv copy", 0, "4,\"copy\",\"\","},
      {"remove -d all.sqlite --yes copy nosuch", 3, "nosuch: no such track"},
      {"remove -d all.sqlite --yes copy", 0, "1 track removed"},
      {"rename -d all.sqlite tune3 --title 'New Name' --artist Me", 0, "Me - New Name"},
      {"rename -d all.sqlite '*' --title x", 3, "3 tracks match"},
      {"recognize -d all.sqlite music/tune3.wav", 0, "Me - New Name at 0:00"},
      {"merge --yes -o a.sqlite all.sqlite", 0, "3 tracks"},
      {"verify -d a.sqlite", 0, "a sound catalogue"},
      {"info -d a.sqlite --format json", 0, R"("track_ids":[1,2,3],"tracks":3,)"},
      {"list -d none.sqlite", 4, "none.sqlite: no database there"},
      {"verify -d music/tune1.wav", 4, "damages of the file"},
  });
}

TEST_F(Program, HearsSilenceInSamplesThatAreNoNumbers) {
  std::string sound(".snd\0\0\0\x18\xff\xff\xff\xff\0\0\0\x06\0\0\x2b\x11\0\0\0\x01", 24);
  for (int i = 0; i < 60'000; ++i) sound.append(i % 3000 < 500 ? "\x7f\xc0\0\0" : "\0\0\0\0", 4);
  writeFile(path("silence.au"), sound);
  EXPECT_EQ(run("fingerprint silence.au").output, "");
}

TEST_F(Program, ExitStatusTellsWhatWentWrong) {
  writeFile(path("text.sqlite"), "this is no database, however long it may be");
  expectEach({
      {"--help", 0, "lirvox index"},
      {"", 2, "a command is required"},
      {"frobnicate", 2, "frobnicate: no such command"},
      {"recognize", 2, "FILE"},
      {"recognize --seconds -3 music/tune1.wav", 2, "--seconds"},
      {"recognize --start nan music/tune1.wav", 2, "nan is not a number"},
      {"recognize -d none.sqlite music/tune1.wav", 4, "none.sqlite"},
      {"recognize -d text.sqlite music/tune1.wav", 4, "text.sqlite"},
      {"info -d text.sqlite", 4, "text.sqlite"},
      {"index -d text.sqlite music", 4, "text.sqlite"},
      {"index -d /proc/new.sqlite music", 4, "/proc/new.sqlite"},
      {"index -d new.sqlite music/cover.txt missing", 3, "missing: no such file"},
      {"index -d full.sqlite --shifts 1 music", 0, "3 tracks added"},
      {"index -d full.sqlite --shifts 4 music", 4, "full.sqlite: made with alignments = 1"},
      {"recognize -d full.sqlite music/tune1.wav music/cover.txt", 3, "music/cover.txt"},
      {"fingerprint music/cover.txt", 3, "music/cover.txt"},
  });
  EXPECT_EQ(readFile(path("text.sqlite")).rfind("this is no", 0), 0U) << "untouched";
}

}  // namespace
}  // namespace lirvox::test
