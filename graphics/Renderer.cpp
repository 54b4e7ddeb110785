#include "graphics/Renderer.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <numbers>
#include <span>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr int LargestImage = 32767;    // pixels a side
constexpr double Farthest = 60'000;    // device units from the page; cairo counts in 24 bits
constexpr double MostDashes = 20'000;  // of one line; longer ones are drawn solid
constexpr double LargestGlyph = 200;   // device units; larger text is drawn by its outlines
constexpr double TallestText = 20'000;

void SetColour(cairo_t* context, std::uint32_t colour) {
  cairo_set_source_rgb(context, (colour & 0xFF) / 255.0, (colour >> 8 & 0xFF) / 255.0, (colour >> 16 & 0xFF) / 255.0);
}

// An 8 by 8 tile of a hatch.
cairo_pattern_t* HatchPattern(Hatch hatch, std::uint32_t colour, double scale) {
  constexpr double size = 8;
  const int pixels = std::clamp(static_cast<int>(std::lround(size * scale)), 4, 128);
  cairo_surface_t* tile = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels, pixels);
  cairo_t* context = cairo_create(tile);
  cairo_scale(context, pixels / size, pixels / size);
  SetColour(context, colour);
  cairo_set_line_width(context, 1);
  const auto line = [&](double x0, double y0, double x1, double y1) {
    cairo_move_to(context, x0, y0);
    cairo_line_to(context, x1, y1);
  };
  if (hatch == Hatch::Horizontal || hatch == Hatch::Cross) line(0, 4.5, size, 4.5);
  if (hatch == Hatch::Vertical || hatch == Hatch::Cross) line(4.5, 0, 4.5, size);
  // Slanted lines go over the edges, so that the tiles join.
  const bool rising = hatch == Hatch::Forward || hatch == Hatch::DiagonalCross;
  const bool falling = hatch == Hatch::Backward || hatch == Hatch::DiagonalCross;
  for (const double shift : {-size, 0.0, size}) {
    if (rising) line(shift - 1, size + 1, shift + size + 1, -1);
    if (falling) line(shift - 1, -1, shift + size + 1, size + 1);
  }
  cairo_stroke(context);
  cairo_destroy(context);
  cairo_pattern_t* pattern = cairo_pattern_create_for_surface(tile);
  cairo_surface_destroy(tile);
  cairo_matrix_t matrix;
  cairo_matrix_init_scale(&matrix, pixels / (size * scale), pixels / (size * scale));
  cairo_pattern_set_matrix(pattern, &matrix);
  cairo_pattern_set_extend(pattern, CAIRO_EXTEND_REPEAT);
  return pattern;
}

class Renderer {
 public:
  Renderer(const Drawing& drawing, FontBook& fonts, cairo_t* context, double width, double height, DeviceGrid grid)
      : drawing_(drawing),
        fonts_(fonts),
        context_(context),
        width_(width),
        height_(height),
        scaleX_(width / drawing.width),
        scaleY_(height / drawing.height),
        scale_(std::sqrt(scaleX_ * scaleY_)),
        snaps_(grid == DeviceGrid::Pixels) {}

  using TakeShape = std::function<void(const DrawnShape&)>;
  TakeShape take;  // gets the shapes, where the device draws them itself

