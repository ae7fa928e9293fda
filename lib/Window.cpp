// The analysis window.
#include "lib/Window.h"

#include <numeric>

#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"

namespace lirvox {

// Never destroyed: a pass may still run while the process ends.
const std::vector<double>& analysisWindow() {
  static const auto* const window = new std::vector<double>(LirvoxUtilities::window_hanning(
      std::vector<double>(static_cast<std::size_t>(LirvoxSettings::settingChunkSize()), 1.0)));
  return *window;
}

double analysisWindowEnergy() {
  static const double energy = std::inner_product(analysisWindow().begin(), analysisWindow().end(),
                                                  analysisWindow().begin(), 0.0);
  return energy;
}

}  // namespace lirvox
