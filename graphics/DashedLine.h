// Lines of a dashed pen, dash by dash. Word processors differ in what they make of dashed pens (some draw them solid,
// others do so from a width of two on), while short lines look alike everywhere.
#pragma once

#include <functional>

#include "graphics/Drawing.h"

namespace tellurix {

// Walks along a chain of lines; the pattern goes on from line to line.
class DashedLine {
 public:
  // At the start of a chain, with its pen; a width below 1 counts as 1.
  void Start(PenStyle style, double width);

  // The dashes on the way from one point to the next, in their order.
  using Dash = std::function<void(DrawPoint from, DrawPoint to)>;
  void Walk(DrawPoint from, DrawPoint to, const Dash& draw);

 private:
  PenStyle style_ = PenStyle::Solid;
  double width_ = 1;
  std::size_t part_ = 0;  // of the pattern: dashes are even, gaps odd
  double left_ = 0;       // of that part
};

}  // namespace tellurix
