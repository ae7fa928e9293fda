// What happens to music on its way to a microphone.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace lirvox::tools {

/// Samples, mono, 11025 Hz, of any scale.
using Sound = std::vector<double>;

/// As 32-bit words, clipped to their range.
std::vector<std::int32_t> wordsOf(const Sound& sound);

/// The sound with pink noise of a level `decibels` below its own.
Sound withPinkNoise(const Sound& sound, double decibels, std::mt19937& random);

/// A way in which sound becomes worse.
struct Degradation {
  std::string name;                     ///< as programs read it
  std::string label;                    ///< as people do
  std::optional<double> decibels = {};  ///< of the music above the noise, if that is the way
  /// Gives about as many samples, each within a tenth of a second of where it was. Equal
  /// states of `random` give equal sounds.
  std::function<Sound(const Sound& sound, std::mt19937& random)> apply;
};

/// All of them, the sound as it is first.
const std::vector<Degradation>& degradations();

}  // namespace lirvox::tools
