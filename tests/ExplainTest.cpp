// lirvox explain and plot: they tell what lirvox recognize does.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

using Samples = std::vector<std::int32_t>;

// Tunes 1 to 3, and tune 4 five times, under a title that is not in ASCII.
class Explain : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    std::filesystem::create_directory(path("music"));
    for (unsigned seed = 1; seed <= 3; ++seed) {
      writeWav(path("music/tune" + std::to_string(seed) + ".wav"), makeTune(seed, 20.0));
    }
    for (int copy = 1; copy <= 5; ++copy) {
      writeWav(path("music/Lied für Ελένη 雪 " + std::to_string(copy) + ".wav"), makeTune(4, 20.0));
    }
    ASSERT_EQ(run("index -d db music").status, 0);
  }
  static void TearDownTestSuite() { delete folder_; }

  static std::string path(const std::string& name) { return folder_->path(name).string(); }
  static Finished run(const std::string& arguments) {
    return runCommand("cd '" + folder_->path().string() + "' && " LIRVOX_PROGRAM " " + arguments);
  }

  // Five seconds of a tune.
  static Samples excerpt(unsigned seed, double from) {
    const Samples tune = makeTune(seed, 20.0);
    const auto begin = tune.begin() + static_cast<std::ptrdiff_t>(from * 11025);
    return {begin, begin + 55125};
  }

  static TemporaryFolder* folder_;
};

TemporaryFolder* Explain::folder_ = nullptr;

TEST_F(Explain, GivesTheAnswerOfRecognizeWithItsReason) {
  Samples click(55125);
  click[20000] = 10000;
  const struct {
    Samples samples;
    const char* options;
    const char* reason;
  } cases[] = {
      {excerpt(2, 7.5), "", "stands-out"},
      {excerpt(2, 7.5), "--min-votes 100000", "too-few-votes"},
      {excerpt(2, 7.5), "--seconds 0.2", "too-short"},
      {excerpt(1, 0.0), "--start 3 --min-votes 1", "stands-out"},
      {excerpt(4, 6.0), "", "nobody-silences"},
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
    EXPECT_EQ(explanation.at("reason"), reason) << explanation.at("explanation");
    const auto answer = nlohmann::json::parse(recognized.output);
    for (const auto& [name, value] : answer.items()) EXPECT_EQ(explanation.at(name), value) << name;
  }
}

}  // namespace
}  // namespace lirvox::test