  void Draw() {
    cairo_save(context_);
    cairo_new_path(context_);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_MITER);
    for (const DrawItem& item : drawing_.items) Draw(item);
    cairo_restore(context_);
  }

 private:
  using Kind = DrawItem::Kind;

  void Draw(const DrawItem& item) {
    switch (item.kind) {
      case Kind::Line:
        DrawLine(item);
        break;
      case Kind::Polygon:
        DrawPolygon(item);
        break;
      case Kind::Text:
        DrawWords(item);
        break;
      case Kind::Bitmap:
        DrawPixels(item);
        break;
      case Kind::ClipBox:
        Clip(item);
        break;
      default:
        DrawBoxed(item);
        break;
    }
  }

  // --- from the page to the device ---

  DrawPoint Place(const DrawPoint& point) const {
    return {std::clamp((point.x - drawing_.left) * scaleX_, -Farthest, width_ + Farthest),
            std::clamp((point.y - drawing_.top) * scaleY_, -Farthest, height_ + Farthest)};
  }
  std::vector<DrawPoint>& Placed(std::size_t first, std::size_t count) {
    placed_.clear();
    for (std::size_t i = 0; i < count; ++i) placed_.push_back(Place(drawing_.points[first + i]));
    return placed_;
  }

  // Width of a pen on the device; on pixels a whole number of them.
  double PenWidth(const DrawPen& pen) const {
    const double width = std::min(std::max(pen.width, 1.0) * scale_, Farthest);
    return snaps_ ? std::max(1.0, std::round(width)) : width;
  }

  // A coordinate at which a line of this width covers whole pixels.
  double Snapped(double v, double penWidth) const {
    if (!snaps_) return v;
    return std::fmod(penWidth, 2) == 1 ? std::floor(v) + 0.5 : std::round(v);
  }

  // Puts what is level or upright in a chain of points onto the grid. A closed chain joins its last point to its first.
  void SnapChain(std::span<DrawPoint> points, double penWidth, bool closed) {
    if (!snaps_ || points.size() < 2) return;
    // Judged on the points as they were: ends that meet are then snapped alike.
    constexpr std::uint8_t upright = 1, level = 2;
    edges_.assign(points.size(), 0);
    const auto judge = [&](std::size_t a, std::size_t b) {
      const std::uint8_t edge = static_cast<std::uint8_t>((std::fabs(points[a].x - points[b].x) < 1e-6 ? upright : 0) |
                                                          (std::fabs(points[a].y - points[b].y) < 1e-6 ? level : 0));
      if (edge == (upright | level)) return;  // the same point twice
      edges_[a] |= edge;
      edges_[b] |= edge;
    };
    for (std::size_t i = 1; i < points.size(); ++i) judge(i - 1, i);
    const bool meets = std::hypot(points.front().x - points.back().x, points.front().y - points.back().y) < 1e-6;
    if (meets) {
      edges_.front() |= edges_.back();
      edges_.back() = edges_.front();
    } else if (closed) {
      judge(points.size() - 1, 0);
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
      if ((edges_[i] & upright) != 0) points[i].x = Snapped(points[i].x, penWidth);
      if ((edges_[i] & level) != 0) points[i].y = Snapped(points[i].y, penWidth);
    }
  }

  // --- pens and brushes ---

  bool SetPen(const DrawPen& pen, double length) {
    if (pen.style == PenStyle::Null) return false;
    const double width = PenWidth(pen);
    SetColour(context_, pen.colour);
    cairo_set_line_width(context_, width);
    SetDashes(pen.style, width, length);
    return true;
  }

  void SetDashes(PenStyle style, double width, double length) {
    const double unit = std::max(width, scale_);
    const auto lengths = DashLengths(style);
    auto count = static_cast<int>(lengths.size());
    std::array<double, 6> dashes{};
    double period = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) period += dashes[i] = lengths[i] * unit;
    if (count > 0 && length > MostDashes * period) count = 0;
    cairo_set_dash(context_, count > 0 ? dashes.data() : nullptr, count, 0);
  }

  // --- to the device; the path stays ---

  void FillPath(std::optional<Hatch> hatch = {}) {
    if (!take) return cairo_fill_preserve(context_);
    DrawnShape shape = ShapeOfPath();
    shape.isFilled = true;
    shape.winding = cairo_get_fill_rule(context_) == CAIRO_FILL_RULE_WINDING;
    shape.hatch = hatch;
    take(shape);
  }

  void StrokePath() {
    if (!take) return cairo_stroke_preserve(context_);
    DrawnShape shape = ShapeOfPath();
    shape.penWidth = cairo_get_line_width(context_);
    shape.dashes.resize(static_cast<std::size_t>(cairo_get_dash_count(context_)));
    cairo_get_dash(context_, shape.dashes.data(), nullptr);
    shape.squareCaps = cairo_get_line_cap(context_) != CAIRO_LINE_CAP_BUTT;
    take(shape);
  }

  DrawnShape ShapeOfPath() const {
    using Step = DrawnShape::Step;
    static constexpr std::array steps{Step::Move, Step::Line, Step::Curve, Step::Close};  // as cairo numbers them
    static constexpr std::array counts{1, 1, 3, 0};
    DrawnShape shape = NewShape();
    cairo_path_t* path = cairo_copy_path(context_);
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
      const auto type = static_cast<std::size_t>(path->data[i].header.type);
      shape.steps.push_back(steps[type]);
      for (int k = 1; k <= counts[type]; ++k) {
        DrawPoint point{path->data[i + k].point.x, path->data[i + k].point.y};
        cairo_user_to_device(context_, &point.x, &point.y);
        shape.points.push_back(point);
      }
    }
    cairo_path_destroy(path);
    return shape;
  }

  DrawnShape NewShape() const {
    double red = 0, green = 0, blue = 0, alpha = 1;
    cairo_pattern_get_rgba(cairo_get_source(context_), &red, &green, &blue, &alpha);
    const auto part = [](double share) { return static_cast<std::uint32_t>(std::lround(255 * share)); };
    DrawnShape shape;
    shape.colour = part(red) << 16 | part(green) << 8 | part(blue);
    shape.clip = clip_;
    return shape;
  }

  void Fill(const DrawBrush& brush, bool winding) {
    if (brush.kind == DrawBrush::Kind::None) return;
    cairo_set_fill_rule(context_, winding ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    if (brush.kind == DrawBrush::Kind::Solid) {
      SetColour(context_, brush.colour);
      FillPath();
      return;
    }
    if (take) {
      SetColour(context_, brush.colour);
      return FillPath(brush.hatch);
    }
    cairo_pattern_t* pattern = HatchPattern(brush.hatch, brush.colour, scale_);
    cairo_set_source(context_, pattern);
    cairo_pattern_destroy(pattern);
    cairo_fill_preserve(context_);
  }

  void FillAndStroke(const DrawItem& item, double length) {
    Fill(drawing_.brushes[item.brush], item.winding);
    if (SetPen(drawing_.pens[item.pen], length)) StrokePath();
    cairo_new_path(context_);
  }

  // --- shapes ---

  static double LengthOf(std::span<const DrawPoint> points) {
    double length = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
      length += std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y);
    }
    return length;
  }

  void AddPath(std::span<const DrawPoint> points) {
    cairo_move_to(context_, points[0].x, points[0].y);
    for (const DrawPoint& point : points.subspan(1)) cairo_line_to(context_, point.x, point.y);
  }

  void DrawLine(const DrawItem& item) {
    std::vector<DrawPoint>& points = Placed(item.first, item.count);
    const DrawPen& pen = drawing_.pens[item.pen];
    SnapChain(points, PenWidth(pen), false);
    if (!SetPen(pen, LengthOf(points))) return;
    const bool closed = points.size() > 2 && points.front().x == points.back().x && points.front().y == points.back().y;
    cairo_set_line_cap(context_, pen.style == PenStyle::Solid ? CAIRO_LINE_CAP_SQUARE : CAIRO_LINE_CAP_BUTT);
    // Long curves are stroked in pieces: what a stroke costs grows faster than its length.
    constexpr std::size_t piece = 256;
    if (points.size() <= piece || pen.style != PenStyle::Solid) {
      AddPath(points);
      if (closed) cairo_close_path(context_);
      StrokePath();
      cairo_new_path(context_);
    } else {
      cairo_set_line_cap(context_, CAIRO_LINE_CAP_ROUND);
      for (std::size_t from = 0; from + 1 < points.size(); from += piece - 1) {
        AddPath(std::span(points).subspan(from, std::min(piece, points.size() - from)));
        StrokePath();
        cairo_new_path(context_);
      }
    }
    cairo_set_line_cap(context_, CAIRO_LINE_CAP_BUTT);
  }

  void DrawPolygon(const DrawItem& item) {
    std::vector<DrawPoint>& points = Placed(item.first, item.count);
    const double penWidth = PenWidth(drawing_.pens[item.pen]);
    double length = 0;
    std::size_t at = 0;
    const auto addRing = [&](std::size_t count) {
      const std::span ring = std::span(points).subspan(at, count);
      SnapChain(ring, penWidth, true);
      AddPath(ring);
      cairo_close_path(context_);
      length += LengthOf(ring);
      at += count;
    };
    for (std::uint32_t ring = 0; ring < item.ringCount; ++ring) addRing(drawing_.rings[item.text + ring]);
    if (item.ringCount == 0) addRing(points.size());
    FillAndStroke(item, length);
  }

  void DrawBoxed(const DrawItem& item) {
    std::vector<DrawPoint>& points = Placed(item.first, item.count);
    const double penWidth = PenWidth(drawing_.pens[item.pen]);
    const double left = Snapped(std::min(points[0].x, points[1].x), penWidth);
    const double right = Snapped(std::max(points[0].x, points[1].x), penWidth);
    const double top = Snapped(std::min(points[0].y, points[1].y), penWidth);
    const double bottom = Snapped(std::max(points[0].y, points[1].y), penWidth);
    if (item.kind == Kind::Rectangle) {
      cairo_rectangle(context_, left, top, right - left, bottom - top);
    } else if (right - left < 1e-3 || bottom - top < 1e-3) {
      cairo_move_to(context_, left, top);
      cairo_line_to(context_, right, bottom);
    } else {
      AddEllipse(item, points, left, top, right, bottom);
    }
    FillAndStroke(item, 2 * (right - left + bottom - top));
  }

  void AddEllipse(const DrawItem& item, std::span<const DrawPoint> points, double left, double top, double right,
                  double bottom) {
    const double x = (left + right) / 2, y = (top + bottom) / 2;
    const double radiusX = (right - left) / 2, radiusY = (bottom - top) / 2;
    cairo_matrix_t before;
    cairo_get_matrix(context_, &before);
    cairo_translate(context_, x, y);
    cairo_scale(context_, radiusX, radiusY);
    cairo_new_sub_path(context_);
    if (item.kind == Kind::Ellipse) {
      cairo_arc(context_, 0, 0, 1, 0, 2 * std::numbers::pi);
      cairo_close_path(context_);
    } else {
      const auto angle = [&](const DrawPoint& p) { return std::atan2((p.y - y) / radiusY, (p.x - x) / radiusX); };
      if (item.kind == Kind::Pie) cairo_move_to(context_, 0, 0);
      cairo_arc_negative(context_, 0, 0, 1, angle(points[2]), angle(points[3]));  // counter-clockwise
      if (item.kind != Kind::Arc) cairo_close_path(context_);
    }
    cairo_set_matrix(context_, &before);
  }

  void DrawPixels(const DrawItem& item) {
    const DrawBitmap& bitmap = drawing_.bitmaps[item.text];
    const std::vector<DrawPoint>& corners = Placed(item.first, 2);
    const auto onGrid = [&](double v) { return snaps_ ? std::round(v) : v; };
    const double x = onGrid(corners[0].x), y = onGrid(corners[0].y);
    const double width = onGrid(corners[1].x) - x, height = onGrid(corners[1].y) - y;
    if (std::fabs(width) < 1e-3 || std::fabs(height) < 1e-3) return;
    if (take) {
      DrawnShape shape = NewShape();
      shape.bitmap = &bitmap;
      shape.points = {{x, y}, {x + width, y + height}};
      return take(shape);
    }
    cairo_surface_t* surface = SurfaceOf(bitmap);
    cairo_save(context_);
    cairo_rectangle(context_, x, y, width, height);
    cairo_clip(context_);
    cairo_translate(context_, x, y);
    cairo_scale(context_, width / bitmap.width, height / bitmap.height);
    cairo_set_source_surface(context_, surface, 0, 0);
    cairo_pattern_set_extend(cairo_get_source(context_), CAIRO_EXTEND_PAD);
    static constexpr cairo_operator_t operators[]{CAIRO_OPERATOR_OVER, CAIRO_OPERATOR_MULTIPLY, CAIRO_OPERATOR_SCREEN,
                                                  CAIRO_OPERATOR_DIFFERENCE};
    cairo_set_operator(context_, operators[static_cast<std::size_t>(bitmap.mode)]);
    cairo_paint(context_);
    cairo_restore(context_);
    cairo_surface_destroy(surface);
  }

  static cairo_surface_t* SurfaceOf(const DrawBitmap& bitmap) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, bitmap.width, bitmap.height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return surface;
    cairo_surface_flush(surface);
    unsigned char* row = cairo_image_surface_get_data(surface);
    const auto width = static_cast<std::size_t>(bitmap.width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(bitmap.height); ++y) {
      std::memcpy(row, bitmap.pixels.data() + y * width, 4 * width);
      row += cairo_image_surface_get_stride(surface);
    }
    cairo_surface_mark_dirty(surface);
    return surface;
  }

  void Clip(const DrawItem& item) {
    cairo_reset_clip(context_);
    clip_.reset();
    if (item.count < 2) return;
    const std::vector<DrawPoint>& box = Placed(item.first, 2);
    clip_ = std::array{box[0], box[1]};
    cairo_rectangle(context_, box[0].x, box[0].y, std::max(0.0, box[1].x - box[0].x),
                    std::max(0.0, box[1].y - box[0].y));
    cairo_clip(context_);
  }

  // --- text ---

  void DrawWords(const DrawItem& item) {
    const DrawText& text = drawing_.texts[item.text];
    const DrawFont& font = drawing_.fonts[item.brush];
    const FaceName face{font.name, font.weight > 550, font.italic};
    const double size = font.height;
    if (!(size * scale_ > 0.1) || size * scale_ > TallestText) return;
    const double width = fonts_.Width(text.text, face, size);
    const double ascent = fonts_.Ascent(face, size), descent = fonts_.Descent(face, size);
    const DrawPoint at = Place(drawing_.points[item.first]);

    cairo_save(context_);
    SetColour(context_, text.colour);
    cairo_translate(context_, at.x, at.y);
    cairo_scale(context_, scaleX_, scaleY_);
    cairo_rotate(context_, -font.escapement / 1800.0 * std::numbers::pi);
    const double x = text.across == TextAcross::Left ? 0 : text.across == TextAcross::Right ? -width : -width / 2;
    const double baseline = text.down == TextDown::Top ? ascent : text.down == TextDown::Bottom ? -descent : 0;
    cairo_translate(context_, x, baseline);
    // The baseline of level text stands on a pixel.
    if (snaps_ && font.escapement == 0) {
      cairo_matrix_t matrix;
      cairo_get_matrix(context_, &matrix);
      matrix.y0 = std::round(matrix.y0);
      cairo_set_matrix(context_, &matrix);
    }
    ShowRuns(fonts_.Runs(text.text, face), size);
    DrawRules(font, width);
    cairo_restore(context_);
    cairo_new_path(context_);
  }

  void ShowRuns(const std::vector<FaceRun>& runs, double size) {
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(context_, options);
    cairo_font_options_destroy(options);
    cairo_move_to(context_, 0, 0);
    for (const FaceRun& run : runs) {
      cairo_set_font_face(context_, run.face);
      cairo_set_font_size(context_, size);
      if (!take && size * scale_ <= LargestGlyph) {
        cairo_show_text(context_, run.text.c_str());
      } else {
        cairo_text_path(context_, run.text.c_str());
        double x = 0, y = 0;
        cairo_get_current_point(context_, &x, &y);
        cairo_set_fill_rule(context_, CAIRO_FILL_RULE_WINDING);
        FillPath();
        cairo_new_path(context_);
        cairo_move_to(context_, x, y);
      }
    }
    cairo_new_path(context_);
  }

  void DrawRules(const DrawFont& font, double width) {
    const double thickness = font.height / 14;
    if (font.underline) cairo_rectangle(context_, 0, 0.1 * font.height, width, thickness);
    if (font.strike) cairo_rectangle(context_, 0, -0.27 * font.height, width, thickness);
    if (font.underline || font.strike) FillPath();
    cairo_new_path(context_);
  }

  const Drawing& drawing_;
  FontBook& fonts_;
  cairo_t* context_;
  double width_, height_;
  double scaleX_, scaleY_, scale_;
  bool snaps_;
  std::optional<std::array<DrawPoint, 2>> clip_;
  std::vector<DrawPoint> placed_;  // of the item being drawn
  std::vector<std::uint8_t> edges_;
};

