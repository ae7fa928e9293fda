// Sines and cosines that have the same bits on every processor.
#pragma once

namespace lirvox {

/// cos(x) and sin(x) for x in [-7, 7], in radians; errors stay below 2e-16. Made of the
/// four basic operations, each of which rounds alike everywhere. The mathematical
/// library's functions do not promise that: some of its versions fuse operations.
double cosine(double x);
double sine(double x);

}  // namespace lirvox
