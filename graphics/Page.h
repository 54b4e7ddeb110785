// The page that charts are laid out on, and the looks of what is drawn on it. Lengths are page units (1132 to the width
// of a page), the origin is the bottom left corner, y grows upward. Colours are 0x00BBGGRR.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "graphics/Scale.h"

namespace tellurix {

struct Page {
  static constexpr std::int32_t PageWidth = 1132;
  std::int32_t PageHeight = 800;
  double PageScale = 1;  // growth of a plot with many stacked rows, 1 to 5

  std::int32_t PlotLeft = 150;
  std::int32_t PlotBottom = 100;
  std::int32_t PlotWidth = 900;
  std::int32_t PlotHeight = 600;

  double XLow = 0, XHigh = 1, YLow = 0, YHigh = 1;  // the data limits that the frame is asked to show
  AxisScale X;                                      // the chosen scales
  AxisScale Y;
  bool FixedX = false;  // the scale stands as the command has set it; DrawFrame does not choose one
  bool FixedY = false;
  bool LogX = false;  // limits and values are natural logarithms; labels show what they are the logarithms of
  bool LogY = false;
  std::vector<std::string> Categories;  // labels of a category axis, from the left or from the bottom

  // For a plot with one row per item: the page grows in height from 11 items on, to 4000 units at most.
  void GrowFor(int items);
  // Scale 1 and height 800, as a command leaves the page.
  void Restore();
  // The frame at its standard place.
  void ResetFrame();
  // The frame moved to the right by a shift, for wider labels.
  void ShiftFrame(std::int32_t shift);

  double MapX(double v) const;  // data to page units, not rounded
  double MapY(double v) const;
};

// How a series is drawn: its marker and its pen.
struct SeriesStyle {
  std::int32_t Shape = 0;  // of the marker, 0 to 8
  std::int32_t Colour = 0;
  std::int32_t Width = 1;
  std::int32_t Style = 0;  // 0 solid, 1 dashes, 2 dots, 3 and 4 dashes with one and two dots, 5 no line
};

struct FontSpec {
  std::string Name = "Arial";
  std::int32_t Size = 20;   // page units, the height of the em
  std::int32_t Bold = 400;  // the weight: 400 plain, 700 bold
  bool Italic = false;
  bool Underline = false;
  bool Strike = false;
  std::int32_t Colour = 0;
};

// The pen of frame and axes stands behind the ten of the series.
inline constexpr int SeriesCount = 10;
inline constexpr int FramePen = 10;

// The section Graphics of the settings.
struct ChartLooks {
  std::array<SeriesStyle, SeriesCount + 1> Series;
  FontSpec TitleFont;
  FontSpec LabelFont;
  bool AllBlack = false;       // lines and text are black
  bool RequestScales = false;  // each graph asks for the limits of its axes
  bool BoxAxes = false;        // the frame is closed at the top and at the right
  bool RotateAllY = false;     // the title of the y axis always reads upward
};

// Reads the looks through the values in force of the section's keys, each of which has its default. What is no number,
// or out of range, counts as the standard value.
using LooksReader = std::function<std::string(std::string_view key)>;
ChartLooks ReadLooks(const LooksReader& read);

// Writes every key.
using LooksWriter = std::function<void(std::string_view key, const std::string& value)>;
void WriteLooks(const ChartLooks& looks, const LooksWriter& write);

}  // namespace tellurix
