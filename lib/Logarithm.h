// A natural logarithm that has the same bits on every processor.
#pragma once

#include <cstddef>

namespace lirvox {

/// Replaces each of `count` values by its natural logarithm, of values below `floor` by
/// that of `floor`, and returns the sum of all logarithms. The values must be finite,
/// `floor` positive and not denormal. Errors of a logarithm stay below 2 units in the
/// last place; the order in which they are summed depends on `count` alone.
///
/// Made of the four basic operations, each of which rounds alike everywhere. The
/// mathematical library's logarithm does not promise that: some of its versions fuse
/// operations.
double takeLogarithms(double* values, std::size_t count, double floor);

}  // namespace lirvox
