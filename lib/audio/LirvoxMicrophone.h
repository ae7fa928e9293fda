// Capture from the device's current input.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "../LirvoxExport.h"
#include "../platform/AudioSession.h"
#include "../platform/AudioUnit.h"
#include "../platform/Platform.h"
#include "LirvoxAudioDevice.h"
#include "LirvoxAudioFloatConverter.h"
#include "LirvoxAudioUtilities.h"
#include "LirvoxMicrophoneDelegate.h"
#include "LirvoxOutput.h"

namespace lirvox {

/// What a microphone works with.
struct LirvoxMicrophoneInfo {
  LirvoxAudioUtilities::OwnedBufferList audioBufferList;  ///< rendered input
  LirvoxAudioUtilities::OwnedFloatBuffers floatBuffers;   ///< converted input
  /// The hardware's format, but for the sample rate, which is the setting's.
  platform::AudioStreamBasicDescription inputFormat;
  /// The format that the unit renders.
  platform::AudioStreamBasicDescription streamFormat;
  /// Last, so that destruction ends deliveries before it frees what they use.
  std::unique_ptr<platform::AudioUnit> audioUnit;
};

/// Captures sound from the device's current input and hands it to a delegate,
/// delivery by delivery, in the recognizer's format unless told otherwise.
///
/// Works on the platform that is installed when the microphone is made: its
/// audio unit, converter and session. A failed operation of the unit ends the
/// process (`LirvoxAudioUtilities::checkResult`), a missing unit fails an
/// assertion; failures of the session are logged.
///
/// Threads: the operations below may be called from any thread but the audio
/// thread. Formats, delegate and output are set while no capture runs. Starting,
/// stopping and destruction may block for a short time, and wait for a delegate
/// call that runs on the audio thread: the caller must hold no lock that such a
/// call takes. An interruption stops the capture, and its end starts it again if
/// the session says so.
class LIRVOX_EXPORT LirvoxMicrophone : public LirvoxOutputDataSource,
                                       public platform::AudioSessionObserver,
                                       public std::enable_shared_from_this<LirvoxMicrophone> {
  struct Private {
    explicit Private() = default;
  };

 public:
  /// Makes a microphone that is ready to start. The delegate is not kept alive
  /// and hears of the format and the device from inside these functions already.
  static std::shared_ptr<LirvoxMicrophone> microphone();
  static std::shared_ptr<LirvoxMicrophone> microphoneWithDelegate(
      std::weak_ptr<LirvoxMicrophoneDelegate> delegate);
  static std::shared_ptr<LirvoxMicrophone> microphoneWithDelegate(
      std::weak_ptr<LirvoxMicrophoneDelegate> delegate,
      const platform::AudioStreamBasicDescription& audioStreamBasicDescription);
  static std::shared_ptr<LirvoxMicrophone> microphoneWithDelegate(
      std::weak_ptr<LirvoxMicrophoneDelegate> delegate, bool startsImmediately);
  static std::shared_ptr<LirvoxMicrophone> microphoneWithDelegate(
      std::weak_ptr<LirvoxMicrophoneDelegate> delegate,
      const platform::AudioStreamBasicDescription& audioStreamBasicDescription,
      bool startsImmediately);

  /// The one microphone of the process, made on the first call, without a delegate.
  static std::shared_ptr<LirvoxMicrophone> sharedMicrophone();

  /// For the functions above.
  explicit LirvoxMicrophone(Private);
  ~LirvoxMicrophone() override;
  LirvoxMicrophone(const LirvoxMicrophone&) = delete;
  LirvoxMicrophone& operator=(const LirvoxMicrophone&) = delete;

  /// Who gets the sound; it is not kept alive.
  std::shared_ptr<LirvoxMicrophoneDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<LirvoxMicrophoneDelegate> delegate);

  /// Starts the unit, then tells the delegate. Nothing prevents starting twice.
  void startFetchingAudio();
  /// Stops the unit, then tells the delegate. When it returns, no sample is
  /// delivered any more.
  void stopFetchingAudio();

  /// What was last set here; starting and stopping in other ways leave it alone.
  bool microphoneOn() const { return microphoneOn_.load(); }
  void setMicrophoneOn(bool microphoneOn);

  /// The input in use.
  LirvoxAudioDevice device() const;
  /// Asks the session for a device. A session that refuses is logged; the device
  /// counts as selected all the same, and the delegate is told.
  void setDevice(const LirvoxAudioDevice& device);

  /// The format that the unit renders; at first the recognizer's own.
  platform::AudioStreamBasicDescription audioStreamBasicDescription() const {
    return info_.streamFormat;
  }
  void setAudioStreamBasicDescription(const platform::AudioStreamBasicDescription& format);
  platform::AudioStreamBasicDescription defaultStreamFormat() const;

  /// Frames of the largest delivery.
  std::uint32_t maximumBufferSize();
  std::uint32_t numberOfChannels() const { return 1; }

  /// An optional sink to play through to: it gets the stream format and this
  /// microphone as its data source.
  std::shared_ptr<LirvoxOutput> output() const { return output_; }
  void setOutput(std::shared_ptr<LirvoxOutput> output);

  /// What it works with.
  std::shared_ptr<LirvoxAudioFloatConverter> floatConverter() const { return floatConverter_; }
  const LirvoxMicrophoneInfo& info() const { return info_; }

  /// Points `audioBufferList` to what was rendered last.
  platform::AudioStatus shouldFillAudioBufferList(
      LirvoxOutput& output, platform::AudioBufferList& audioBufferList, std::uint32_t frames,
      const platform::AudioTimeStamp& timestamp) override;

  /// Stops when an interruption begins; starts again when it ends and says so.
  void microphoneWasInterrupted(const platform::AudioSessionInterruption& interruption);
  /// Selects the current input device.
  void microphoneRouteChanged();

 private:
  void audioSessionWasInterrupted(const platform::AudioSessionInterruption& interruption) override {
    microphoneWasInterrupted(interruption);
  }
  void audioSessionRouteChanged() override { microphoneRouteChanged(); }

  void setup();
  void createInputUnit();
  platform::AudioStatus renderInput(platform::AudioUnit::RenderActionFlags& actionFlags,
                                    const platform::AudioTimeStamp& timeStamp,
                                    std::uint32_t busNumber, std::uint32_t frames);
  void tellPlayingState(bool isPlaying);

  const std::shared_ptr<const platform::Platform> platform_;

  // Set while no capture runs; then read by the audio thread.
  std::weak_ptr<LirvoxMicrophoneDelegate> delegate_;
  // The same object, if it takes converted samples; good while delegate_ can be locked.
  LirvoxMicrophoneAudioDelegate* audioDelegate_ = nullptr;
  std::shared_ptr<LirvoxAudioFloatConverter> floatConverter_;
  std::shared_ptr<LirvoxOutput> output_;
  std::uint32_t largestDelivery_ = 0;  // frames for which all buffers have room

  std::atomic<bool> microphoneOn_{false};
  struct SelectedDevice;
  const std::shared_ptr<SelectedDevice> selected_;

  // Last, so that it is destroyed first.
  LirvoxMicrophoneInfo info_;
};

}  // namespace lirvox
