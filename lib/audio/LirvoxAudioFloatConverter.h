// From a microphone's stream format to the recognizer's samples.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../LirvoxExport.h"
#include "../platform/AudioConverter.h"
#include "LirvoxAudioUtilities.h"

namespace lirvox {

/// Bytes of output that a converter has room for, unless a single packet takes more.
constexpr std::uint32_t LirvoxAudioFloatConverterDefaultOutputBufferSize = 4096;

/// What a converter works with.
struct LirvoxAudioFloatConverterInfo {
  // In an order in which destruction releases the converter first.
  std::vector<platform::AudioStreamPacketDescription>
      packetDescriptions;                                      ///< of the output, if packets vary
  LirvoxAudioUtilities::OwnedBufferList floatAudioBufferList;  ///< the output
  std::unique_ptr<platform::AudioConverter> converterRef;      ///< what converts
  platform::AudioStreamBasicDescription inputFormat;           ///< of what comes in
  platform::AudioStreamBasicDescription floatFormat;           ///< of what goes out
  std::uint32_t packetsPerBuffer = 0;                          ///< that the output holds
};

/// Converts captured sound to one channel of 32-bit signed integers at 11025 Hz,
/// the recognizer's format in spite of the name.
///
/// Made and destroyed outside the audio thread. Conversion is made for the audio
/// thread: it allocates, locks and logs nothing. One thread at a time.
class LIRVOX_EXPORT LirvoxAudioFloatConverter {
 public:
  /// Makes the installed platform's converter for `inputFormat`; if there is
  /// none, the process ends as `LirvoxAudioUtilities::checkResult` says.
  explicit LirvoxAudioFloatConverter(const platform::AudioStreamBasicDescription& inputFormat);

  /// The same for owners who share it.
  static std::shared_ptr<LirvoxAudioFloatConverter> converterWithInputFormat(
      const platform::AudioStreamBasicDescription& inputFormat);

  /// Converts `frames` frames of `audioBufferList` (whose `dataByteSize`s it sets
  /// accordingly) and copies the result to `buffers`, one buffer of at least as
  /// many samples per output channel. At most `info().packetsPerBuffer` frames come
  /// out, 1024 of 32-bit mono input. Does nothing when `frames` is 0.
  void convertDataFromAudioBufferList(
      platform::AudioBufferList& audioBufferList, std::uint32_t frames, float** buffers,
      platform::AudioStreamPacketDescription* packetDescriptions = nullptr);

  /// What it works with.
  const platform::AudioStreamBasicDescription& inputFormat() const { return info_.inputFormat; }
  const platform::AudioStreamBasicDescription& floatFormat() const { return info_.floatFormat; }
  const LirvoxAudioFloatConverterInfo& info() const { return info_; }

 private:
  void setup();
  std::uint32_t variablePacketSize();

  LirvoxAudioFloatConverterInfo info_;
  // Of each output buffer when it is empty.
  std::uint32_t bufferCapacityInBytes_ = 0;
};

}  // namespace lirvox
