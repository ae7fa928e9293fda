// Music and noise that tests make themselves.
#pragma once

#include "Test.h"

namespace lirvox::test {

/// A tune: 32-bit words with 16-bit range, mono, 11025 Hz. Equal seeds give equal tunes, other
/// seeds other ones; the same everywhere.
std::vector<std::int32_t> makeTune(unsigned seed, double seconds);

/// Noise in [-1, 1), the same everywhere.
std::vector<float> noise(std::size_t count, std::uint32_t seed = 1);

/// Writes samples of that kind as a WAV file of 16 bits.
void writeWav(const std::string& path, const std::vector<std::int32_t>& samples);

/// Writes them as a capture recording.
void writeRecording(const std::string& path, const std::vector<std::int32_t>& samples);

}  // namespace lirvox::test
