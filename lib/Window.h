// The analysis window.
#pragma once

#include <vector>

namespace lirvox {

/// The 512-point Hann window of every frame, computed once.
const std::vector<double>& analysisWindow();

/// Its energy, the sum of its squares (191.625).
double analysisWindowEnergy();

}  // namespace lirvox
