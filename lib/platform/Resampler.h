// From one sample rate to another.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

struct soxr;

namespace lirvox::platform {

/// Resamples a stream of interleaved frames. What comes out does not depend on
/// the pieces in which it was put in or is taken. Allocates in its constructor
/// only. Equal rates pass through at once; else frames are held back until a
/// block is complete.
class Resampler {
 public:
  /// Frames of a block.
  static constexpr std::uint32_t blockFrames = 256;

  Resampler(std::uint32_t inputHz, std::uint32_t outputHz, std::uint32_t channels);
  ~Resampler();
  Resampler(const Resampler&) = delete;
  Resampler& operator=(const Resampler&) = delete;

  /// Where the next frames are to be written, and for how many there is room:
  /// at least one when `take` has just given nothing.
  double* space(std::uint32_t& room);
  /// `count` frames were written to the space.
  void put(std::uint32_t count);
  /// No more will be put; `take` gives the rest.
  void end() { ending_ = true; }
  bool hasEnded() const { return ending_ && taken_ == framesDue(); }

  /// Writes up to `room` frames that are ready, and returns how many.
  std::uint32_t take(double* frames, std::uint32_t room);

 private:
  struct StreamDeleter {
    void operator()(soxr* stream) const;
  };

  void warmUp();
  std::uint64_t warmUpBlocks() const;
  bool advance();
  void process(std::uint32_t frames);
  std::uint64_t framesDue() const;

  const std::uint32_t inputHz_;
  const std::uint32_t outputHz_;
  const std::uint32_t channels_;
  std::unique_ptr<soxr, StreamDeleter> stream_;  // null when the rates are equal
  std::vector<double> block_;
  std::uint32_t blockCount_ = 0;
  std::vector<double> ready_;
  std::uint32_t readyBegin_ = 0;
  std::uint32_t readyEnd_ = 0;
  std::uint64_t silenceLeft_ = 0;  // frames of ready_ that belong before the stream
  std::uint64_t put_ = 0;
  std::uint64_t taken_ = 0;
  bool ending_ = false;
};

}  // namespace lirvox::platform
