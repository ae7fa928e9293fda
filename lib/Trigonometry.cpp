// Sines and cosines that have the same bits on every processor.
#include "lib/Trigonometry.h"

#include <cmath>

namespace lirvox {
namespace {

// pi / 2 in two parts. The first has so few digits that its small multiples are exact.
constexpr double kQuarterTurn = 0x1.921fb544p+0;
constexpr double kQuarterTurnRest = 0x1.0b4611a626331p-34;

// x is `quarters` right angles and a rest in [-pi / 4, pi / 4].
struct Angle {
  explicit Angle(double x) {
    const double nearest = std::floor(x / (kQuarterTurn + kQuarterTurnRest) + 0.5);
    rest = x - nearest * kQuarterTurn - nearest * kQuarterTurnRest;
    quarters = std::isfinite(nearest) ? static_cast<int>(nearest) & 3 : 0;
  }

  int quarters;
  double rest;
};

// The first terms of the power series, from the smallest: r is too small for more to count.
double seriesOfCosine(double r) {
  double sum = 1.0;
  for (int n = 18; n > 0; n -= 2) sum = 1.0 - r * r / (n * (n - 1)) * sum;
  return sum;
}

double seriesOfSine(double r) {
  double sum = 1.0;
  for (int n = 19; n > 1; n -= 2) sum = 1.0 - r * r / (n * (n - 1)) * sum;
  return r * sum;
}

}  // namespace

double cosine(double x) {
  const Angle angle(x);
  const bool turned = angle.quarters % 2 != 0;
  const double value = turned ? seriesOfSine(angle.rest) : seriesOfCosine(angle.rest);
  return angle.quarters == 1 || angle.quarters == 2 ? -value : value;
}

double sine(double x) {
  const Angle angle(x);
  const bool turned = angle.quarters % 2 != 0;
  const double value = turned ? seriesOfCosine(angle.rest) : seriesOfSine(angle.rest);
  return angle.quarters >= 2 ? -value : value;
}

}  // namespace lirvox
