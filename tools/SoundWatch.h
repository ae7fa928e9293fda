// Notices an input that is dead or silent.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace lirvox::tools {

/// Follows what arrives from an input and tells each change of its state once.
class SoundWatch {
 public:
  using Time = std::chrono::steady_clock::time_point;
  enum class State { sound, noAudio, silence };

  /// How long it takes to be sure that nothing arrives, or nothing but silence.
  static constexpr std::chrono::seconds patience{2};

  /// A capture begins.
  void begin(Time now);

  /// `frames` have arrived since the watch was made, and `peak` is the largest magnitude
  /// since the last call, in [0, 2^31]. Gives the state when it has changed: no audio for
  /// 2 s, or a capture of 2 s or more that is all silence.
  std::optional<State> note(Time now, std::uint64_t frames, std::uint32_t peak);

  /// Since when no audio has arrived.
  Time lastArrival() const { return lastArrival_; }

 private:
  State stateAt(Time now) const;

  State told_ = State::sound;
  Time begin_;
  Time lastArrival_;
  std::uint64_t frames_ = 0;
  bool heard_ = false;  // in this capture
};

}  // namespace lirvox::tools
