// The one renderer: draws a picture for the screen, for bitmaps, and as SVG and PDF.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "graphics/Drawing.h"
#include "graphics/FontBook.h"

typedef struct _cairo cairo_t;

namespace tellurix {

// Pixels 0xFFRRGGBB in rows from the top, without gaps.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
};

// Lines of a device of pixels are put onto its grid, so that hairlines are crisp; other devices take them as they are.
enum class DeviceGrid { Pixels, None };

// Draws the page into the box (0, 0, width, height) of the context, in its units, on whatever stands there.
void Render(const Drawing& drawing, FontBook& fonts, cairo_t* context, double width, double height, DeviceGrid grid);

// The page on white, width by height pixels (1 to 32767 each); an empty image where there is no memory for it.
Image RenderImage(const Drawing& drawing, FontBook& fonts, int width, int height);

// A shape as a device takes it that draws shapes itself, such as a printer. Lengths are those of the box drawn into.
struct DrawnShape {
  enum class Step : std::uint8_t { Move, Line, Curve, Close };  // with 1, 1, 3 and no points
  std::vector<Step> steps;
  std::vector<DrawPoint> points;
  std::uint32_t colour = 0;  // 0x00RRGGBB
  bool isFilled = false;     // else it is stroked
  bool winding = false;      // filled by the winding rule
  std::optional<Hatch> hatch;
  double penWidth = 0;
  std::vector<double> dashes;  // and gaps
  bool squareCaps = false;
  const DrawBitmap* bitmap = nullptr;  // then it lies between the first two points
  std::optional<std::array<DrawPoint, 2>> clip;
};

// Hands over the shapes of the page in their order; text as outlines.
void RenderShapes(const Drawing& drawing, FontBook& fonts, double width, double height,
                  const std::function<void(const DrawnShape&)>& take);

// Markup of the page, width by height points. With `inlined` it goes into a page of markup: no declaration in front,
// and its names differ from those of other pictures.
std::string RenderSvg(const Drawing& drawing, FontBook& fonts, double width, double height, bool inlined);

// A document of one page, width by height points.
std::string RenderPdf(const Drawing& drawing, FontBook& fonts, double width, double height);

}  // namespace tellurix
