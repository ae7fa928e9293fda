// Music that tests make themselves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lirvox::test {

/// A tune of random notes with a few harmonics each: 32-bit words with 16-bit range,
/// mono, 11025 Hz. Equal seeds give equal tunes, other seeds other ones.
std::vector<std::int32_t> makeTune(unsigned seed, double seconds);

/// Writes samples of that kind as a WAV file of 16 bits.
void writeWav(const std::string& path, const std::vector<std::int32_t>& samples);

/// Writes them as a capture recording.
void writeRecording(const std::string& path, const std::vector<std::int32_t>& samples);

}  // namespace lirvox::test
