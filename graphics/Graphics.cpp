#include "graphics/Graphics.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "numeric/Missing.h"
#include "numeric/Rounding.h"

namespace tellurix {

Graphics::Graphics(Host& host, const Regional& regional, const std::filesystem::path& temporaryFolder)
    : picture(looks, fonts), host_(host), regional_(regional), temporaryFolder_(temporaryFolder) {
  fonts.onMissing = [this](const std::string& warning) {
    const NormalPointerHere pointer(host_);
    host_.ShowMessage({.text = warning, .title = "Tellurix Report Generator", .style = WarningIcon});
  };
}

bool Graphics::BeginPicture(bool active) {
  if (active) {
    wasBusy_ = host_.IsBusy();
    host_.SetBusy(true);
  }
  const bool good = active ? picture.Open(Recording(), page) : picture.Close();
  if (active && good) record = {};
  if (!active || !good) host_.SetBusy(wasBusy_);
  if (!good) {
    const NormalPointerHere pointer(host_);
    host_.ShowMessage({.text = "Error creating metafile.", .title = "Tellurix Report Generator", .style = WarningIcon});
  }
  return good;
}

void Graphics::ResetFrame() {
  page.ResetFrame();
  picture.ForgetFonts();
  picture.SelectFont(looks.LabelFont);
}

void Graphics::NoteSeries(std::string name, std::vector<double> values) {
  record.series.push_back({std::move(name), std::move(values)});
}

const SeriesStyle& Graphics::StyleOf(int seriesNumber) const {
  const int number = std::abs(seriesNumber);
  return looks.Series[static_cast<std::size_t>(number <= FramePen ? number : number % SeriesCount)];
}

int Graphics::MarkerRadius() const { return std::max(2, ToInteger(looks.LabelFont.Size / 3.0)); }

void Graphics::DrawPoints(std::span<const double> x, std::span<const double> y, int seriesNumber) {
  const int radius = MarkerRadius();
  for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
    if (x[i] == MissingValue || y[i] == MissingValue) continue;
    DrawMarker(ToInteger(page.MapX(x[i])), ToInteger(page.MapY(y[i])), radius, seriesNumber);
  }
}

void Graphics::DrawLevel(double y) {
  const int at = ToInteger(page.MapY(y));
  Line(page.PlotLeft, at, page.PlotLeft + page.PlotWidth, at);
}

void Graphics::Line(int x0, int y0, int x1, int y1) {
  picture.MoveTo(x0, y0);
  picture.LineTo(x1, y1);
}

void Graphics::DrawMarker(int x, int y, int radius, int seriesNumber, bool keepPen) {
  const SeriesStyle& style = StyleOf(seriesNumber);
  if (!keepPen) picture.SelectPen(style, true);
  const int left = x - radius, right = x + radius, bottom = y - radius, top = y + radius;
  const auto square = [&] {
    const std::array<PagePoint, 5> corners{{{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}}};
    picture.Polygon(corners);
  };
  const auto falling = [&] { Line(left, top, right, bottom); };
  const auto rising = [&] { Line(left, bottom, right, top); };
  switch (style.Shape) {
    case 1:
      square();
      break;
    case 2:
      picture.MoveTo(left, bottom);
      picture.LineTo(x, top);
      picture.LineTo(right, bottom);
      picture.LineTo(left, bottom);
      break;
    case 3:
      Line(left, y, right, y);
      Line(x, bottom, x, top);
      break;
    case 4:
      falling();
      rising();
      break;
    case 5:
      picture.Ellipse(left, top, right, bottom);
      Line(x, bottom, x, top);
      break;
    case 6:
      square();
      falling();
      break;
    case 7:
      square();
      falling();
      rising();
      break;
    case 8:
      Line(left, y, right, y);
      break;
    default:
      picture.Ellipse(left, top, right, bottom);
      break;
  }
}

void Graphics::DrawBox(int left, int top, int right, int bottom) {
  picture.SetBrush();
  const std::array<PagePoint, 5> corners{{{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}}};
  picture.Polygon(corners);
}

void Graphics::DrawDiamond(int x, int y, int halfWidth, bool filled, int halfHeight) {
  if (halfHeight == 0) halfHeight = halfWidth;
  constexpr std::int32_t black = 0;
  filled ? picture.SetBrush(black) : picture.SetBrush();
  const std::array<PagePoint, 5> corners{
      {{x - halfWidth, y}, {x, y + halfHeight}, {x + halfWidth, y}, {x, y - halfHeight}, {x - halfWidth, y}}};
  picture.Polygon(corners);
  picture.SetBrush();
}

}  // namespace tellurix
