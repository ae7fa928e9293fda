// The converter between equal formats.
#include "lib/platform/EqualFormatConverter.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace lirvox::platform {
namespace {

// How many packets every buffer of `list` has room for or holds.
std::uint32_t packetsIn(const AudioBufferList& list, std::uint32_t bytesPerPacket) {
  if (list.buffers.empty()) return 0;
  std::uint32_t bytes = list.buffers.front().dataByteSize;
  for (const AudioBuffer& buffer : list.buffers) bytes = std::min(bytes, buffer.dataByteSize);
  return bytes / bytesPerPacket;
}

}  // namespace

EqualFormatConverter::EqualFormatConverter(const AudioStreamBasicDescription& format)
    : bytesPerPacket_(format.bytesPerPacket) {
  const bool interleaved = (format.formatFlags & audioFormatFlagIsNonInterleaved) == 0;
  request_.buffers.resize(interleaved ? 1 : format.channelsPerFrame);
}

AudioStatus EqualFormatConverter::fillComplexBuffer(InputDataCallback inputData, void* userData,
                                                    std::uint32_t& packetCount,
                                                    AudioBufferList& output,
                                                    AudioStreamPacketDescription*) {
  const std::uint32_t wanted = std::min(packetCount, packetsIn(output, bytesPerPacket_));
  AudioStatus status = audioNoError;
  std::uint32_t done = 0;
  while (done < wanted) {
    std::uint32_t count = wanted - done;
    status = inputData(*this, count, request_, nullptr, userData);
    count = std::min({count, wanted - done, packetsIn(request_, bytesPerPacket_)});
    if (status != audioNoError || count == 0) break;
    const std::size_t buffers = std::min(output.buffers.size(), request_.buffers.size());
    for (std::size_t i = 0; i < buffers; ++i) {
      auto* const target = static_cast<std::byte*>(output.buffers[i].data);
      std::memcpy(target + std::size_t{done} * bytesPerPacket_, request_.buffers[i].data,
                  std::size_t{count} * bytesPerPacket_);
    }
    done += count;
  }
  packetCount = done;
  for (AudioBuffer& buffer : output.buffers) buffer.dataByteSize = done * bytesPerPacket_;
  return status;
}

AudioStatus EqualFormatConverter::maximumOutputPacketSize(std::uint32_t& bytes) {
  bytes = bytesPerPacket_;
  return audioNoError;
}

}  // namespace lirvox::platform
