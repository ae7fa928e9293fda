// The recognizer: the one object through which a host uses the library.
#include "lib/Lirvox.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <utility>

#include "lib/LirvoxAudioFFT.h"
#include "lib/LirvoxPostDatabaseProcessing.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxState.h"
#include "lib/LirvoxUtilities.h"
#include "lib/platform/ForkedChild.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {
namespace {

bool databaseFileExists() {
  std::error_code ignored;
  return std::filesystem::exists(LirvoxSettings::databasePath(), ignored);
}

// Truncates toward zero, saturates at the bounds of 32 bits and makes NaN 0.
std::int32_t saturatedInteger(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(value)) return 0;
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  return static_cast<std::int32_t>(value);
}

// Memory made ready before the microphone starts. Most captures need no more; for
// long ones the pass keeps making room ahead of the audio thread.
constexpr std::size_t kInitialReserveInBytes = std::size_t{1} << 20;

}  // namespace

bool refusesForkedChild() {
  if (!platform::isForkedChild()) return false;
  platform::log("A forked process cannot use the recognizer of its parent");
  return true;
}

std::shared_ptr<Lirvox> Lirvox::sharedInstance() {
  // Never destroyed: it lives as long as the process, whose threads may use it to the end.
  static const auto* const instance = [] {
    auto* const created = new std::shared_ptr<Lirvox>(new Lirvox);
    platform::noteForks();
    audioSessionInit();
    (*created)->setFft(std::make_shared<LirvoxAudioFFT>());
    (*created)->setHistoryInfo(LirvoxUtilities::initHistoryInfo());
    return created;
  }();
  return *instance;
}

Lirvox::Lirvox() : state_(std::make_unique<State>()) {
  state_->passes = std::make_shared<PassQueue>(
      [this](ProcessingPass& pass, PassState state) { finishPass(pass, state); });
}

Lirvox::~Lirvox() = default;

// --- Recognition ---

void Lirvox::audioSessionInit() {
  const auto session = platform::current()->audioSession;
  LirvoxError error;
  if (!session->setCategory(platform::AudioSessionCategory::playAndRecord, error)) {
    platform::log("Error setting up audio session category: " + error.localizedDescription);
  }
  if (!session->setActive(true, error)) {
    platform::log("Error setting up audio session active: " + error.localizedDescription);
  }
}

void Lirvox::startRecognize() {
  if (refusesForkedChild()) return;
  const platform::MutexLock lock(state_->capture.control);
  if (isRecording()) return;
  const bool started = state_->tryToStart([this]() LIRVOX_REQUIRES(state_->capture.control) {
    // A host that has no file learns of it through canRecognize, not from here: meant.
    if (!databaseFileExists()) return;
    state_->stopNow = false;
    setTimeStartListening(platform::current()->clock->now());
    const auto microphone = LirvoxMicrophone::microphoneWithDelegate(weak_from_this());
    setMicrophone(microphone);
    state_->beginCapture(weak_from_this(), {}, microphone.get());
    microphone->startFetchingAudio();
    state_->processBuffer();
  });
  if (!started) answerNothing();
}

bool Lirvox::State::tryToStart(const std::function<void()>& begin) {
  const Capture* const before = capture.get().get();
  if (platform::runLogged(begin)) return true;
  const auto begun = capture.get();
  if (begun.get() == before) return false;
  if (const auto running = read(&State::microphone)) running->stopFetchingAudio();
  isRecording = false;
  begun->cancel();
  capture.replace(nullptr);
  return false;
}

void Lirvox::answerNothing() {
  platform::runLogged([] {
    platform::current()->mainQueue->async(
        [] { LirvoxPostDatabaseProcessing::deliver(std::nullopt); });
  });
}

void Lirvox::State::beginCapture(const std::weak_ptr<Lirvox>& owner,
                                 const std::vector<std::byte>& recording,
                                 const LirvoxMicrophone* byMicrophone) {
  if (const auto history = read(&State::historyInfo)) LirvoxUtilities::clearHistoryInfo(*history);
  auto begun = std::make_shared<Capture>();
  begun->cancelled = stopNow.load();
  begun->microphone = byMicrophone;
  begun->buffer.append(recording.data(), recording.size());
  begun->buffer.reserve(recording.size() + kInitialReserveInBytes);
  passes->prepare(*begun);
  begun->limitReached =
      platform::current()->mainQueue->makeWaker([weak = owner, ended = std::weak_ptr(begun)] {
        if (const auto self = weak.lock()) self->endCapture(ended);
      });
  // A replay may start while a live capture runs, which is over then.
  if (const auto& previous = capture.get()) previous->end();
  capture.replace(std::move(begun));
  isRecording = true;
  shouldStop = false;
  bufferSizeMax = 0;
  bufferSizeEnoughForMiniSpectogram = 0;
}

