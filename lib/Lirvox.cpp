// The recognizer: the one object through which a host uses the library.
#include "lib/Lirvox.h"

#include <atomic>
#include <cmath>
#include <filesystem>
#include <limits>
#include <mutex>
#include <utility>

#include "lib/Capture.h"
#include "lib/LirvoxAudioFFT.h"
#include "lib/LirvoxPostDatabaseProcessing.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PassQueue.h"
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

// The value, with `fallback` stored in its place while it is unset. Zero has two signs.
template <typename Value>
Value lazyDefault(std::atomic<Value>& stored, Value fallback) {
  Value value = stored.load();
  while (value == Value{}) {
    if (stored.compare_exchange_weak(value, fallback)) return fallback;
  }
  return value;
}

}  // namespace

struct Lirvox::State {
  // Plain values, each safe by itself.
  std::atomic<bool> isRecording{false};
  std::atomic<bool> stopNow{false};
  std::atomic<bool> shouldStop{false};
  std::atomic<std::int32_t> minimumFindedCnt{0};
  std::atomic<std::uint32_t> bufferSizeMax{0};
  std::atomic<std::uint32_t> bufferSizeEnoughForMiniSpectogram{0};
  std::atomic<double> recordingTime{0.0};

  // Held while a capture starts or ends; the audio thread never takes it.
  std::mutex control;
  CaptureSlot capture;  // replaced under control only

  mutable std::mutex fields;  // held for a copy or a swap; guards what follows
  std::shared_ptr<LirvoxDelegate> delegate;
  std::shared_ptr<LirvoxDatabase> database;
  std::shared_ptr<LirvoxMicrophone> microphone;
  std::shared_ptr<LirvoxAudioFFT> fft;
  std::shared_ptr<HistoryInfo> historyInfo;
  std::optional<platform::Clock::Date> timeStartListening;

  // Constant after construction.
  std::shared_ptr<PassQueue> passes;

  template <typename Value>
  Value read(const Value& field) const {
    const std::lock_guard lock(fields);
    return field;
  }

  // The old value is destroyed after the lock is released: its destructor is the host's.
  template <typename Value>
  void write(Value& field, Value value) {
    const std::lock_guard lock(fields);
    std::swap(field, value);
  }
};

