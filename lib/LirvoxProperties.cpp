// The recognizer's settings and state, as hosts read and set them.
#include <utility>

#include "lib/Lirvox.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxState.h"

namespace lirvox {
namespace {

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

std::shared_ptr<LirvoxDelegate> Lirvox::delegate() const {
  return state_->read(&State::delegate);
}

void Lirvox::setDelegate(std::shared_ptr<LirvoxDelegate> delegate) {
  state_->write(&State::delegate, std::move(delegate));
}

std::shared_ptr<LirvoxDatabase> Lirvox::database() const {
  return state_->read(&State::database);
}

void Lirvox::setDatabase(std::shared_ptr<LirvoxDatabase> database) {
  state_->write(&State::database, std::move(database));
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
  if (refusesForkedChild()) return;
  const platform::MutexLock lock(state_->capture.control);
  state_->isRecording = recording;
  const auto capture = state_->capture.get();
  if (capture && capture->recording && !recording) state_->stopCapture(*capture);
}

bool Lirvox::stopNow() const {
  return state_->stopNow;
}

void Lirvox::setStopNow(bool stop) {
  const platform::MutexLock lock(state_->capture.control);
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
  return state_->read(&State::timeStartListening);
}

void Lirvox::setTimeStartListening(std::optional<platform::Clock::Date> date) {
  state_->write(&State::timeStartListening, date);
}

std::shared_ptr<LirvoxMicrophone> Lirvox::microphone() const {
  return state_->read(&State::microphone);
}

void Lirvox::setMicrophone(std::shared_ptr<LirvoxMicrophone> microphone) {
  state_->write(&State::microphone, std::move(microphone));
}

std::shared_ptr<LirvoxAudioFFT> Lirvox::fft() const {
  return state_->read(&State::fft);
}

void Lirvox::setFft(std::shared_ptr<LirvoxAudioFFT> fft) {
  state_->write(&State::fft, std::move(fft));
}

std::shared_ptr<HistoryInfo> Lirvox::historyInfo() const {
  return state_->read(&State::historyInfo);
}

void Lirvox::setHistoryInfo(std::shared_ptr<HistoryInfo> historyInfo) {
  state_->write(&State::historyInfo, std::move(historyInfo));
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
