// The converter between any two linear PCM formats.
#include "lib/platform/linux/PcmConverter.h"

#include <algorithm>
#include <cstddef>

#include "lib/platform/EqualFormatConverter.h"

namespace lirvox::platform {
namespace {

// Frames of the largest request: more than a delivery ever has.
constexpr std::uint32_t pulledAtOnce = 4096;

}  // namespace

std::unique_ptr<AudioConverter> makePcmConverter(const AudioStreamBasicDescription& inputFormat,
                                                 const AudioStreamBasicDescription& outputFormat,
                                                 AudioStatus& status) {
  const auto input = PcmFormat::of(inputFormat);
  const auto output = PcmFormat::of(outputFormat);
  status = input && output ? audioNoError : audioFormatError;
  if (status != audioNoError) return nullptr;
  if (inputFormat == outputFormat) return std::make_unique<EqualFormatConverter>(inputFormat);
  return std::make_unique<PcmConverter>(*input, *output);
}

PcmConverter::PcmConverter(const PcmFormat& input, const PcmFormat& output)
    : input_(input),
      output_(output),
      channels_(std::min(input.channels(), output.channels())),
      pulledFrames_(std::size_t{pulledAtOnce} * channels_),
      writtenFrames_(std::size_t{Resampler::blockFrames} * channels_),
      resampler_(input.sampleRateHz(), output.sampleRateHz(), channels_) {
  request_.buffers.resize(input.numberBuffers());
}

AudioStatus PcmConverter::fillComplexBuffer(InputDataCallback inputData, void* userData,
                                            std::uint32_t& packetCount, AudioBufferList& output,
                                            AudioStreamPacketDescription*) {
  const std::uint32_t wanted = std::min(packetCount, output_.framesIn(output));
  AudioStatus status = audioNoError;
  std::uint32_t done = 0;
  while (done < wanted) {
    done = writeOutput(output, done, wanted);
    if (done == wanted || resampler_.hasEnded()) break;
    if (pulledBegin_ == pulledEnd_) status = pull(inputData, userData, wanted - done);
    if (status != audioNoError) break;
    feed();
  }
  packetCount = done;
  for (AudioBuffer& buffer : output.buffers) buffer.dataByteSize = done * output_.bytesPerFrame();
  return status;
}

// Asks for all that is lacking in one request: whoever answers each request with the same
// samples means them to be taken whole.
AudioStatus PcmConverter::pull(InputDataCallback inputData, void* userData,
                               std::uint32_t wantedOutput) {
  const std::uint64_t needed =
      (std::uint64_t{wantedOutput} * input_.sampleRateHz() + output_.sampleRateHz() - 1) /
      output_.sampleRateHz();
  const auto room = static_cast<std::uint32_t>(std::min<std::uint64_t>(needed, pulledAtOnce));
  std::uint32_t count = room;
  const AudioStatus status = inputData(*this, count, request_, nullptr, userData);
  if (status != audioNoError) return status;
  count = std::min({count, room, input_.framesIn(request_)});
  if (count == 0) resampler_.end();
  readRequest(count, pulledFrames_.data());
  pulledBegin_ = 0;
  pulledEnd_ = count;
  return status;
}

// Hands the resampler as much of what was pulled as it takes.
void PcmConverter::feed() {
  std::uint32_t room = 0;
  double* const space = resampler_.space(room);
  const std::uint32_t count = std::min(room, pulledEnd_ - pulledBegin_);
  std::copy_n(&pulledFrames_[std::size_t{pulledBegin_} * channels_], std::size_t{count} * channels_,
              space);
  pulledBegin_ += count;
  resampler_.put(count);
}

void PcmConverter::readRequest(std::uint32_t frames, double* target) const {
  const bool mix = channels_ == 1 && input_.channels() > 1;
  for (std::uint32_t frame = 0; frame < frames; ++frame) {
    for (std::uint32_t channel = 0; channel < channels_; ++channel) {
      double value = input_.read(request_, frame, channel);
      for (std::uint32_t other = 1; mix && other < input_.channels(); ++other) {
        value += input_.read(request_, frame, other);
      }
      *target++ = mix ? value / input_.channels() : value;
    }
  }
}

std::uint32_t PcmConverter::writeOutput(const AudioBufferList& output, std::uint32_t begin,
                                        std::uint32_t end) {
  while (begin < end) {
    const std::uint32_t frames =
        resampler_.take(writtenFrames_.data(), std::min(end - begin, Resampler::blockFrames));
    if (frames == 0) break;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
      const double* const values = &writtenFrames_[std::size_t{frame} * channels_];
      for (std::uint32_t channel = 0; channel < output_.channels(); ++channel) {
        const bool missing = channel >= channels_;
        const double value = !missing ? values[channel] : channels_ == 1 ? values[0] : 0;
        output_.write(output, begin + frame, channel, value);
      }
    }
    begin += frames;
  }
  return begin;
}

AudioStatus PcmConverter::maximumOutputPacketSize(std::uint32_t& bytes) {
  bytes = output_.bytesPerFrame();
  return audioNoError;
}

}  // namespace lirvox::platform
