// The program with a real PulseAudio server, and the rules by which it listens.
#include <nlohmann/json.hpp>

#include "tests/support/MusicTest.h"
#include "tests/support/PulseServer.h"
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
  const std::tuple<std::int32_t, double, double, bool> heard[] = {
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
  using Told = std::optional<SoundWatch::State>;
  const std::tuple<double, double, std::uint64_t, std::uint32_t, Told> noted[] = {
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

struct Listen : MusicTest {
  Listen() : MusicTest(40.0) {}
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no pulseaudio, pactl or paplay here";
    server_ = std::make_unique<PulseServer>();
    ::setenv("PULSE_SERVER", server_->address().c_str(), 1);
    expect("index music/tune1.wav", 0, "1 track");
  }

  std::unique_ptr<PulseServer> server_;
};

TEST_F(Listen, RecognizesWhatAPlayerPlaysAndReplaysTheCapture) {
  server_->play("one", makeTune(1, 40.0));
  const Finished live = run("listen --seconds 4 --format json --save heard.dat");
  EXPECT_EQ(live.status, 0) << live.output;
  const auto answer = nlohmann::json::parse(live.output);
  EXPECT_EQ(answer.at("title"), "tune1");
  const double position = answer.at("position");
  EXPECT_GE(answer.at("position_now").get<double>(), position + 4);

  for (const char* command :
       {"replay --format json heard.dat", "recognize --format json heard.dat"}) {
    const Finished again = run(command);
    EXPECT_EQ(again.status, 0) << again.output;
    EXPECT_NEAR(nlohmann::json::parse(again.output).at("position").get<double>(), position, 0.05);
  }
}

TEST_F(Listen, GoesOnUntilTheServerDiesOrItsOwnSourceIsRemoved) {
  server_->play("one", makeTune(1, 40.0));
  expect("listen --source two.monitor --seconds 60", 5, "no source two.monitor",
         [&](const std::string& line) {
           if (line.find("silence") != std::string::npos) server_->removeSink("two");
         });
  ASSERT_TRUE(server_->control("load-module module-null-sink sink_name=three"));
  bool followed = false;
  expect("listen --continuous --seconds 3", 5, "No sound server", [&](const std::string& line) {
    if (line.rfind("tune1 at 0:", 0) == 0) server_->control("set-default-source three.monitor");
    if (line.find("(monitor three.monitor)\n") != std::string::npos) followed = true;
    if (line.find("silence") != std::string::npos) server_->kill();
  });
  EXPECT_TRUE(followed);
}

TEST_F(Listen, SaysWhatIsMissingAndEndsWhenItIsTold) {
  ASSERT_TRUE(server_->control("set-default-source two.monitor"));
  expectEach({
      {"devices", 0, "  one.monitor\n"},
      {"devices --format json", 0, "\"kind\":\"monitor\",\"default\":true"},
      {"listen --source three", 5, "no source three"},
      {"listen -d none.sqlite", 4, "none.sqlite"},
      {"replay none.dat", 3, "none.dat"},
  });
  const Finished ended = shell("echo $$ > pid && exec " LIRVOX_PROGRAM " listen --continuous",
                               [&](const std::string& line) {
                                 if (line.find("Nothing but silence") == std::string::npos) return;
                                 runCommand("kill -INT $(cat '" + path("pid") + "')");
                               });
  EXPECT_EQ(ended.status, 1) << ended.output;
  ::setenv("PULSE_SERVER", "unix:/nowhere", 1);
  expect("listen", 5, "No sound server");
}

}  // namespace
}  // namespace lirvox::test
