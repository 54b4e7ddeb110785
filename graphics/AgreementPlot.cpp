#include "graphics/AgreementPlot.h"

#include <algorithm>

namespace tellurix {

void SetAgreementLimits(Page& page, const AgreementPlot& plot) {
  const auto [xLow, xHigh] = std::ranges::minmax(plot.means);
  const auto [yLow, yHigh] = std::ranges::minmax(plot.differences);
  page.XLow = xLow;
  page.XHigh = xHigh;
  page.YLow = std::min(yLow, plot.lowerLimit);
  page.YHigh = std::max(yHigh, plot.upperLimit);
}

void DrawAgreementPlot(Graphics& graphics, const AgreementPlot& plot) {
  constexpr std::int32_t solid = 0, dashes = 1;
  constexpr int bothNumeric = 3;
  graphics.DrawFrame(true, plot.title, -bothNumeric);
  graphics.DrawAxisTitleX(plot.xTitle);
  graphics.DrawAxisTitleY(plot.yTitle);
  const auto line = [&](double value, std::int32_t style) {
    SeriesStyle pen = graphics.looks.Series[FramePen];
    pen.Style = style;
    graphics.picture.SelectPen(pen);
    graphics.DrawLevel(value);
  };
  line(plot.lowerLimit, dashes);
  line(plot.upperLimit, dashes);
  line(plot.meanDifference, solid);
  graphics.DrawPoints(plot.means, plot.differences, 0);
  graphics.NoteSeries(plot.xTitle, plot.means);
  graphics.NoteSeries(plot.yTitle, plot.differences);
  graphics.NoteSeries("mean difference", {plot.meanDifference});
  graphics.NoteSeries("limits of agreement", {plot.lowerLimit, plot.upperLimit});
}

}  // namespace tellurix
