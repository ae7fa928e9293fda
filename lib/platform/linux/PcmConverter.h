// The converter between any two linear PCM formats.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../AudioConverter.h"
#include "PcmFormat.h"
#include "../Resampler.h"

namespace lirvox::platform {

/// Makes the converter for the two formats: one that hands samples on to the bit
/// when they are equal, else one that reads, resamples and writes. Null with
/// `audioFormatError` when either is not linear PCM as `PcmFormat` knows it.
std::unique_ptr<AudioConverter> makePcmConverter(const AudioStreamBasicDescription& inputFormat,
                                                 const AudioStreamBasicDescription& outputFormat,
                                                 AudioStatus& status);

/// Several channels become one as their mean; one becomes several alike;
/// otherwise channels keep their places, surplus ones are dropped and missing
/// ones are silent.
class PcmConverter : public AudioConverter {
 public:
  PcmConverter(const PcmFormat& input, const PcmFormat& output);

  AudioStatus fillComplexBuffer(InputDataCallback inputData, void* userData,
                                std::uint32_t& packetCount, AudioBufferList& output,
                                AudioStreamPacketDescription* packetDescriptions) override;
  AudioStatus maximumOutputPacketSize(std::uint32_t& bytes) override;

 private:
  AudioStatus pull(InputDataCallback inputData, void* userData, std::uint32_t wantedOutput);
  void feed();
  void readRequest(std::uint32_t frames, double* target) const;
  std::uint32_t writeOutput(const AudioBufferList& output, std::uint32_t begin, std::uint32_t end);

  const PcmFormat input_;
  const PcmFormat output_;
  const std::uint32_t channels_;  // of the samples between reading and writing
  AudioBufferList request_;
  std::vector<double> pulledFrames_;  // interleaved, of the last request
  std::uint32_t pulledBegin_ = 0;     // of those that the resampler has not taken
  std::uint32_t pulledEnd_ = 0;
  std::vector<double> writtenFrames_;  // interleaved, a block of the resampler's
  Resampler resampler_;
};

}  // namespace lirvox::platform
