// A hatch drawn line by line. Viewers of metafiles differ in what they make of hatched brushes (some fill solid,
// printers draw them in their own dots), while lines look alike everywhere.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "graphics/Drawing.h"

namespace tellurix {

struct PagePoint {
  std::int32_t x = 0;
  std::int32_t y = 0;

  bool operator==(const PagePoint&) const = default;
};

// The lines of a hatch inside a polygon (by the odd-even rule), `spacing` page units apart, y upward. They lie on one
// grid for the whole page, so that neighbouring shapes join.
std::vector<std::pair<PagePoint, PagePoint>> HatchLines(std::span<const PagePoint> polygon, Hatch hatch, int spacing);

}  // namespace tellurix
