// Pages with lines, areas, images and text that become picture files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "tools/CommandLine.h"
#include "tools/Palette.h"

struct _cairo;

namespace lirvox::tools {

/// Places are in pixels (SVG, PNG) or points (PDF), from the upper left corner.
struct Point {
  double x;
  double y;
};
struct Box {
  double left;
  double top;
  double width;
  double height;

  double right() const { return left + width; }
  double bottom() const { return top + height; }
};

struct Stroke {
  Color color = palette::ink;
  double width = 1.0;
  bool dashed = false;
};

enum class Align { left, center, right };

struct TextStyle {
  double size = 12.0;
  Color color = palette::ink;
  Align align = Align::left;  ///< where the given place is in the line
  bool bold = false;
  bool upright = false;   ///< reads from the bottom to the top
  double maxWidth = 0.0;  ///< text that is longer is cut and ends in "..."; 0: any length
  int maxLines = 1;       ///< into which long text is broken before it is cut
};

/// The width of the program's pages, and where their charts begin and end.
inline constexpr double kPageWidth = 1200.0;
inline constexpr double kPageLeft = 80.0;
inline constexpr double kPageRight = 1182.0;

/// One page. Drawing never fails; `save` tells if anything has.
class Drawing {
 public:
  /// What kind of picture it is, the extension of `path` says: .svg, .png or .pdf.
  Drawing(const std::string& path, double width, double height);

  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  double width() const { return width_; }

  void line(Point from, Point to, const Stroke& stroke);
  void polyline(const std::vector<Point>& points, const Stroke& stroke);
  void fill(const Box& box, Color color);
  void frame(const Box& box, const Stroke& stroke);
  void disc(Point center, double radius, Color color);
  /// Fills `box` with an image: `rows` times `columns` pixels 0xRRGGBB, the upper row first.
  void image(const Box& box, std::size_t columns, std::size_t rows,
             const std::vector<std::uint32_t>& pixels);
  /// `place` is in the middle of the first line's height. The text is UTF-8, in any script;
  /// what is not valid is shown as such. Returns the width it takes.
  double text(Point place, const std::string& text, const TextStyle& style);
  /// That width alone.
  double textWidth(const std::string& text, const TextStyle& style);

  /// Everything until `unclip` is drawn inside `box` only.
  void clip(const Box& box);
  void unclip();

  /// Writes the file, which appears whole or not at all. Call once, in the end.
  std::error_code save();

 private:
  void apply(const Stroke& stroke);

  const std::string path_;
  const double width_;
  std::string bytes_;  // of the file; written to until cairo_ is gone
  std::unique_ptr<_cairo, void (*)(_cairo*)> cairo_;
};

/// -o, with a check of the extension.
Option pictureOption(std::string& path);

}  // namespace lirvox::tools
