// Pages with lines, areas, images and text that become picture files.
#include "tools/Drawing.h"

#include <algorithm>
#include <cmath>

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include "lib/platform/TemporaryFile.h"

namespace lirvox::tools {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)>;

// "png" of "picture.png".
std::string extensionOf(const std::string& path) {
  const std::size_t dot = path.find_last_of("./");
  return dot == std::string::npos || path[dot] == '/' ? "" : path.substr(dot + 1);
}

cairo_status_t append(void* bytes, const unsigned char* data, unsigned length) {
  static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

Surface makeSurface(const std::string& path, double width, double height, std::string& bytes) {
  const std::string extension = extensionOf(path);
  cairo_surface_t* surface = nullptr;
  if (extension == "svg") {
    surface = cairo_svg_surface_create_for_stream(append, &bytes, width, height);
    cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_PX);
  } else if (extension == "pdf") {
    surface = cairo_pdf_surface_create_for_stream(append, &bytes, width, height);
  } else {
    surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::ceil(width)),
                                         static_cast<int>(std::ceil(height)));
  }
  return {surface, cairo_surface_destroy};
}

void setColor(cairo_t* cairo, Color color) {
  cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
}

using Layout = std::unique_ptr<PangoLayout, void (*)(gpointer)>;

Layout makeLayout(cairo_t* cairo, const std::string& text, const TextStyle& style) {
  Layout layout(pango_cairo_create_layout(cairo), g_object_unref);
  const std::unique_ptr<PangoFontDescription, void (*)(PangoFontDescription*)> font(
      pango_font_description_from_string("sans-serif"), pango_font_description_free);
  pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
  if (style.bold) pango_font_description_set_weight(font.get(), PANGO_WEIGHT_BOLD);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  const std::unique_ptr<char, void (*)(gpointer)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
  pango_layout_set_text(layout.get(), valid.get(), -1);
  if (style.maxWidth > 0) {
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    pango_layout_set_height(layout.get(), -style.maxLines);
    // A width makes room for alignment, so it is set only where text has to be cut.
    int width = 0;
    pango_layout_get_pixel_size(layout.get(), &width, nullptr);
    if (width > style.maxWidth) {
      pango_layout_set_width(layout.get(), static_cast<int>(style.maxWidth * PANGO_SCALE));
    }
  }
  return layout;
}

}  // namespace

Drawing::Drawing(const std::string& path, double width, double height)
    : path_(path),
      width_(width),
      cairo_(cairo_create(makeSurface(path, width, height, bytes_).get()), cairo_destroy) {
  fill({0, 0, width, height}, palette::paper);
}

void Drawing::apply(const Stroke& stroke) {
  constexpr double kDashes[] = {5.0, 4.0};
  setColor(cairo_.get(), stroke.color);
  cairo_set_line_width(cairo_.get(), stroke.width);
  cairo_set_dash(cairo_.get(), kDashes, stroke.dashed ? 2 : 0, 0.0);
  cairo_stroke(cairo_.get());
}

void Drawing::line(Point from, Point to, const Stroke& stroke) {
  polyline({from, to}, stroke);
}

void Drawing::polyline(const std::vector<Point>& points, const Stroke& stroke) {
  for (const Point& point : points) cairo_line_to(cairo_.get(), point.x, point.y);
  apply(stroke);
}

void Drawing::fill(const Box& box, Color color) {
  setColor(cairo_.get(), color);
  cairo_rectangle(cairo_.get(), box.left, box.top, box.width, box.height);
  cairo_fill(cairo_.get());
}

void Drawing::frame(const Box& box, const Stroke& stroke) {
  cairo_rectangle(cairo_.get(), box.left, box.top, box.width, box.height);
  apply(stroke);
}

void Drawing::disc(Point center, double radius, Color color) {
  setColor(cairo_.get(), color);
  cairo_arc(cairo_.get(), center.x, center.y, radius, 0.0, 2.0 * M_PI);
  cairo_fill(cairo_.get());
}

