// A stream of samples to convert, and a converter's input callback that serves it.
#pragma once

#include "Test.h"
#include "lib/platform/Platform.h"

namespace lirvox::test {

inline platform::AudioStreamBasicDescription pcm(double rate, std::uint32_t channels,
                                                 std::uint32_t bits, std::uint32_t flags,
                                                 std::uint32_t bytesPerSample = 0) {
  if (bytesPerSample == 0) bytesPerSample = bits / 8;
  const bool interleaved = (flags & platform::audioFormatFlagIsNonInterleaved) == 0;
  const std::uint32_t bytes = bytesPerSample * (interleaved ? channels : 1);
  return {rate, platform::audioFormatLinearPCM, flags, bytes, 1, bytes, channels, bits, 0};
}

// Frames in a format's own layout: one buffer, or one per channel.
class PcmStream {
 public:
  using Description = platform::AudioStreamBasicDescription;

  PcmStream(const Description& format, std::size_t frames)
      : bytesPerFrame_(format.bytesPerFrame),
        buffers_(format.formatFlags & platform::audioFormatFlagIsNonInterleaved
                     ? format.channelsPerFrame
                     : 1,
                 std::vector<char>(frames * format.bytesPerFrame)) {}

  std::size_t frames() const { return buffers_[0].size() / bytesPerFrame_; }
  template <typename Sample>
  Sample* samples(std::size_t buffer = 0) {
    return reinterpret_cast<Sample*>(buffers_[buffer].data());
  }
  bool operator==(const PcmStream& other) const { return buffers_ == other.buffers_; }
  void resize(std::size_t frames) {
    for (auto& buffer : buffers_) buffer.resize(frames * bytesPerFrame_);
  }

  platform::AudioBufferList list(std::size_t begin, std::size_t frames) {
    platform::AudioBufferList records;
    for (auto& buffer : buffers_) {
      records.buffers.push_back({1, static_cast<std::uint32_t>(frames * bytesPerFrame_),
                                 buffer.data() + begin * bytesPerFrame_});
    }
    return records;
  }

  // Serves at most `piece()` frames of a request, then the end.
  static platform::AudioStatus serve(platform::AudioConverter&, std::uint32_t& count,
                                     platform::AudioBufferList& request,
                                     platform::AudioStreamPacketDescription**, void* userData) {
    auto& self = *static_cast<PcmStream*>(userData);
    const std::size_t left = self.frames() - self.served_;
    count = static_cast<std::uint32_t>(std::min<std::size_t>({left, count, self.piece()}));
    for (std::size_t i = 0; i < self.buffers_.size(); ++i) {
      request.buffers[i].dataByteSize = count * self.bytesPerFrame_;
      request.buffers[i].data = self.buffers_[i].data() + self.served_ * self.bytesPerFrame_;
    }
    self.served_ += count;
    return platform::audioNoError;
  }

  // The whole stream in another format, filled in steps of `step()` frames.
  PcmStream convertedTo(
      const Description& from, const Description& to,
      const std::function<std::uint32_t()>& step = [] { return 1000U; }) {
    platform::AudioStatus status = 0;
    const auto converter = platform::systemPlatform().makeAudioConverter(from, to, status);
    const auto expected =
        static_cast<std::size_t>(static_cast<double>(frames()) * to.sampleRate / from.sampleRate);
    PcmStream result(to, expected + 5000);
    std::size_t done = 0;
    served_ = 0;
    for (std::uint32_t count = 1; count > 0; done += count) {
      count = std::max(step(), 1U);
      auto output = result.list(done, std::min<std::size_t>(count, result.frames() - done));
      if (converter->fillComplexBuffer(serve, this, count, output, nullptr) != 0) break;
    }
    result.resize(done);
    return result;
  }

  std::function<std::size_t()> piece = [] { return std::size_t{4096}; };

 private:
  const std::uint32_t bytesPerFrame_;
  std::vector<std::vector<char>> buffers_;
  std::size_t served_ = 0;
};

}  // namespace lirvox::test
