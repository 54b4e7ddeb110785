// A picture as it was read back from its recording: what to draw, in order, in one flat space. y grows downward.
#pragma once

#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace tellurix {

struct DrawPoint {
  double x = 0;
  double y = 0;
};

// Line styles of pens, numbered as in metafiles.
enum class PenStyle : std::uint8_t { Solid, Dash, Dot, DashDot, DashDotDot, Null };

// Dashes and gaps of a line style in turn, in widths of the pen; none of a solid line.
inline std::span<const double> DashLengths(PenStyle style) {
  constexpr std::size_t counts[] = {0, 2, 2, 4, 6};
  static constexpr double dash[] = {9, 5}, dot[] = {2, 4}, dashDot[] = {9, 4, 2, 4, 2, 4};
  if (static_cast<std::size_t>(style) >= std::size(counts)) return {};
  const double* lengths = style == PenStyle::Dash ? dash : style == PenStyle::Dot ? dot : dashDot;
  return {lengths, counts[static_cast<std::size_t>(style)]};
}

struct DrawPen {
  PenStyle style = PenStyle::Solid;
  double width = 1;
  std::uint32_t colour = 0;  // 0x00BBGGRR, as all colours of pictures

  bool operator==(const DrawPen&) const = default;
};

// Kinds of hatch, numbered as in metafiles: "-", "|", "\", "/", "+", "x".
enum class Hatch : std::uint8_t { Horizontal, Vertical, Backward, Forward, Cross, DiagonalCross };

struct DrawBrush {
  enum class Kind : std::uint8_t { None, Solid, Hatched };
  Kind kind = Kind::None;
  Hatch hatch = Hatch::Horizontal;
  std::uint32_t colour = 0;

  bool operator==(const DrawBrush&) const = default;
};

struct DrawFont {
  std::string name = "Arial";
  double height = 20;  // of the em
  int weight = 400;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  int escapement = 0;  // tenths of a degree, counter-clockwise

  bool operator==(const DrawFont&) const = default;
};

// Where the point of a text lies in it.
enum class TextAcross : std::uint8_t { Left, Centre, Right };
enum class TextDown : std::uint8_t { Top, Baseline, Bottom };

struct DrawText {
  std::string text;  // UTF-8
  std::uint32_t colour = 0;
  TextAcross across = TextAcross::Left;
  TextDown down = TextDown::Top;
};

// How the pixels of a bitmap meet what is there already.
enum class BitmapMode : std::uint8_t { Copy, And, Or, Xor };

struct DrawBitmap {
  int width = 0;  // at most 32767 a side
  int height = 0;
  BitmapMode mode = BitmapMode::Copy;
  std::vector<std::uint32_t> pixels;  // 0xFFRRGGBB in rows from the top
};

// One thing to draw. Its points stand in Drawing::points from `first` on: of an ellipse and a rectangle two opposite
// corners of its box, of a bitmap the places of its first and of its last corner, of an arc, a chord and a pie the box
// and then where it begins and ends, of a text one. Where a shape has several rings, the lengths of the further ones
// are in Drawing::rings.
struct DrawItem {
  enum class Kind : std::uint8_t { Line, Polygon, Ellipse, Rectangle, Arc, Chord, Pie, Text, Bitmap, ClipBox };
  Kind kind = Kind::Line;
  bool winding = false;  // a polygon is filled by the winding rule, else by the odd-even one
  std::uint32_t pen = 0;
  std::uint32_t brush = 0;  // of a text: its font
  std::uint32_t first = 0;
  std::uint32_t count = 0;
  std::uint32_t text = 0;  // of a bitmap: its place in Drawing::bitmaps; of a polygon: its first entry in
                           // Drawing::rings, `ringCount` of them
  std::uint32_t ringCount = 0;
};

struct Drawing {
  double left = 0;
  double top = 0;
  double width = 0;  // of the page, always above 0 in a drawing that was read
  double height = 0;
  std::vector<DrawPen> pens;
  std::vector<DrawBrush> brushes;
  std::vector<DrawFont> fonts;
  std::vector<DrawPoint> points;
  std::vector<std::uint32_t> rings;
  std::vector<DrawText> texts;
  std::vector<DrawBitmap> bitmaps;
  std::vector<DrawItem> items;
};

}  // namespace tellurix
