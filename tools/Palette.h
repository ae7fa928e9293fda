// The colours of pictures.
#pragma once

#include <array>

namespace lirvox::tools {

/// Parts in [0, 1].
struct Color {
  double red;
  double green;
  double blue;
  double alpha = 1.0;

  constexpr Color withAlpha(double value) const { return {red, green, blue, value}; }
};

namespace palette {

// What people with any kind of colour vision tell apart (Okabe and Ito, "Color universal
// design", 2008), the blacks softened.
constexpr Color ink{0.13, 0.13, 0.13};
constexpr Color pale{0.45, 0.45, 0.45};
constexpr Color grid{0.86, 0.86, 0.86};
constexpr Color paper{1.0, 1.0, 1.0};
constexpr Color blue{0.0, 0.447, 0.698};
constexpr Color vermilion{0.835, 0.369, 0.0};
constexpr Color green{0.0, 0.620, 0.451};
constexpr Color purple{0.800, 0.475, 0.655};
constexpr Color orange{0.902, 0.624, 0.0};
constexpr Color sky{0.337, 0.706, 0.914};

/// For lines of one chart, in the order in which to take them.
constexpr std::array<Color, 6> lines = {blue, vermilion, green, purple, orange, sky};

}  // namespace palette
}  // namespace lirvox::tools
