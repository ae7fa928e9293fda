// Stream formats, buffers and failed statuses of the capture path.
#include "lib/audio/LirvoxAudioUtilities.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace lirvox {
namespace {

using platform::AudioBufferList;
using platform::AudioStreamBasicDescription;

// Of every sample, whatever the format: integer and float alike.
constexpr std::uint32_t bytesPerSample = 4;

void* orThrow(void* memory) {
  return memory ? memory : throw std::bad_alloc();
}

std::string codeText(platform::AudioStatus status) {
  const auto bits = static_cast<std::uint32_t>(status);
  std::string text = "'";
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(bits >> shift & 0xFF);
  // Not std::isprint: the host's locale has no say in what a code is.
  const bool printable =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return printable ? text + "'" : std::to_string(status);
}

AudioStreamBasicDescription linearPCM(double sampleRate, std::uint32_t flags,
                                      std::uint32_t numberOfChannels) {
  AudioStreamBasicDescription format;
  format.sampleRate = sampleRate;
  format.formatID = platform::audioFormatLinearPCM;
  format.formatFlags = flags;
  format.bytesPerPacket = bytesPerSample;
  format.framesPerPacket = 1;
  format.bytesPerFrame = bytesPerSample;
  format.channelsPerFrame = numberOfChannels;
  format.bitsPerChannel = 8 * bytesPerSample;
  return format;
}

}  // namespace

bool LirvoxAudioUtilities::shouldExitOnCheckResultFail = true;

void LirvoxAudioUtilities::checkResult(platform::AudioStatus result, const char* operation) {
  if (result == platform::audioNoError) return;
  std::fprintf(stderr, "Error: %s (%s)\n", operation, codeText(result).c_str());
  if (shouldExitOnCheckResultFail) std::exit(-1);
}

LirvoxAudioUtilities::OwnedBufferList LirvoxAudioUtilities::audioBufferListWithNumberOfFrames(
    std::uint32_t frames, std::uint32_t numberOfChannels, bool interleaved) {
  OwnedBufferList list(std::make_unique<AudioBufferList>().release());
  const std::uint32_t channelsPerBuffer = interleaved ? numberOfChannels : 1;
  const std::uint32_t buffers = interleaved ? 1 : numberOfChannels;
  const std::uint32_t bytes = frames * bytesPerSample * channelsPerBuffer;
  list->buffers.reserve(numberOfChannels);
  for (std::uint32_t i = 0; i < buffers; ++i) {
    list->buffers.push_back({channelsPerBuffer, bytes, orThrow(std::calloc(bytes, 1))});
  }
  return list;
}

void LirvoxAudioUtilities::freeBufferList(AudioBufferList* list) {
  const std::unique_ptr<AudioBufferList> owned(list);
  if (!owned) return;
  for (const platform::AudioBuffer& buffer : owned->buffers) std::free(buffer.data);
}

LirvoxAudioUtilities::OwnedFloatBuffers LirvoxAudioUtilities::floatBuffersWithNumberOfFrames(
    std::uint32_t frames, std::uint32_t numberOfChannels) {
  if (numberOfChannels == 0) return {};
  OwnedFloatBuffers buffers(std::make_unique<float*[]>(numberOfChannels).release(),
                            FloatBuffersFreer{numberOfChannels});
  for (std::uint32_t i = 0; i < numberOfChannels; ++i) {
    const std::size_t bytes = std::max<std::size_t>(frames, 1) * bytesPerSample;
    buffers.get()[i] = static_cast<float*>(orThrow(std::malloc(bytes)));
  }
  return buffers;
}

void LirvoxAudioUtilities::freeFloatBuffers(float** buffers, std::uint32_t numberOfChannels) {
  if (!buffers || !buffers[0]) return;
  const std::unique_ptr<float*[]> owned(buffers);
  for (std::uint32_t i = 0; i < numberOfChannels; ++i) std::free(buffers[i]);
}

bool LirvoxAudioUtilities::isInterleaved(const AudioStreamBasicDescription& format) {
  return (format.formatFlags & platform::audioFormatFlagIsNonInterleaved) == 0;
}

AudioStreamBasicDescription LirvoxAudioUtilities::stereoFloatNonInterleavedFormatWithSampleRate(
    float sampleRate) {
  return linearPCM(static_cast<double>(sampleRate),
                   platform::audioFormatFlagIsFloat | platform::audioFormatFlagIsNonInterleaved, 2);
}

// The arguments are ignored and the samples are integers on purpose: the fingerprints are
// tuned to 11025 Hz, and the name is the one that callers know.
AudioStreamBasicDescription LirvoxAudioUtilities::floatFormatWithNumberOfChannels(std::uint32_t,
                                                                                  float) {
  return linearPCM(11025.0,
                   platform::audioFormatFlagIsSignedInteger | platform::audioFormatFlagIsPacked, 1);
}

}  // namespace lirvox