// A host may have taken the engine or the record away: the pass then has its own.
void Lirvox::State::processBuffer() {
  auto engine = read(&State::fft);
  auto history = read(&State::historyInfo);
  if (!engine) engine = std::make_shared<LirvoxAudioFFT>();
  if (!history) history = LirvoxUtilities::initHistoryInfo();
  passes->start(
      std::make_shared<ProcessingPass>(capture.get(), std::move(engine), std::move(history)));
}

// On the main queue, once a capture has its length. A late call, after the capture has
// ended otherwise and perhaps another one has started, does nothing.
void Lirvox::endCapture(const std::weak_ptr<Capture>& ended) {
  const platform::MutexLock lock(state_->capture.control);
  const auto capture = ended.lock();
  if (!capture || capture != state_->capture.get() || !capture->recording) return;
  state_->stopCapture(*capture);
}

void Lirvox::State::stopCapture(Capture& ended) {
  if (const auto running = read(&State::microphone)) running->stopFetchingAudio();
  isRecording = false;
  ended.end();
}

// On the global queue. The look-up may fail for want of memory: the record is emptied
// and the host is answered all the same.
void Lirvox::finishPass(ProcessingPass& pass, PassState state) {
  if (state == PassState::captured) {
    state = PassState::failed;
    platform::runLogged([&] {
      LirvoxRecognize::recognize(pass.historyInfo(), database().get());
      state = PassState::captured;
    });
  }
  platform::runLogged([&] { LirvoxUtilities::freeHistoryInfo(pass.historyInfo()); });
  {
    const platform::MutexLock lock(state_->capture.control);
    // A capture that has started meanwhile keeps its samples.
    if (state_->capture.get() == pass.capture()) {
      if (pass.capture()->recording) state_->stopCapture(*pass.capture());
      state_->capture.replace(nullptr);
    }
  }
  if (state == PassState::failed) answerNothing();
}

void Lirvox::stopRecognize() {
  if (refusesForkedChild()) return;
  const platform::MutexLock lock(state_->capture.control);
  if (!isRecording()) return;
  if (const auto microphone = this->microphone()) microphone->stopFetchingAudio();
  setMicrophone(nullptr);
  state_->stopNow = true;
  state_->isRecording = false;
  if (const auto& capture = state_->capture.get()) capture->cancel();
}

bool Lirvox::canRecognize(LirvoxError& error) const {
  if (databaseFileExists()) return true;
  error = {"Lirvox", 201, "No database file"};
  return false;
}

std::optional<std::string> Lirvox::databaseInfo() const {
  const auto store = database();
  return store ? store->databaseInfo() : std::nullopt;
}

// --- For the microphone and the pass ---

void Lirvox::hasAudioReceived(LirvoxMicrophone& microphone, float** buffers,
                              std::uint32_t bufferSize, std::uint32_t) {
  const std::size_t count = std::size_t{bufferSize} * 4;
  state_->capture.with([&](Capture& capture) {
    // The one of the capture before may be started by an interruption's end while it goes.
    if (capture.microphone && capture.microphone != &microphone) return;
    capture.deliver(buffers[0], count, limitInBytes());
  });
}

// Also while a capture runs: it may be ending on another thread, its microphone stopped already.
void Lirvox::changedPlayingState(LirvoxMicrophone&, bool isPlaying) {
  if (!isPlaying) return;
  platform::current()->mainQueue->async([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->stopIdleMicrophone();
  });
}

void Lirvox::stopIdleMicrophone() {
  const platform::MutexLock lock(state_->capture.control);
  if (isRecording()) return;
  if (const auto microphone = this->microphone()) microphone->stopFetchingAudio();
}

std::size_t Lirvox::limitInBytes() const {
  const std::int32_t limit = saturatedInteger(
      static_cast<double>(LirvoxSettings::settingSampleRate()) * recordingTime() * 4.0);
  return limit > 0 ? static_cast<std::size_t>(limit) : 0;
}

bool Lirvox::shouldProcessBuffer() const {
  bool result = false;
  state_->capture.with([&](const Capture& capture) { result = capture.hasBlock(); });
  return result;
}

}  // namespace lirvox