cairo_status_t AppendBytes(void* target, const unsigned char* bytes, unsigned int length) {
  static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), length);
  return CAIRO_STATUS_SUCCESS;
}

// Draws on a surface that writes itself to text.
using MakeSurface = std::function<cairo_surface_t*(std::string&)>;
std::string RenderDocument(const Drawing& drawing, FontBook& fonts, double width, double height,
                           const MakeSurface& make) {
  std::string bytes;
  cairo_surface_t* surface = make(bytes);
  cairo_t* context = cairo_create(surface);
  Render(drawing, fonts, context, width, height, DeviceGrid::None);
  cairo_destroy(context);
  cairo_surface_finish(surface);
  cairo_surface_destroy(surface);
  return bytes;
}

// Names of one picture must not be those of another in the same page of markup.
std::string Inlined(std::string_view svg) {
  std::uint64_t hash = 14695981039346656037u;  // FNV-1a, Fowler, Noll, Vo
  for (const char c : svg) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  const std::string prefix = fmt::format("p{:x}-", hash);
  const auto start = svg.find("<svg");
  if (start == std::string_view::npos) return {};
  std::string text(svg.substr(start));
  for (const std::string opening : {"id=\"", "href=\"#", "url(#"}) text = ReplaceAll(text, opening, opening + prefix);
  return text;
}

}  // namespace

