// lirvox listen: what is playing.
#include <chrono>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "lib/LirvoxSettings.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/LevelMeter.h"
#include "tools/LiveRecognizer.h"
#include "tools/RepeatFilter.h"
#include "tools/Report.h"
#include "tools/SoundWatch.h"
#include "tools/Wakeup.h"

namespace lirvox::tools {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// How long an input may give nothing before the capture is given up.
constexpr auto kLongestDrought = 10s;

struct Options {
  std::string database;
  double seconds = LirvoxSettings::recordTime();
  bool continuous = false;
  std::string source;
  std::int32_t minimumVotes = 0;
  std::string format;
  std::string saveTo;
};

class Listening {
 public:
  explicit Listening(const Options& options)
      : options_(options),
        report_(options.database, options.format),
        recognizer_({options.database, options.source, options.seconds, options.minimumVotes,
                     !options.saveTo.empty()}) {}

  int run();

 private:
  enum class End { answered, interrupted, inputGone, drought };

  End capture();
  std::optional<End> look();
  void watch();
  bool inputIsThere(std::chrono::milliseconds patience);
  void tellInput();
  void say(const std::string& text);
  void tell(const Answer& answer);
  void save();

  const Options options_;
  const Report report_;
  LiveRecognizer recognizer_;
  LevelMeter meter_;
  SoundWatch watch_;
  RepeatFilter repeats_;
  std::string inputName_;
  std::uint64_t framesBefore_ = 0;
  bool recognizedAny_ = false;
  bool saved_ = true;
};

int Listening::run() {
  catchSignals();
  End end = End::answered;
  do {
    if (!inputIsThere(0ms)) return exitAudioDevice;
    end = capture();
    meter_.hide();
    if (!options_.saveTo.empty()) save();
    if (end == End::inputGone) return exitAudioDevice;
    if (end == End::drought && !options_.continuous) {
      say("No audio for 10 s: giving up");
      return exitAudioDevice;
    }
  } while (options_.continuous && end != End::interrupted);
  if (!saved_) return exitSomeFailed;
  return recognizedAny_ ? exitDone : exitNotRecognized;
}

Listening::End Listening::capture() {
  framesBefore_ = recognizer_.frames();
  tellInput();
  recognizer_.start();
  watch_.begin(Clock::now());
  // Without a meter there is little to do but to notice that nothing comes.
  const auto pause = meter_.isShown() ? 100ms : 500ms;
  while (true) {
    sleepFor(pause);
    const auto end = look();
    if (!end) continue;
    if (*end != End::answered) recognizer_.stop();
    return *end;
  }
}

// Whether the capture is over, and how.
std::optional<Listening::End> Listening::look() {
  if (signalCaught() || outputIsClosed()) return End::interrupted;
  if (const auto answer = recognizer_.takeAnswer()) {
    meter_.hide();
    tell(*answer);
    return End::answered;
  }
  if (recognizer_.takeInputChange()) {
    if (!inputIsThere(1s)) return End::inputGone;
    tellInput();
  }
  watch();
  if (Clock::now() - watch_.lastArrival() >= kLongestDrought) return End::drought;
  return std::nullopt;
}

void Listening::watch() {
  const std::uint64_t frames = recognizer_.frames();
  const std::uint32_t peak = recognizer_.takePeak();
  if (const auto state = watch_.note(Clock::now(), frames, peak)) {
    if (*state == SoundWatch::State::noAudio) say("No audio arrives from " + inputName_);
    if (*state == SoundWatch::State::silence) say("Nothing but silence from " + inputName_);
  }
  meter_.show(peak, static_cast<double>(frames - framesBefore_) / LirvoxSettings::sampleRate(),
              options_.seconds);
}

// One that goes away may be followed by another, which a server takes a moment to choose.
bool Listening::inputIsThere(std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  std::string reason = recognizer_.whyNoInput();
  while (!reason.empty() && Clock::now() < end && !signalCaught()) {
    sleepFor(100ms);
    reason = recognizer_.whyNoInput();
  }
  if (!reason.empty()) say(reason);
  return reason.empty();
}

// People see which input is heard, at the beginning and when it changes.
void Listening::tellInput() {
  const std::string name = recognizer_.inputName();
  if (name == inputName_) return;
  inputName_ = name;
  if (!meter_.isShown()) return;
  meter_.hide();
  std::cerr << "Listening to " << name << '\n';
}

void Listening::say(const std::string& text) {
  meter_.hide();
  complain(text);
}

// A long listening tells tracks, and each once; a single capture tells its outcome.
void Listening::tell(const Answer& answer) {
  if (options_.continuous &&
      !(answer.recognized &&
        repeats_.isNews(answer.trackId, answer.positionNowInSeconds, Clock::now()))) {
    return;
  }
  recognizedAny_ = recognizedAny_ || answer.recognized;
  report_.heard(answer);
}

void Listening::save() {
  const std::error_code error = recognizer_.saveTo(options_.saveTo);
  if (!error) return;
  saved_ = false;
  complain(options_.saveTo + ": " + error.message());
}

int listen(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  return Listening(options).run();
}

}  // namespace

Command listenCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "listen",
      .summary = "Say what is playing, in the room or on this computer",
      .details =
          "Tells the track and how far it has got. With --continuous, a track that goes on is "
          "told\n"
          "once, and again when its position jumps or another was heard in between; captures in\n"
          "which nothing is recognized are passed over. On a terminal a meter shows the level.\n"
          "What plays on this computer is heard through a monitor: lirvox devices.\n"
          "\n"
          "JSON: one object per line, with recognized, track_id, title, position (seconds in the\n"
          "track at the start of the capture) and position_now.\n"
          "\n"
          "Exit status: 0 something was recognized, 1 nothing, 5 there is nothing to listen to, "
          "or\n"
          "not any more.\n"
          "\n"
          "Examples:\n"
          "  lirvox listen\n"
          "  lirvox listen --continuous --format json --source alsa_output.hdmi.monitor\n"
          "  lirvox listen --seconds 8 --save heard.dat && lirvox replay heard.dat",
      .options = {databaseOption(options->database),
                  {.names = "--seconds",
                   .value = &options->seconds,
                   .help = "Length of a capture",
                   .unit = "SECONDS",
                   .range = {{0.5, 3600}}},
                  {.names = "--continuous",
                   .value = &options->continuous,
                   .help = "Capture after capture, until Ctrl-C; tells each track once"},
                  {.names = "--source",
                   .value = &options->source,
                   .help = "Listen to this source and no other; else to the default one, also "
                           "when it changes",
                   .unit = "NAME"},
                  votesOption(options->minimumVotes),
                  formatOption(options->format),
                  {.names = "--save",
                   .value = &options->saveTo,
                   .help = "Keep the capture, the last one, for lirvox replay",
                   .unit = "FILE"}},
      .run = [options] { return listen(*options); }};
}

}  // namespace lirvox::tools
