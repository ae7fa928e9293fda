// How far a long operation is.
#pragma once

#include <functional>

namespace lirvox::catalog {

/// Called now and then with the part that is done, in [0, 1]. What it throws ends the
/// operation, which leaves everything as it was.
using ProgressHandler = std::function<void(double)>;

}  // namespace lirvox::catalog
