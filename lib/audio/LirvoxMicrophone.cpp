// Capture from the device's current input.
#include "lib/audio/LirvoxMicrophone.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "lib/Assertion.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Mutex.h"
#include "lib/platform/RunTask.h"

namespace lirvox {
namespace {

using platform::AudioSessionInterruption;
using platform::AudioStatus;
using platform::AudioStreamBasicDescription;

constexpr const char* sourceName = "lib/audio/LirvoxMicrophone";

void check(AudioStatus status, const char* operation) {
  LirvoxAudioUtilities::checkResult(status, operation);
}

// Makes the device the session's input; what the session refuses is logged. Without a port
// there is nothing to ask for: a preference is not given up because its device went away.
void selectInput(platform::AudioSession& session, const LirvoxAudioDevice& device) {
  LirvoxError error;
  if (!device.port()) return;
  if (!session.setPreferredInput(device.port(), error)) {
    platform::log("Error (" + device.port()->name + "): " + error.localizedDescription);
  } else if (device.dataSource() && !session.setInputDataSource(*device.dataSource(), error)) {
    platform::log("Error: (" + device.dataSource()->name + "): " + error.localizedDescription);
  }
}

// What the delegate throws is its own affair.
template <typename Call>
void tell(const std::weak_ptr<LirvoxMicrophoneDelegate>& to, const Call& call) {
  if (const auto delegate = to.lock()) platform::runLogged([&] { call(*delegate); });
}

}  // namespace

struct LirvoxMicrophone::SelectedDevice {
  platform::Mutex mutex;
  std::optional<LirvoxAudioDevice> device LIRVOX_GUARDED_BY(mutex);
};

LirvoxMicrophone::LirvoxMicrophone(Private)
    : platform_(platform::current()), selected_(std::make_shared<SelectedDevice>()) {}

LirvoxMicrophone::~LirvoxMicrophone() {
  platform_->audioSession->removeObserver(this);
  if (info_.audioUnit) {
    check(info_.audioUnit->uninitialize(), "Failed to unintialize audio unit for microphone");
  }
}

std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::microphone() {
  return microphoneWithDelegate(std::weak_ptr<LirvoxMicrophoneDelegate>());
}

std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::microphoneWithDelegate(
    std::weak_ptr<LirvoxMicrophoneDelegate> delegate) {
  auto microphone = std::make_shared<LirvoxMicrophone>(Private());
  microphone->setDelegate(std::move(delegate));
  microphone->setup();
  return microphone;
}

std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::microphoneWithDelegate(
    std::weak_ptr<LirvoxMicrophoneDelegate> delegate,
    const AudioStreamBasicDescription& audioStreamBasicDescription) {
  auto microphone = microphoneWithDelegate(std::move(delegate));
  microphone->setAudioStreamBasicDescription(audioStreamBasicDescription);
  return microphone;
}

std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::microphoneWithDelegate(
    std::weak_ptr<LirvoxMicrophoneDelegate> delegate, bool startsImmediately) {
  auto microphone = microphoneWithDelegate(std::move(delegate));
  if (startsImmediately) microphone->startFetchingAudio();
  return microphone;
}

std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::microphoneWithDelegate(
    std::weak_ptr<LirvoxMicrophoneDelegate> delegate,
    const AudioStreamBasicDescription& audioStreamBasicDescription, bool startsImmediately) {
  auto microphone = microphoneWithDelegate(std::move(delegate), audioStreamBasicDescription);
  if (startsImmediately) microphone->startFetchingAudio();
  return microphone;
}

// Never destroyed: the end of the process is too late to talk to a device.
std::shared_ptr<LirvoxMicrophone> LirvoxMicrophone::sharedMicrophone() {
  static const auto* const shared = new std::shared_ptr<LirvoxMicrophone>(microphone());
  return *shared;
}

void LirvoxMicrophone::setup() {
  createInputUnit();
  check(info_.audioUnit->enableInput(), "Couldn't enable input on remote IO unit.");
  setDevice(LirvoxAudioDevice::currentInputDevice());
  check(info_.audioUnit->inputStreamFormat(info_.inputFormat),
        "Failed to get stream format of microphone input scope");
  info_.inputFormat.sampleRate = LirvoxSettings::sampleRate();
  if (info_.inputFormat.sampleRate == 0.0) {
    failAssertion(
        "Expected AVAudioSession sample rate to be greater than 0.0. Did you setup the audio "
        "session?",
        sourceName, 206);
  }
  setAudioStreamBasicDescription(defaultStreamFormat());
  check(info_.audioUnit->setInputCallback(
            [this](auto& flags, const auto& timeStamp, std::uint32_t bus, std::uint32_t frames) {
              return renderInput(flags, timeStamp, bus, frames);
            }),
        "Failed to set render callback");
  check(info_.audioUnit->initialize(), "Failed to initialize input unit");
  platform_->audioSession->addObserver(weak_from_this());
}

void LirvoxMicrophone::createInputUnit() {
  AudioStatus status = platform::audioNoError;
  if (platform_->makeInputUnit) info_.audioUnit = platform_->makeInputUnit(status);
  check(status, "Failed to get audio component instance");
  if (!info_.audioUnit) failAssertion("Couldn't get input component unit!", sourceName, 177);
}

void LirvoxMicrophone::setDelegate(std::weak_ptr<LirvoxMicrophoneDelegate> delegate) {
  audioDelegate_ = dynamic_cast<LirvoxMicrophoneAudioDelegate*>(delegate.lock().get());
  delegate_ = std::move(delegate);
}

void LirvoxMicrophone::setAudioStreamBasicDescription(const AudioStreamBasicDescription& format) {
  info_.audioBufferList.reset();
  info_.floatBuffers.reset();
  info_.streamFormat = format;
  check(info_.audioUnit->setClientStreamFormat(format),
        "Failed to set stream format on input scope");
  check(info_.audioUnit->setDeliveredStreamFormat(format),
        "Failed to set stream format on output scope");
  const std::uint32_t frames = maximumBufferSize();
  floatConverter_ = LirvoxAudioFloatConverter::converterWithInputFormat(format);
  info_.floatBuffers =
      LirvoxAudioUtilities::floatBuffersWithNumberOfFrames(frames, format.channelsPerFrame);
  info_.audioBufferList = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(
      frames, format.channelsPerFrame, LirvoxAudioUtilities::isInterleaved(format));
  const auto& buffers = info_.audioBufferList->buffers;
  const std::uint32_t bytes = buffers.empty() ? 0 : buffers.front().dataByteSize;
  largestDelivery_ = std::min(frames, bytes / std::max(format.bytesPerFrame, 1U));
  tell(delegate_, [&](auto& delegate) { delegate.hasAudioStreamBasicDescription(*this, format); });
}

AudioStreamBasicDescription LirvoxMicrophone::defaultStreamFormat() const {
  return LirvoxAudioUtilities::floatFormatWithNumberOfChannels(
      numberOfChannels(), static_cast<float>(info_.inputFormat.sampleRate));
}

std::uint32_t LirvoxMicrophone::maximumBufferSize() {
  std::uint32_t frames = 0;
  check(info_.audioUnit->maximumFramesPerSlice(frames),
        "Failed to get maximum number of frames per slice");
  return frames;
}

// The delegate is called even when rendering failed: the status is for the unit alone.
// Nothing may touch this object once `delegate` is released, which can end both.
AudioStatus LirvoxMicrophone::renderInput(platform::AudioUnit::RenderActionFlags& actionFlags,
                                          const platform::AudioTimeStamp& timeStamp,
                                          std::uint32_t busNumber, std::uint32_t frames) {
  if (frames > largestDelivery_) return platform::audioTooManyFramesError;
  platform::AudioBufferList& list = *info_.audioBufferList;
  for (auto& buffer : list.buffers) {
    buffer.dataByteSize = frames * info_.streamFormat.bytesPerFrame;
  }
  const AudioStatus status =
      info_.audioUnit->render(actionFlags, timeStamp, busNumber, frames, list);
  const auto delegate = delegate_.lock();
  if (!delegate) return status;
  const std::uint32_t channels = info_.streamFormat.channelsPerFrame;
  platform::runLogged([&] { delegate->hasBufferList(*this, list, frames, channels); });
  if (audioDelegate_) {
    float** const buffers = info_.floatBuffers.get();
    floatConverter_->convertDataFromAudioBufferList(list, frames, buffers);
    platform::runLogged(
        [&] { audioDelegate_->hasAudioReceived(*this, buffers, frames, channels); });
  }
  return status;
}

void LirvoxMicrophone::startFetchingAudio() {
  check(info_.audioUnit->start(), "Failed to start microphone audio unit");
  tellPlayingState(true);
}

void LirvoxMicrophone::stopFetchingAudio() {
  check(info_.audioUnit->stop(), "Failed to stop microphone audio unit");
  tellPlayingState(false);
}

void LirvoxMicrophone::tellPlayingState(bool isPlaying) {
  tell(delegate_, [&](auto& delegate) { delegate.changedPlayingState(*this, isPlaying); });
}

void LirvoxMicrophone::setMicrophoneOn(bool microphoneOn) {
  microphoneOn_.store(microphoneOn);
  if (microphoneOn) {
    startFetchingAudio();
  } else {
    stopFetchingAudio();
  }
}

LirvoxAudioDevice LirvoxMicrophone::device() const {
  const platform::MutexLock lock(selected_->mutex);
  return selected_->device.value_or(LirvoxAudioDevice());
}

void LirvoxMicrophone::setDevice(const LirvoxAudioDevice& device) {
  {
    const platform::MutexLock lock(selected_->mutex);
    if (selected_->device == device) return;
  }
  selectInput(*platform_->audioSession, device);
  {
    const platform::MutexLock lock(selected_->mutex);
    selected_->device = device;
  }
  tell(delegate_, [&](auto& delegate) { delegate.changedDevice(*this, device); });
}

void LirvoxMicrophone::setOutput(std::shared_ptr<LirvoxOutput> output) {
  output_ = std::move(output);
  if (!output_) return;
  output_->setInputFormat(info_.streamFormat);
  output_->setDataSource(weak_from_this());
}

AudioStatus LirvoxMicrophone::shouldFillAudioBufferList(LirvoxOutput&,
                                                        platform::AudioBufferList& audioBufferList,
                                                        std::uint32_t,
                                                        const platform::AudioTimeStamp&) {
  audioBufferList = *info_.audioBufferList;
  return platform::audioNoError;
}

void LirvoxMicrophone::microphoneWasInterrupted(const AudioSessionInterruption& interruption) {
  switch (interruption.type) {
    case AudioSessionInterruption::Type::began:
      stopFetchingAudio();
      break;
    case AudioSessionInterruption::Type::ended:
      if (interruption.options == AudioSessionInterruption::shouldResume) startFetchingAudio();
      break;
  }
}

void LirvoxMicrophone::microphoneRouteChanged() {
  setDevice(LirvoxAudioDevice::currentInputDevice());
}

}  // namespace lirvox
