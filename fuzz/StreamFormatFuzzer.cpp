// Stream formats that make no sense, and samples that are no numbers, through the converters.
#include <algorithm>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Support.h"
#include "lib/audio/LirvoxAudioFloatConverter.h"
#include "lib/platform/linux/PcmConverter.h"

namespace {

using namespace lirvox;
using platform::AudioStatus;
using platform::AudioStreamBasicDescription;
using Bytes = std::vector<std::uint8_t>;

// Mostly formats that exist, with one field wrong now and then.
AudioStreamBasicDescription formatOf(FuzzedDataProvider& input) {
  AudioStreamBasicDescription format;
  format.sampleRate = input.ConsumeBool()
                          ? input.PickValueInArray({11025.0, 44100.0, 48000.0, 8000.0})
                          : input.ConsumeFloatingPoint<double>();
  format.formatID = platform::audioFormatLinearPCM;
  format.channelsPerFrame = input.ConsumeIntegralInRange<std::uint32_t>(0, 9);
  format.bitsPerChannel = input.PickValueInArray({16U, 24U, 32U, 64U, 8U});
  format.formatFlags = input.PickValueInArray({1U, 4U, 12U, 33U, 36U, 44U, 0xffffffffU});
  const bool isInterleaved = (format.formatFlags & 32U) == 0;
  const std::uint32_t container = input.ConsumeBool() ? 4 : format.bitsPerChannel / 8;
  format.bytesPerFrame = container * (isInterleaved ? format.channelsPerFrame : 1);
  format.bytesPerPacket = format.bytesPerFrame;
  format.framesPerPacket = 1;
  std::uint32_t* const fields[] = {&format.formatID,       &format.formatFlags,
                                   &format.bytesPerPacket, &format.framesPerPacket,
                                   &format.bytesPerFrame,  &format.channelsPerFrame,
                                   &format.bitsPerChannel, &format.reserved};
  if (input.ConsumeIntegralInRange(0, 3) == 0) {
    *input.PickValueInArray(fields) = input.ConsumeIntegral<std::uint32_t>();
  }
  return format;
}

// Buffers of exactly `bytes` each, on the heap, so that a byte more is noticed.
struct Buffers {
  Buffers(std::size_t count, std::size_t bytes, FuzzedDataProvider& input) {
    for (std::size_t i = 0; i < count; ++i) {
      memory.push_back(input.ConsumeBytes<std::uint8_t>(bytes));
      memory.back().resize(bytes, memory.back().empty() ? 0x7f : memory.back().front());
      memory.back().shrink_to_fit();
      list.buffers.push_back({1, static_cast<std::uint32_t>(bytes), memory.back().data()});
    }
  }
  std::vector<Bytes> memory;
  platform::AudioBufferList list;
};

std::size_t buffersOf(const AudioStreamBasicDescription& format) {
  return (format.formatFlags & 32U) != 0 ? std::min(format.channelsPerFrame, 16U) : 1;
}

// As the microphone does: one delivery is one conversion.
void convertDeliveries(const AudioStreamBasicDescription& format, FuzzedDataProvider& input) {
  LirvoxAudioFloatConverter converter(format);
  if (!converter.info().converterRef) return;
  const std::uint32_t capacity = converter.info().packetsPerBuffer;
  for (int i = 0; i < 3; ++i) {
    const auto frames = input.ConsumeIntegralInRange<std::uint32_t>(0, 2 * capacity);
    Buffers delivery(buffersOf(format) + input.ConsumeIntegralInRange<std::size_t>(0, 1),
                     std::size_t{frames} * format.bytesPerFrame, input);
    if (input.ConsumeIntegralInRange(0, 7) == 0) delivery.list.buffers.pop_back();
    std::vector<float> samples(capacity);
    float* buffers[] = {samples.data()};
    converter.convertDataFromAudioBufferList(delivery.list, frames, buffers);
  }
}

struct Source {
  FuzzedDataProvider& input;
  Buffers buffers;
};

AudioStatus provide(platform::AudioConverter&, std::uint32_t& packetCount,
                    platform::AudioBufferList& request, platform::AudioStreamPacketDescription**,
                    void* userData) {
  auto& source = *static_cast<Source*>(userData);
  request = source.buffers.list;
  // The input ends some time, or it is never said how much there is.
  if (source.input.remaining_bytes() == 0) packetCount = 0;
  if (source.input.ConsumeBool()) packetCount = source.input.ConsumeIntegral<std::uint32_t>();
  return source.input.ConsumeIntegralInRange(0, 15) == 1 ? -1 : platform::audioNoError;
}

void convertBetween(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to,
                    FuzzedDataProvider& input) {
  AudioStatus status = platform::audioNoError;
  const auto converter = platform::makePcmConverter(from, to, status);
  fuzz::require((converter == nullptr) == (status != platform::audioNoError), "a reason, or none");
  if (!converter) return;
  Source source{
      input, Buffers(buffersOf(from), input.ConsumeIntegralInRange<std::size_t>(0, 2000), input)};
  for (int i = 0; i < 3; ++i) {
    const auto bytes = input.ConsumeIntegralInRange<std::uint32_t>(0, 4000);
    Buffers output(buffersOf(to), bytes, input);
    auto packets = input.ConsumeIntegral<std::uint32_t>();
    converter->fillComplexBuffer(provide, &source, packets, output.list, nullptr);
    for (const platform::AudioBuffer& buffer : output.list.buffers) {
      fuzz::require(buffer.dataByteSize <= bytes, "no more than there is room for");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::QuietPlatform platform;
  // The fuzzer goes on where a host would be told.
  LirvoxAudioUtilities::shouldExitOnCheckResultFail = false;
  FuzzedDataProvider input(data, size);
  const AudioStreamBasicDescription format = formatOf(input);
  if (input.ConsumeBool()) {
    convertDeliveries(format, input);
  } else {
    convertBetween(format, formatOf(input), input);
  }
  return 0;
}