std::shared_ptr<Lirvox> Lirvox::sharedInstance() {
  // Never destroyed: it lives as long as the process, whose threads may use it to the end.
  static const auto* const instance = [] {
    auto* const created = new std::shared_ptr<Lirvox>(new Lirvox);
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
  const std::lock_guard lock(state_->control);
  if (isRecording()) return;
  // A host learns of a missing file through canRecognize, not from here: meant.
  if (!databaseFileExists()) return;
  state_->stopNow = false;
  setTimeStartListening(platform::current()->clock->now());
  setMicrophone(LirvoxMicrophone::microphoneWithDelegate(weak_from_this()));
  beginCapture();
  microphone()->startFetchingAudio();
  processBuffer();
}

// Makes a fresh, empty capture the current one.
void Lirvox::beginCapture() {
  if (const auto historyInfo = this->historyInfo()) LirvoxUtilities::clearHistoryInfo(*historyInfo);
  auto capture = std::make_shared<Capture>();
  capture->cancelled = stopNow();
  capture->buffer.reserve(kInitialReserveInBytes);
  state_->passes->prepare(*capture);
  capture->limitReached = platform::current()->mainQueue->makeWaker(
      [weak = weak_from_this(), ended = std::weak_ptr(capture)] {
        if (const auto self = weak.lock()) self->endCapture(ended);
      });
  state_->capture.replace(std::move(capture));
  state_->isRecording = true;
  setShouldStop(false);
  setBufferSizeMax(0);
  setBufferSizeEnoughForMiniSpectogram(0);
}

void Lirvox::processBuffer() {
  state_->passes->start(
      std::make_shared<ProcessingPass>(state_->capture.get(), fft(), historyInfo()));
}

// On the main queue, once a capture has its length. A late call, after the capture has
// ended otherwise and perhaps another one has started, does nothing.
void Lirvox::endCapture(const std::weak_ptr<Capture>& ended) {
  const std::lock_guard lock(state_->control);
  const auto capture = ended.lock();
  if (!capture || capture != state_->capture.get() || !capture->recording) return;
  stopCapture(*capture);
}

// Under control: stops the microphone and lets the pass work off what there is.
void Lirvox::stopCapture(Capture& capture) {
  if (const auto microphone = this->microphone()) microphone->stopFetchingAudio();
  state_->isRecording = false;
  capture.end();
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
  LirvoxUtilities::freeHistoryInfo(pass.historyInfo());
  {
    const std::lock_guard lock(state_->control);
    // A capture that has started meanwhile keeps its samples.
    if (state_->capture.get() == pass.capture()) {
      if (pass.capture()->recording) stopCapture(*pass.capture());
      state_->capture.replace(nullptr);
    }
  }
  if (state == PassState::failed) {
    platform::current()->mainQueue->async(
        [] { LirvoxPostDatabaseProcessing::deliver(std::nullopt); });
  }
}

void Lirvox::stopRecognize() {
  const std::lock_guard lock(state_->control);
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

void Lirvox::hasAudioReceived(LirvoxMicrophone&, float** buffers, std::uint32_t bufferSize,
                              std::uint32_t) {
  const std::size_t count = std::size_t{bufferSize} * 4;
  state_->capture.with(
      [&](Capture& capture) { capture.deliver(buffers[0], count, limitInBytes()); });
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

// --- Settings and state ---

std::shared_ptr<LirvoxDelegate> Lirvox::delegate() const {
  return state_->read(state_->delegate);
}

void Lirvox::setDelegate(std::shared_ptr<LirvoxDelegate> delegate) {
  state_->write(state_->delegate, std::move(delegate));
}

std::shared_ptr<LirvoxDatabase> Lirvox::database() const {
  return state_->read(state_->database);
}

void Lirvox::setDatabase(std::shared_ptr<LirvoxDatabase> database) {
  state_->write(state_->database, std::move(database));
}

double Lirvox::recordingTime() const {
  return lazyDefault(state_->recordingTime, LirvoxSettings::recordTime());
}

void Lirvox::setRecordingTime(double seconds) {
  state_->recordingTime = seconds;
}

std::int32_t Lirvox::minimumFindedCnt() const {
  return lazyDefault(state_->minimumFindedCnt, LirvoxSettings::minimumFindedCntDefault());
}

void Lirvox::setMinimumFindedCnt(std::int32_t count) {
  state_->minimumFindedCnt = count;
}

bool Lirvox::isRecording() const {
  return state_->isRecording;
}

void Lirvox::setIsRecording(bool recording) {
  const std::lock_guard lock(state_->control);
  state_->isRecording = recording;
  const auto capture = state_->capture.get();
  if (capture && capture->recording && !recording) stopCapture(*capture);
}

bool Lirvox::stopNow() const {
  return state_->stopNow;
}

void Lirvox::setStopNow(bool stop) {
  const std::lock_guard lock(state_->control);
  state_->stopNow = stop;
  if (const auto& capture = state_->capture.get()) capture->cancelled = stop;
}

bool Lirvox::shouldStop() const {
  return state_->shouldStop;
}

void Lirvox::setShouldStop(bool stop) {
  state_->shouldStop = stop;
}

std::uint32_t Lirvox::bufferSizeMax() const {
  return state_->bufferSizeMax;
}

void Lirvox::setBufferSizeMax(std::uint32_t size) {
  state_->bufferSizeMax = size;
}

std::uint32_t Lirvox::bufferSizeEnoughForMiniSpectogram() const {
  return state_->bufferSizeEnoughForMiniSpectogram;
}

void Lirvox::setBufferSizeEnoughForMiniSpectogram(std::uint32_t size) {
  state_->bufferSizeEnoughForMiniSpectogram = size;
}

std::optional<platform::Clock::Date> Lirvox::timeStartListening() const {
  return state_->read(state_->timeStartListening);
}

void Lirvox::setTimeStartListening(std::optional<platform::Clock::Date> date) {
  state_->write(state_->timeStartListening, date);
}

std::shared_ptr<LirvoxMicrophone> Lirvox::microphone() const {
  return state_->read(state_->microphone);
}

void Lirvox::setMicrophone(std::shared_ptr<LirvoxMicrophone> microphone) {
  state_->write(state_->microphone, std::move(microphone));
}

std::shared_ptr<LirvoxAudioFFT> Lirvox::fft() const {
  return state_->read(state_->fft);
}

void Lirvox::setFft(std::shared_ptr<LirvoxAudioFFT> fft) {
  state_->write(state_->fft, std::move(fft));
}

std::shared_ptr<HistoryInfo> Lirvox::historyInfo() const {
  return state_->read(state_->historyInfo);
}

void Lirvox::setHistoryInfo(std::shared_ptr<HistoryInfo> historyInfo) {
  state_->write(state_->historyInfo, std::move(historyInfo));
}

std::optional<std::vector<std::byte>> Lirvox::bufferAudioData() const {
  std::optional<std::vector<std::byte>> bytes;
  state_->capture.with([&](const Capture& capture) {
    if (capture.buffer.size() > 0) bytes = capture.buffer.prefix(capture.buffer.size());
  });
  return bytes;
}

std::optional<std::vector<std::byte>> Lirvox::processedBuffer() const {
  std::optional<std::vector<std::byte>> bytes;
  state_->capture.with([&](const Capture& capture) {
    if (capture.consumed > 0) bytes = capture.buffer.prefix(capture.consumed);
  });
  return bytes;
}

}  // namespace lirvox