void Render(const Drawing& drawing, FontBook& fonts, cairo_t* context, double width, double height, DeviceGrid grid) {
  Renderer(drawing, fonts, context, width, height, grid).Draw();
}

void RenderShapes(const Drawing& drawing, FontBook& fonts, double width, double height,
                  const std::function<void(const DrawnShape&)>& take) {
  // Without bounds: cairo leaves out letters that lie outside of a surface.
  cairo_surface_t* nowhere = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr);
  cairo_t* context = cairo_create(nowhere);
  Renderer renderer(drawing, fonts, context, width, height, DeviceGrid::None);
  renderer.take = take;
  renderer.Draw();
  cairo_destroy(context);
  cairo_surface_destroy(nowhere);
}

Image RenderImage(const Drawing& drawing, FontBook& fonts, int width, int height) {
  Image image;
  if (width < 1 || height < 1 || width > LargestImage || height > LargestImage) return image;
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  cairo_t* context = cairo_create(surface);
  cairo_set_source_rgb(context, 1, 1, 1);
  cairo_paint(context);
  Render(drawing, fonts, context, width, height, DeviceGrid::Pixels);
  cairo_destroy(context);
  cairo_surface_flush(surface);
  if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS) {
    image.width = width;
    image.height = height;
    image.pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const unsigned char* row = cairo_image_surface_get_data(surface);
    for (int y = 0; y < height; ++y, row += cairo_image_surface_get_stride(surface)) {
      const auto* pixels = reinterpret_cast<const std::uint32_t*>(row);
      for (int x = 0; x < width; ++x) image.pixels.push_back(pixels[x] | 0xFF000000u);
    }
  }
  cairo_surface_destroy(surface);
  return image;
}

std::string RenderSvg(const Drawing& drawing, FontBook& fonts, double width, double height, bool inlined) {
  const std::string svg = RenderDocument(drawing, fonts, width, height, [&](std::string& bytes) {
    return cairo_svg_surface_create_for_stream(AppendBytes, &bytes, width, height);
  });
  return inlined ? Inlined(svg) : svg;
}

std::string RenderPdf(const Drawing& drawing, FontBook& fonts, double width, double height) {
  return RenderDocument(drawing, fonts, width, height, [&](std::string& bytes) {
    return cairo_pdf_surface_create_for_stream(AppendBytes, &bytes, width, height);
  });
}

}  // namespace tellurix
