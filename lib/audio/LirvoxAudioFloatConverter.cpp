// From a microphone's stream format to the recognizer's samples.
#include "lib/audio/LirvoxAudioFloatConverter.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "lib/platform/Platform.h"

namespace lirvox {
namespace {

using platform::AudioBufferList;
using platform::AudioStatus;
using platform::AudioStreamPacketDescription;

// Used when the platform's converter cannot tell.
constexpr std::uint32_t defaultPacketSize = 2048;

// Answers every request of one fill with the same records, and neither lowers the packet
// count nor says that the input is used up. It is meant so: one delivery is one fill, and
// the capacity of the output bounds it.
AudioStatus provideInput(platform::AudioConverter&, std::uint32_t&, AudioBufferList& request,
                         AudioStreamPacketDescription**, void* userData) {
  request = *static_cast<const AudioBufferList*>(userData);
  return platform::audioNoError;
}

}  // namespace

LirvoxAudioFloatConverter::LirvoxAudioFloatConverter(
    const platform::AudioStreamBasicDescription& inputFormat) {
  info_.inputFormat = inputFormat;
  setup();
}

std::shared_ptr<LirvoxAudioFloatConverter> LirvoxAudioFloatConverter::converterWithInputFormat(
    const platform::AudioStreamBasicDescription& inputFormat) {
  return std::make_shared<LirvoxAudioFloatConverter>(inputFormat);
}

void LirvoxAudioFloatConverter::setup() {
  info_.floatFormat = LirvoxAudioUtilities::floatFormatWithNumberOfChannels(
      info_.inputFormat.channelsPerFrame, static_cast<float>(info_.inputFormat.sampleRate));
  AudioStatus status = platform::audioNoError;
  info_.converterRef =
      platform::current()->makeAudioConverter(info_.inputFormat, info_.floatFormat, status);
  LirvoxAudioUtilities::checkResult(status, "Failed to create new audio converter");

  std::uint32_t outputBufferSize = LirvoxAudioFloatConverterDefaultOutputBufferSize;
  std::uint32_t sizePerPacket = info_.inputFormat.bytesPerPacket;
  if (sizePerPacket == 0) {
    sizePerPacket = variablePacketSize();
    outputBufferSize = std::max(outputBufferSize, sizePerPacket);
    info_.packetDescriptions.resize(outputBufferSize / sizePerPacket);
  }
  info_.packetsPerBuffer = outputBufferSize / sizePerPacket;
  info_.floatAudioBufferList = LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(
      info_.packetsPerBuffer, info_.floatFormat.channelsPerFrame,
      LirvoxAudioUtilities::isInterleaved(info_.floatFormat));
  bufferCapacityInBytes_ = info_.floatAudioBufferList->buffers.front().dataByteSize;
}

std::uint32_t LirvoxAudioFloatConverter::variablePacketSize() {
  std::uint32_t bytes = 0;
  const bool known = info_.converterRef &&
                     info_.converterRef->maximumOutputPacketSize(bytes) == platform::audioNoError;
  return known && bytes > 0 ? bytes : defaultPacketSize;
}

void LirvoxAudioFloatConverter::convertDataFromAudioBufferList(
    AudioBufferList& audioBufferList, std::uint32_t frames, float** buffers,
    AudioStreamPacketDescription* packetDescriptions) {
  if (frames == 0 || !info_.converterRef) return;
  for (platform::AudioBuffer& buffer : audioBufferList.buffers) {
    buffer.dataByteSize = frames * info_.inputFormat.bytesPerFrame;
  }
  if (!packetDescriptions && !info_.packetDescriptions.empty()) {
    packetDescriptions = info_.packetDescriptions.data();
  }
  // What the last fill left in the size is not the buffer's capacity.
  AudioBufferList& output = *info_.floatAudioBufferList;
  for (platform::AudioBuffer& buffer : output.buffers) buffer.dataByteSize = bufferCapacityInBytes_;
  std::uint32_t packetCount = frames;
  LirvoxAudioUtilities::checkResult(
      info_.converterRef->fillComplexBuffer(provideInput, &audioBufferList, packetCount, output,
                                            packetDescriptions),
      "Failed to fill complex buffer in float converter");
  for (std::size_t i = 0; i < output.buffers.size(); ++i) {
    std::memcpy(buffers[i], output.buffers[i].data, output.buffers[i].dataByteSize);
  }
}

}  // namespace lirvox
