// Signals that tests make themselves.
#include "tests/support/Signals.h"

#include <cstdlib>

namespace lirvox::test {
namespace {

// The generator of Knuth and Lewis ("Numerical Recipes in C", 2nd ed., section 7.1).
class Random {
 public:
  explicit Random(std::uint32_t seed) : state_(seed) {}
  /// In [0, 65536).
  std::int32_t next() {
    state_ = state_ * 1664525U + 1013904223U;
    return static_cast<std::int32_t>(state_ >> 16);
  }

 private:
  std::uint32_t state_;
};

// Half waves of a parabola in [-16384, 16384], which sound much like a sine.
std::int32_t wave(std::uint32_t phase) {
  const std::int32_t t = static_cast<std::int32_t>(phase >> 16) - 32768;
  return t * (32768 - std::abs(t)) / 16384;
}

// Plays notes of a fifth to a half of a second, each fading out.
class Voice {
 public:
  explicit Voice(std::uint32_t seed) : random_(seed) {}

  std::int32_t next() {
    if (left_ == 0) {
      left_ = length_ = 2205 + random_.next() % 3308;
      step_ = static_cast<std::uint32_t>(40 + random_.next() % 900) * 389566U;  // 1 Hz a time
    }
    phase_ += step_;
    return wave(phase_) / 16 * (left_-- * 64 / length_) / 64;
  }

 private:
  Random random_;
  std::int32_t length_ = 0;
  std::int32_t left_ = 0;
  std::uint32_t step_ = 0;
  std::uint32_t phase_ = 0;
};

}  // namespace

std::vector<float> noise(std::size_t count, std::uint32_t seed) {
  Random random(seed);
  std::vector<float> samples(count);
  for (float& sample : samples) sample = static_cast<float>(random.next() - 32768) / 32768.0F;
  return samples;
}

std::vector<std::int32_t> piece(std::size_t count, std::uint32_t seed) {
  Random random(seed);
  std::vector<Voice> voices;
  for (int i = 0; i < 4; ++i) voices.emplace_back(static_cast<std::uint32_t>(random.next()));
  std::vector<std::int32_t> samples(count);
  for (std::int32_t& sample : samples) {
    sample = random.next() / 512 - 64;
    for (Voice& voice : voices) sample += voice.next();
    sample *= 400009;  // into the upper bits, where rounding to single precision bites
  }
  return samples;
}

}  // namespace lirvox::test