void Drawing::image(const Box& box, std::size_t columns, std::size_t rows,
                    const std::vector<std::uint32_t>& pixels) {
  const int width = static_cast<int>(columns);
  const int height = static_cast<int>(rows);
  const Surface image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height),
                      cairo_surface_destroy);
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image.get()));
  unsigned char* const data = cairo_image_surface_get_data(image.get());
  if (!data) return;  // no pixels
  cairo_surface_flush(image.get());
  for (std::size_t row = 0; row < rows; ++row) {
    std::copy_n(pixels.data() + row * columns, columns,
                reinterpret_cast<std::uint32_t*>(data + row * stride));
  }
  cairo_surface_mark_dirty(image.get());
  cairo_save(cairo_.get());
  cairo_translate(cairo_.get(), box.left, box.top);
  cairo_scale(cairo_.get(), box.width / width, box.height / height);
  cairo_set_source_surface(cairo_.get(), image.get(), 0.0, 0.0);
  // Neither blurred where it grows nor faded out at the edges.
  const bool grows = box.width >= width && box.height >= height;
  cairo_pattern_set_filter(cairo_get_source(cairo_.get()),
                           grows ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD);
  cairo_pattern_set_extend(cairo_get_source(cairo_.get()), CAIRO_EXTEND_PAD);
  cairo_rectangle(cairo_.get(), 0.0, 0.0, width, height);
  cairo_fill(cairo_.get());
  cairo_restore(cairo_.get());
}

double Drawing::text(Point place, const std::string& text, const TextStyle& style) {
  const Layout layout = makeLayout(cairo_.get(), text, style);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  const double firstLine = static_cast<double>(height) / pango_layout_get_line_count(layout.get());
  const double before = style.align == Align::left ? 0.0 : style.align == Align::right ? 1.0 : 0.5;
  cairo_save(cairo_.get());
  cairo_translate(cairo_.get(), place.x, place.y);
  if (style.upright) cairo_rotate(cairo_.get(), -M_PI / 2);
  cairo_translate(cairo_.get(), -before * width, -firstLine / 2);
  setColor(cairo_.get(), style.color);
  cairo_move_to(cairo_.get(), 0.0, 0.0);
  pango_cairo_show_layout(cairo_.get(), layout.get());
  cairo_restore(cairo_.get());
  cairo_new_path(cairo_.get());
  return width;
}

double Drawing::textWidth(const std::string& text, const TextStyle& style) {
  int width = 0;
  pango_layout_get_pixel_size(makeLayout(cairo_.get(), text, style).get(), &width, nullptr);
  return width;
}

void Drawing::clip(const Box& box) {
  cairo_save(cairo_.get());
  cairo_rectangle(cairo_.get(), box.left, box.top, box.width, box.height);
  cairo_clip(cairo_.get());
}

void Drawing::unclip() {
  cairo_restore(cairo_.get());
}

std::error_code Drawing::save() {
  cairo_surface_t* const surface = cairo_get_target(cairo_.get());
  cairo_status_t status = cairo_status(cairo_.get());
  if (extensionOf(path_) == "png") {
    if (status == CAIRO_STATUS_SUCCESS) {
      status = cairo_surface_write_to_png_stream(surface, append, &bytes_);
    }
  } else {
    cairo_surface_finish(surface);
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface);
  }
  if (status == CAIRO_STATUS_NO_MEMORY) return make_error_code(std::errc::not_enough_memory);
  if (status != CAIRO_STATUS_SUCCESS) return make_error_code(std::errc::io_error);
  return platform::writeWholeFile(path_, bytes_);
}

Option pictureOption(std::string& path) {
  return {.names = "-o,--output",
          .value = &path,
          .help = "Picture to write: a .svg, .png or .pdf",
          .unit = "FILE",
          .required = true,
          .check = [](const std::string& name) -> std::string {
            const std::string extension = extensionOf(name);
            if (extension == "svg" || extension == "png" || extension == "pdf") return "";
            return name + ": a picture's name ends in .svg, .png or .pdf";
          }};
}

}  // namespace lirvox::tools
