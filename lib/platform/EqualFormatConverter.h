// The converter between equal formats.
#pragma once

#include "AudioConverter.h"

namespace lirvox::platform {

/// Hands linear PCM samples on as they are, to the bit.
class EqualFormatConverter : public AudioConverter {
 public:
  explicit EqualFormatConverter(const AudioStreamBasicDescription& format);

  AudioStatus fillComplexBuffer(InputDataCallback inputData, void* userData,
                                std::uint32_t& packetCount, AudioBufferList& output,
                                AudioStreamPacketDescription* packetDescriptions) override;
  AudioStatus maximumOutputPacketSize(std::uint32_t& bytes) override;

 private:
  const std::uint32_t bytesPerPacket_;
  AudioBufferList request_;
};

}  // namespace lirvox::platform
