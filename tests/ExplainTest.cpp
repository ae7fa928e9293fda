// lirvox explain and plot: they tell what lirvox recognize does.
#include <nlohmann/json.hpp>

#include "tests/support/MusicTest.h"

namespace lirvox::test {
namespace {

using Samples = std::vector<std::int32_t>;

// Tunes 1 to 3, and tune 4 five times, under a title that is not in ASCII.
struct Explain : MusicTest {
  void SetUp() override {
    for (int copy = 1; copy <= 5; ++copy) {
      writeWav(path("music/Lied für Ελένη 雪 " + std::to_string(copy) + ".wav"), makeTune(4, 20.0));
    }
    ASSERT_EQ(run("index -d db music").status, 0);
  }
};

TEST_F(Explain, GivesTheAnswerOfRecognizeWithItsReason) {
  Samples click(55125);
  click[20000] = 10000;
  const std::tuple<Samples, const char*, const char*> cases[] = {
      {excerptOf(2, 7.5), "", "stands-out"},
      {excerptOf(2, 7.5), "--min-votes 100000", "too-few-votes"},
      {excerptOf(2, 7.5), "--seconds 0.2", "too-short"},
      {excerptOf(1, 0.0), "--start 3 --min-votes 1", "stands-out"},
      {excerptOf(4, 6.0), "", "nobody-silences"},
      {makeTune(99, 5.0), "", "too-few-votes"},
      {Samples(55125), "", "silence"},
      {click, "", "no-landmarks"},
  };
  for (const auto& [samples, options, reason] : cases) {
    writeRecording(path("excerpt.dat"), samples);
    const std::string arguments = std::string(" -d db --format json excerpt.dat ") + options;
    const Finished recognized = run("recognize" + arguments);
    const Finished explained = run("explain" + arguments);
    EXPECT_EQ(explained.status, recognized.status) << explained.output;
    const auto explanation = nlohmann::json::parse(explained.output);
    const std::string sentence = explanation.at("explanation");
    EXPECT_EQ(explanation.at("reason"), reason) << sentence;
    if (sentence.find("of the fourth best") != std::string::npos) {
      const std::string fourth = explanation.at("standing").at("fourth_votes").dump();
      EXPECT_NE(sentence.find(" the " + fourth + " of the fourth"), std::string::npos) << sentence;
    }
    const auto answer = nlohmann::json::parse(recognized.output);
    for (const auto& [name, value] : answer.items()) EXPECT_EQ(explanation.at(name), value) << name;
  }
}

TEST_F(Explain, DrawsWhateverIsInAFileAndTellsTheAnswerToo) {
  // The picture begins like this; "" where there is none.
  const std::tuple<Samples, std::string, int, const char*, const char*> cases[] = {
      {excerptOf(2, 7.5), "-d db -o a.png", 0, "\x89PNG", "excerpt.dat: tune2 at 0:07 ("},
      {excerptOf(4, 6.0), "-d db -o b.svg", 0, "<?xml", "Lied für Ελένη 雪"},
      {excerptOf(2, 7.5), "-d db --start 2 -o c.pdf", 0, "%PDF", "from 0:02: tune2 at 0:09"},
      {excerptOf(2, 7.5), "-o d.png", 0, "\x89PNG", "excerpt.dat\n"},
      {Samples(55125), "-d db -o e.png", 0, "\x89PNG", "not recognized"},
      {Samples(1000), "-d db -o f.png", 0, "\x89PNG", "not recognized"},
      {{}, "-d db -o g.png", 3, "", "no audio"},
      {excerptOf(2, 7.5), "-d db -o h.gif", 2, "", "h.gif: a picture's name ends in"},
      {excerptOf(2, 7.5), "-d none -o i.png", 4, "", "none: no database"},
      {excerptOf(2, 7.5), "-d db -o missing/j.png", 3, "", "missing/j.png: No such file"},
  };
  for (const auto& [samples, arguments, status, begins, says] : cases) {
    writeRecording(path("excerpt.dat"), samples);
    const Finished plotted = run("plot excerpt.dat " + arguments);
    EXPECT_EQ(plotted.status, status) << arguments;
    EXPECT_NE(plotted.output.find(says), std::string::npos) << arguments << plotted.output;
    const std::string picture = readFile(path(arguments.substr(arguments.rfind(' ') + 1)));
    EXPECT_EQ(picture.empty(), !*begins) << arguments;
    EXPECT_EQ(picture.rfind(begins, 0), 0U) << arguments;
  }
}

}  // namespace
}  // namespace lirvox::test
