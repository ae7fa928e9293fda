// Music for benchmarks, made of integers only: the same samples everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lirvox::bench {

/// `count` samples, 16-bit values at 11025 Hz, of three plucked voices over a little noise. Each
/// `seed` is a tune of its own.
std::vector<std::int32_t> chipTune(std::uint32_t seed, std::size_t count);

/// The same as floats, as they come out of the sample conversion.
std::vector<float> chipTuneSamples(std::uint32_t seed, std::size_t count);

}  // namespace lirvox::bench
