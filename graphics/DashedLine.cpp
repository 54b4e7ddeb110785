#include "graphics/DashedLine.h"

#include <algorithm>
#include <cmath>

namespace tellurix {

void DashedLine::Start(PenStyle style, double width) {
  style_ = style;
  width_ = std::max(width, 1.0);
  part_ = 0;
  const auto lengths = DashLengths(style);
  left_ = lengths.empty() ? 0 : lengths[0] * width_;
}

void DashedLine::Walk(DrawPoint from, DrawPoint to, const Dash& draw) {
  const auto lengths = DashLengths(style_);
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  if (lengths.empty()) return draw(from, to);
  const auto at = [&](double way) {
    return DrawPoint{from.x + (to.x - from.x) * way / length, from.y + (to.y - from.y) * way / length};
  };
  for (double way = 0; way < length;) {
    const double end = std::min(way + left_, length);
    if (part_ % 2 == 0) draw(at(way), at(end));
    left_ -= end - way;
    way = end;
    if (way >= length && left_ > 0) break;
    part_ = (part_ + 1) % lengths.size();
    left_ = lengths[part_] * width_;
  }
}

}  // namespace tellurix
