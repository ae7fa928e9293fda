// lirvox scan and evaluate: what they tell of music that is known.
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/support/MusicTest.h"

namespace lirvox::test {
namespace {

using Json = nlohmann::json;
using Samples = std::vector<std::int32_t>;

// Tunes 1 to 3 are in the database.
struct Seeing : MusicTest {
  Seeing() : MusicTest(30.0) {}
  void SetUp() override { ASSERT_EQ(run("index -d db music").status, 0); }

  static std::vector<Json> lines(const std::string& output) {
    std::vector<Json> all;
    std::istringstream text(output);
    for (std::string line; std::getline(text, line);) all.push_back(Json::parse(line));
    return all;
  }
};

struct Part {
  unsigned tune;  // 0: silence
  double from;
  double seconds;
};

Samples recordingOf(const std::vector<Part>& parts) {
  Samples all;
  for (const auto& [tune, from, seconds] : parts) {
    const Samples whole = tune ? makeTune(tune, 30.0) : Samples(30 * 11025);
    const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(from * 11025);
    all.insert(all.end(), begin, begin + static_cast<std::ptrdiff_t>(seconds * 11025));
  }
  return all;
}

TEST_F(Seeing, AScanTellsWhatIsHeardWhen) {
  // The parts are as played, which is what must be told.
  const std::pair<std::string, std::vector<Part>> cases[] = {
      {"", {{1, 0, 20}, {0, 0, 10}, {2, 5, 12}, {3, 0, 30}}},
      {"", {{0, 0, 20}, {1, 10, 20}, {1, 0, 20}, {0, 0, 8}}},
      {"--seconds 3 --step 1", {{2, 3, 7}, {9, 0, 7}, {2, 20, 9}}},
      {"", {{2, 0, 4}}},
      {"", {{9, 0, 3}}},
      {"--step 4 --min-votes 100000", {{0, 0, 30}}},
  };
  for (const auto& [arguments, parts] : cases) {
    writeRecording(path("long.dat"), recordingOf(parts));
    const Finished scanned = run("scan -d db --format json long.dat " + arguments);
    const std::vector<Json> told = lines(scanned.output);
    ASSERT_EQ(told.size(), parts.size()) << scanned.output;
    double start = 0.0;
    bool any = false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const bool known = parts[i].tune >= 1 && parts[i].tune <= 3;
      any = any || known;
      EXPECT_NEAR(told[i].at("from"), start, 1.5) << scanned.output;
      start += parts[i].seconds;
      EXPECT_NEAR(told[i].at("to"), start, 1.5) << scanned.output;
      EXPECT_EQ(told[i].at("recognized"), known);
      if (!known) continue;
      EXPECT_EQ(told[i].at("title"), "tune" + std::to_string(parts[i].tune));
      EXPECT_NEAR(told[i].at("position"), parts[i].from, 1.5) << scanned.output;
    }
    EXPECT_EQ(scanned.status, any ? 0 : 1);
  }
}

TEST_F(Seeing, AScanHasOtherFormatsAndFailsWhereItMustAsEvaluationsDo) {
  writeRecording(path("long.dat"), recordingOf({{1, 0, 10}, {0, 0, 10}}));
  writeRecording(path("empty.dat"), {});
  writeWav(path("other.wav"), makeTune(9, 30.0));
  expectEach({
      {"scan -d db long.dat", 0, " nothing recognized\n"},
      {"scan -d db --format csv long.dat", 0, ",20.00,,,,,\r\n"},
      {"scan -d db - < music/tune2.wav", 0, "0:00 - 0:29  tune2 at 0:00 ("},
      {"scan -d db empty.dat", 3, "empty.dat: no audio"},
      {"scan -d db none.wav", 3, "none.wav: No such file"},
      {"scan -d none long.dat", 4, "none: no database"},
      {"scan -d db --step 0 long.dat", 2, "--step"},
      {"evaluate -d db other.wav", 3, "other.wav: not in the database"},
      {"evaluate -d db --seconds 40 music", 3, "no track of the database"},
      {"evaluate -d none music", 4, "none: no database"},
      {"evaluate -d db --seconds 5,x music", 2, "5,x: not a list of numbers"},
      {"evaluate -d db --seconds 1,2,3,4 --min-votes 1,2 --plot a.png music", 2, "room for 6"},
      {"evaluate -d db --excerpts 1 --plot none/a.png music", 3, "none/a.png: No such file"},
  });
}

TEST_F(Seeing, AnEvaluationMeasuresEveryWayAndCanBeDoneAgain) {
  const std::string command =
      "evaluate -d db --seconds 2,6 --min-votes 150,100000 --format json --plot a.svg music ";
  const Finished first = run(command + "--excerpts 4");
  ASSERT_EQ(first.status, 0) << first.output;
  EXPECT_EQ(readFile(path("a.svg")).rfind("<?xml", 0), 0U);
  const std::string one = run(command + "--excerpts 1").output;
  EXPECT_EQ(run(command + "--excerpts 1").output, one);
  EXPECT_NE(run(command + "--excerpts 1 --seed 2").output, one);
  std::map<std::string, double> rates;  // for 150 votes
  for (const Json& row : lines(first.output)) {
    EXPECT_EQ(row.at("excerpts"), 4);
    EXPECT_LE(row.at("right_place"), row.at("recognized"));
    const bool isStrict = row.at("min_votes") == 100000;
    EXPECT_EQ(row.at(isStrict ? "recognized" : "absent_answered"), 0.0) << row;
    const std::string key =
        row.at("degradation").get<std::string>() + ' ' + row.at("seconds").dump();
    if (!isStrict) rates[key] = row.at("right_place");
  }
  EXPECT_EQ(rates.size(), 22U);
  for (const char* const mild :
       {"clean 6.0", "noise-20 6.0", "telephone 6.0", "coding 6.0", "room 6.0"}) {
    EXPECT_GE(rates[mild], 0.7) << mild;
  }
  EXPECT_LT(rates["noise-0 2.0"], rates["clean 2.0"]);
}

}  // namespace
}  // namespace lirvox::test
