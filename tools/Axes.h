// The frame of a chart: from values to places on the page, with ticks and labels.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/Drawing.h"

namespace lirvox::tools {

/// Values from one end of an axis to the other.
struct Range {
  double from;
  double to;
};

/// Round values inside `range`, about as many as asked for: steps of 1, 2 or 5 times a
/// power of ten.
std::vector<double> decimalTicks(Range range, int about);
/// Round numbers of seconds, minutes and hours.
std::vector<double> clockTicks(Range range, int about);

/// What stands beside one side of the frame.
struct Scale {
  std::string label;
  std::vector<double> ticks;
  std::function<std::string(double)> text;  ///< of a tick
};

/// One line of a legend: what a mark means.
struct LegendEntry {
  enum class Mark { line, dashes, dot, box };

  Mark mark;
  Color color;
  std::string text;
};

class Axes {
 public:
  /// `box` is the frame; labels and ticks stand outside of it, about 60 to the left and
  /// 40 below.
  Axes(Drawing& drawing, const Box& box, Range x, Range y);

  double x(double value) const;
  double y(double value) const;
  Point at(double xValue, double yValue) const { return {x(xValue), y(yValue)}; }
  const Box& box() const { return box_; }

  /// Ticks and labels, with lines across the chart if `grid`.
  void scaleX(const Scale& scale, bool grid) const;
  void scaleY(const Scale& scale, bool grid) const;
  void frame() const;

 private:
  Drawing& drawing_;
  const Box box_;
  const Range x_;
  const Range y_;
};

/// Draws entries side by side so that they end at `right`, in the height `y`.
void drawLegend(Drawing& drawing, double right, double y, const std::vector<LegendEntry>& entries);

}  // namespace lirvox::tools
