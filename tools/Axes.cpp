// The frame of a chart: from values to places on the page, with ticks and labels.
#include "tools/Axes.h"

#include <cmath>

namespace lirvox::tools {
namespace {

constexpr double kTickLength = 4.0;

std::vector<double> multiples(Range range, double step) {
  std::vector<double> ticks;
  const double last = std::floor(range.to / step + 1e-9);
  for (double k = std::ceil(range.from / step - 1e-9); k <= last; ++k)
    ticks.push_back(k * step + 0.0);  // no -0
  return ticks;
}

// The smallest round number that is not below `step`.
double decimalStep(double step) {
  const double power = std::pow(10.0, std::floor(std::log10(step)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= step) return factor * power;
  }
  return 10.0 * power;
}

// The mark of an entry, 22 wide, and its text. Returns the whole width.
double drawEntry(Drawing& drawing, double left, double y, const LegendEntry& entry) {
  using Mark = LegendEntry::Mark;
  if (entry.mark == Mark::dot) {
    drawing.disc({left + 11, y}, 3.0, entry.color);
  } else if (entry.mark == Mark::box) {
    drawing.fill({left + 4, y - 5, 14, 10}, entry.color);
  } else {
    drawing.line({left, y}, {left + 22, y}, {entry.color, 2.0, entry.mark == Mark::dashes});
  }
  return 28 + drawing.text({left + 28, y}, entry.text, {.color = palette::ink});
}

}  // namespace

std::vector<double> decimalTicks(Range range, int about) {
  const double length = range.to - range.from;
  if (!(length > 0.0)) return {range.from};
  return multiples(range, decimalStep(length / about));
}

std::vector<double> clockTicks(Range range, int about) {
  const double length = range.to - range.from;
  for (const double step :
       {1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0}) {
    if (length / step <= about) return multiples(range, step);
  }
  return multiples(range, 3600.0 * decimalStep(length / about / 3600.0));
}

Axes::Axes(Drawing& drawing, const Box& box, Range x, Range y)
    : drawing_(drawing), box_(box), x_(x), y_(y) {}

double Axes::x(double value) const {
  return box_.left + box_.width * (value - x_.from) / (x_.to - x_.from);
}

double Axes::y(double value) const {
  return box_.bottom() - box_.height * (value - y_.from) / (y_.to - y_.from);
}

void Axes::scaleX(const Scale& scale, bool grid) const {
  for (const double tick : scale.ticks) {
    const double place = x(tick);
    if (grid) drawing_.line({place, box_.top}, {place, box_.bottom()}, {palette::grid});
    drawing_.line({place, box_.bottom()}, {place, box_.bottom() + kTickLength}, {});
    drawing_.text({place, box_.bottom() + 13}, scale.text(tick), {.align = Align::center});
  }
  drawing_.text({box_.left + box_.width / 2, box_.bottom() + 31}, scale.label,
                {.align = Align::center});
}

void Axes::scaleY(const Scale& scale, bool grid) const {
  for (const double tick : scale.ticks) {
    const double place = y(tick);
    if (grid) drawing_.line({box_.left, place}, {box_.right(), place}, {palette::grid});
    drawing_.line({box_.left - kTickLength, place}, {box_.left, place}, {});
    drawing_.text({box_.left - 7, place}, scale.text(tick), {.align = Align::right});
  }
  drawing_.text({box_.left - 54, box_.top + box_.height / 2}, scale.label,
                {.align = Align::center, .upright = true});
}

void Axes::frame() const {
  drawing_.frame(box_, {palette::pale});
}

void drawLegend(Drawing& drawing, double right, double y, const std::vector<LegendEntry>& entries) {
  double left = right;
  for (const LegendEntry& entry : entries) left -= 28 + drawing.textWidth(entry.text, {}) + 18;
  for (const LegendEntry& entry : entries) {
    left += 18;
    left += drawEntry(drawing, left, y, entry);
  }
}

}  // namespace lirvox::tools
