// Signals that tests make themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lirvox::test {

/// Noise in (-1, 1), the same everywhere.
std::vector<float> noise(std::size_t count, std::uint32_t seed = 1);

/// A piece of music as 32-bit samples of the capture format: four voices that play
/// random notes over soft noise. Made of integer arithmetic only, so that it is the
/// same with every compiler and on every processor.
std::vector<std::int32_t> piece(std::size_t count, std::uint32_t seed = 1);

}  // namespace lirvox::test
