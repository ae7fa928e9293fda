// One listening: a capture, or capture after capture.
#include "tools/Listening.h"

#include <iostream>

#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/Wakeup.h"

namespace lirvox::tools {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

// How long an input may give nothing before the capture is given up.
constexpr auto kLongestDrought = 10s;

}  // namespace

Listening::Listening(const Options& options)
    : options_(options),
      report_(options.database, options.format),
      recognizer_({options.database, options.source, options.seconds, options.minimumVotes,
                   !options.saveTo.empty()}) {}

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
  wake();  // to look whether it has
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
  if (recognizer_.takeFailure()) {
    if (inputIsThere(1s)) say("The input cannot be used");
    return End::inputGone;
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

// Which input is heard: people see it at the beginning, and logs have it when it changes.
void Listening::tellInput() {
  const auto input = recognizer_.input();
  const std::string identifier = input ? input->uniqueIdentifier : "";
  if (inputIdentifier_ == identifier) return;
  const bool isFirst = !inputIdentifier_;
  inputIdentifier_ = identifier;
  inputName_ = input ? input->name : "nothing";
  if (isFirst && !meter_.isShown()) return;
  meter_.hide();
  std::cerr << "Listening to " << inputName_;
  if (input) std::cerr << (input->isMonitor ? " (monitor " : " (microphone ") << identifier << ')';
  std::cerr << '\n';
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

}  // namespace lirvox::tools
