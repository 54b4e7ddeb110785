// What a plot command draws with: the page, one open picture, and the character canvas for plots in plain text.
//
// A plot opens the picture, draws, closes it, and sends it to the report:
//   if (!graphics.BeginPicture(true)) return;
//   graphics.DrawFrame(true, title, 3); ... graphics.DrawMarker(...);
//   graphics.BeginPicture(false);
// With `graphicOn` false the same calls of frame and axes are laid out on the canvas.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "graphics/FontBook.h"
#include "graphics/Page.h"
#include "graphics/Picture.h"
#include "graphics/TextCanvas.h"
#include "host/Host.h"
#include "host/Results.h"
#include "numeric/Regional.h"

namespace tellurix {

class Graphics {
 public:
  // The recording is made in the temporary folder. The references are read whenever a picture is drawn.
  Graphics(Host& host, const Regional& regional, const std::filesystem::path& temporaryFolder);

  Page page;
  ChartLooks looks;
  FontBook fonts;
  Picture picture;
  TextCanvas canvas;
  PictureResult record;  // title and figures of the plot being drawn, for the results log

  // Opens (true) or closes (false) the picture; the hourglass shows in between. False, after a message, when the
  // recording cannot be created or written.
  bool BeginPicture(bool active);
  std::filesystem::path Recording() const { return temporaryFolder_ / "~tmp.wmf"; }
  std::filesystem::path Placeable() const { return temporaryFolder_ / "~place.wmf"; }

  // The frame at its standard place, and the label font at its plain size.
  void ResetFrame();

  // Title, frame and axes. A negative type resets the frame first and stands for its absolute value; `leftShift` moves
  // the frame to the right for wider labels. Types: 1, 8 x numeric and y categories; 2, 9 y numeric and x categories;
  // 3, 7 both numeric; 4 x only; 5 y only; 6 a bottom line without ticks; 23 both numeric, y without labels. Types 7,
  // 8 and 9 are closed at the top and at the right.
  void DrawFrame(bool graphicOn, std::string_view title, int frameType, int leftShift = 0);

  // Choose the scale of the limits in the page, unless it is fixed, and draw ticks and labels.
  void DrawXAxis(bool graphicOn, bool withLabels = true);
  void DrawYAxis(bool graphicOn, bool withLabels = true);
  // A tick and a label for each of the page's categories, at the middle of its share of the axis.
  void DrawCategoryX(bool graphicOn);
  void DrawCategoryY(bool graphicOn);

  void DrawAxisTitleX(std::string_view text);
  void DrawAxisTitleY(std::string_view text, int lineCount = 1);

  // A marker of the series' shape, its centre and radius in page units; with keepPen in the pen selected before.
  void DrawMarker(int x, int y, int radius, int seriesNumber, bool keepPen = false);
  const SeriesStyle& StyleOf(int seriesNumber) const;
  // Radius of the markers of a plot of points, which goes with the size of the labels.
  int MarkerRadius() const;
  // The points of a series by their values, within the scales of the axes. Those without both values are left out.
  void DrawPoints(std::span<const double> x, std::span<const double> y, int seriesNumber);
  // A line across the frame at a value of the y axis, with the selected pen.
  void DrawLevel(double y);

  void DrawBox(int left, int top, int right, int bottom);  // a hollow bar
  // A pooled estimate; halfHeight above and below y, or as high as wide where that is 0.
  void DrawDiamond(int x, int y, int halfWidth, bool filled, int halfHeight = 0);

  // Adds a series to the record.
  void NoteSeries(std::string name, std::vector<double> values);

 private:
  struct Fitted {
    std::string text;
    double scale = 1;
  };
  Fitted Fit(const FontSpec& font, int escapement, std::string_view text, double width, double smallestScale);
  double LabelScale(const std::vector<TickLabel>& labels, double width);
  void DrawTitle(std::string_view title);
  void DrawFrameLines(bool left, bool bottom, bool closed);
  void CentredText(double x, int y, std::string_view text);
  void ScaleX();
  void ScaleY();
  void Line(int x0, int y0, int x1, int y1);

  Host& host_;
  const Regional& regional_;
  const std::filesystem::path& temporaryFolder_;
  bool wasBusy_ = false;
};

}  // namespace tellurix
