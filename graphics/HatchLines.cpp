#include "graphics/HatchLines.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "numeric/Rounding.h"

namespace tellurix {

namespace {

// Lines x * across + y * up = level, in steps of `step`.
struct Family {
  int across;
  int up;
  double step;
};

std::vector<Family> FamiliesOf(Hatch hatch, double spacing) {
  const Family horizontal{0, 1, spacing}, vertical{1, 0, spacing};
  const Family rising{-1, 1, spacing * std::numbers::sqrt2}, falling{1, 1, spacing * std::numbers::sqrt2};
  switch (hatch) {
    case Hatch::Horizontal:
      return {horizontal};
    case Hatch::Vertical:
      return {vertical};
    case Hatch::Backward:
      return {falling};
    case Hatch::Forward:
      return {rising};
    case Hatch::Cross:
      return {horizontal, vertical};
    default:
      return {rising, falling};
  }
}

}  // namespace

std::vector<std::pair<PagePoint, PagePoint>> HatchLines(std::span<const PagePoint> polygon, Hatch hatch, int spacing) {
  std::vector<std::pair<PagePoint, PagePoint>> lines;
  if (polygon.size() < 3 || spacing < 1) return lines;
  for (const Family& family : FamiliesOf(hatch, spacing)) {
    const auto level = [&](const PagePoint& p) { return static_cast<double>(family.across) * p.x + family.up * p.y; };
    const auto along = [&](const DrawPoint& p) { return family.up * p.x - family.across * p.y; };
    const auto [lowest, highest] =
        std::ranges::minmax_element(polygon, [&](const auto& a, const auto& b) { return level(a) < level(b); });
    std::vector<DrawPoint> crossings;
    for (double at = std::ceil(level(*lowest) / family.step) * family.step; at < level(*highest); at += family.step) {
      crossings.clear();
      for (std::size_t i = 0; i < polygon.size(); ++i) {
        const PagePoint& a = polygon[i];
        const PagePoint& b = polygon[(i + 1) % polygon.size()];
        if ((level(a) <= at) == (level(b) <= at)) continue;
        const double share = (at - level(a)) / (level(b) - level(a));
        crossings.push_back({a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)});
      }
      std::ranges::sort(crossings, [&](const auto& a, const auto& b) { return along(a) < along(b); });
      for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        lines.push_back({{ToInteger(crossings[i].x), ToInteger(crossings[i].y)},
                         {ToInteger(crossings[i + 1].x), ToInteger(crossings[i + 1].y)}});
      }
    }
  }
  return lines;
}

}  // namespace tellurix
