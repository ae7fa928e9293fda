// The program with a real PulseAudio server, and the rules by which it listens.
#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "tests/support/Command.h"
#include "tests/support/PulseServer.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Tune.h"
#include "tools/RepeatFilter.h"
#include "tools/SoundWatch.h"

namespace lirvox::test {
namespace {

using tools::RepeatFilter;
using tools::SoundWatch;

std::chrono::steady_clock::time_point at(double seconds) {
  return std::chrono::steady_clock::time_point(
      std::chrono::milliseconds(static_cast<long>(1000 * seconds)));
}

TEST(RepeatFilter, LetsATrackPassAgainOnlyAfterAJumpOrAnotherTrack) {
  const struct {
    std::int32_t trackId;
    double position, time;
    bool isNews;
  } heard[] = {
      {3, 10, 5, true},     {3, 15.1, 10, false}, {3, 60, 55, false},
      {3, 58.1, 55, false}, {3, 10, 60, true},    {3, 200, 65, true},
      {4, 1, 70, true},     {3, 205, 75, true},   {3, 207.1, 75, true},
  };
  RepeatFilter filter;
  for (const auto& [trackId, position, time, isNews] : heard) {
    EXPECT_EQ(filter.isNews(trackId, position, at(time)), isNews) << position << " s at " << time;
  }
}

TEST(SoundWatch, TellsOnceWhenNothingOrOnlySilenceArrives) {
  constexpr std::uint32_t kDither = 1U << 16;
  using enum SoundWatch::State;
  const struct {
    double begin, time;
    std::uint64_t frames;
    std::uint32_t peak;
    std::optional<SoundWatch::State> told;
  } noted[] = {
      {10, 11.9, 0, 0, {}},      {0, 12, 0, 0, noAudio},
      {0, 13, 0, 0, {}},         {0, 13.5, 100, kDither, silence},
      {0, 14, 200, kDither, {}}, {0, 14.5, 300, 1U << 30, sound},
      {0, 16, 400, 0, {}},  // a pause in a capture is no silent capture
      {20, 21.9, 500, 0, {}},    {0, 22, 600, 0, silence},
      {25, 27, 700, 0, {}},  // it was told already
  };
  SoundWatch watch;
  for (const auto& [begin, time, frames, peak, told] : noted) {
    if (begin > 0) watch.begin(at(begin));
    EXPECT_EQ(watch.note(at(time), frames, peak), told) << time;
  }
}

class Listen : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no pulseaudio, pactl or paplay here";
    server_ = std::make_unique<PulseServer>();
    writeWav(folder_.path("tune.wav").string(), tune_);
  }

  // Runs a command with the program's name for @; `withLine` gets each line as it comes.
  Finished run(std::string command, const std::function<void(const std::string&)>& withLine = {}) {
    command.replace(command.find('@'), 1, LIRVOX_PROGRAM);
    command = "cd '" + folder_.path().string() +
              "'; export LIRVOX_CACHES_DIR=. PULSE_SERVER=" + server_->address() + "; " + command +
              " 2>&1";
    Finished finished;
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::array<char, 1000> line{};
    while (std::fgets(line.data(), line.size(), pipe)) {
      finished.output += line.data();
      if (withLine) withLine(line.data());
    }
    finished.status = WEXITSTATUS(::pclose(pipe));
    return finished;
  }

  const std::vector<std::int32_t> tune_ = makeTune(1, 40.0);
  TemporaryFolder folder_;
  std::unique_ptr<PulseServer> server_;
};

TEST_F(Listen, RecognizesWhatAPlayerPlaysAndReplaysTheCapture) {
  ASSERT_EQ(run("@ index tune.wav").status, 0);
  server_->play("one", tune_);
  const Finished live = run("@ listen --seconds 4 --format json --save heard.dat");
  EXPECT_EQ(live.status, 0) << live.output;
  const auto answer = nlohmann::json::parse(live.output);
  EXPECT_EQ(answer.at("title"), "tune");
  const double position = answer.at("position");
  EXPECT_GE(answer.at("position_now").get<double>(), position + 4);

  for (const char* command :
       {"@ replay --format json heard.dat", "@ recognize --format json heard.dat"}) {
    const Finished again = run(command);
    EXPECT_EQ(again.status, 0) << again.output;
    EXPECT_NEAR(nlohmann::json::parse(again.output).at("position").get<double>(), position, 0.05);
  }
}

TEST_F(Listen, GoesOnUntilTheServerDiesOrItsOwnSourceIsRemoved) {
  ASSERT_EQ(run("@ index tune.wav").status, 0);
  server_->play("one", tune_);
  const Finished removed =
      run("@ listen --source two.monitor --seconds 60", [&](const std::string& line) {
        if (line.find("silence") != std::string::npos) server_->removeSink("two");
      });
  EXPECT_EQ(removed.status, 5);
  EXPECT_NE(removed.output.find("no source two.monitor"), std::string::npos) << removed.output;
  ASSERT_TRUE(server_->control("load-module module-null-sink sink_name=three"));
  const Finished killed = run("@ listen --continuous --seconds 3", [&](const std::string& line) {
    if (line.rfind("tune at 0:", 0) == 0) server_->control("set-default-source three.monitor");
    if (line.find("silence") != std::string::npos) server_->kill();
  });
  EXPECT_EQ(killed.status, 5);
  EXPECT_NE(killed.output.find("(monitor three.monitor)\n"), std::string::npos) << killed.output;
  EXPECT_NE(killed.output.find("No sound server"), std::string::npos) << killed.output;
}

TEST_F(Listen, SaysWhatIsMissingAndEndsWhenItIsTold) {
  ASSERT_EQ(run("@ index tune.wav").status, 0);
  ASSERT_TRUE(server_->control("set-default-source two.monitor"));
  const std::vector<Expectation> cases = {
      {"@ devices", 0, "  one.monitor\n"},
      {"@ devices --format json", 0, "\"kind\":\"monitor\",\"default\":true"},
      {"PULSE_SERVER=unix:/nowhere @ listen", 5, "No sound server"},
      {"@ listen --source three", 5, "no source three"},
      {"@ listen -d none.sqlite", 4, "none.sqlite"},
      {"@ replay none.dat", 3, "none.dat"},
  };
  expectEach(cases, [&](const std::string& command) { return run(command); });
  const Finished ended =
      run("sh -c 'echo $$ > pid; exec @ listen --continuous'", [&](const std::string& line) {
        if (line.find("Nothing but silence") == std::string::npos) return;
        runCommand("kill -INT $(cat '" + folder_.path("pid").string() + "')");
      });
  EXPECT_EQ(ended.status, 1) << ended.output;
}

}  // namespace
}  // namespace lirvox::test
