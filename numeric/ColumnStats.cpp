#include "numeric/ColumnStats.h"

#include <algorithm>
#include <cmath>

#include "numeric/CompensatedSum.h"
#include "numeric/Missing.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

struct Moments {
  double mean;
  double sumOfSquares;
};

// Those of scale * x, for n values that are not missing; scale is a power of 2.
Moments MomentsOf(std::span<const double> values, std::int32_t n, double scale) {
  CompensatedSum sum;
  for (const double x : values) {
    if (x != MissingValue) sum.Add(x * scale);
  }
  const double mean = sum.Value() / n;
  CompensatedSum squares;
  double deviations = 0;
  for (const double x : values) {
    if (x == MissingValue) continue;
    const double deviation = x * scale - mean;
    squares.Add(deviation * deviation);
    deviations += deviation;
  }
  return {mean, std::max(squares.Value() - deviations * deviations / n, 0.0)};
}

}  // namespace

ColumnStats ComputeColumnStats(std::span<const double> values) {
  std::int32_t n = 0;
  double most = 0;
  double lowest = INFINITY;
  double highest = -INFINITY;
  for (const double x : values) {
    if (x == MissingValue) continue;
    ++n;
    most = std::max(most, std::fabs(x));
    lowest = std::min(lowest, x);
    highest = std::max(highest, x);
  }
  if (n == 0) return {0, MissingValue, 0, MissingValue};

  double scale = 1;
  if (most > 1e140 && std::isfinite(most)) scale = 0x1p-600;
  if (highest - lowest < 1e-140 && most < 1e140) scale = 0x1p500;
  const Moments moments = MomentsOf(values, n, scale);
  const double mean = moments.mean / scale;
  if (n == 1) return {1, mean, 0, MissingValue};
  return {n, mean, moments.sumOfSquares / scale / scale, std::sqrt(moments.sumOfSquares / (n - 1)) / scale};
}

double VarianceOf(const ColumnStats& stats) {
  if (stats.n < 2 || !std::isfinite(stats.sumOfSquares)) return MissingValue;
  return stats.sumOfSquares / (stats.n - 1);
}

std::optional<ColumnStats> StatsFromSummary(double size, double mean, double sd) {
  const std::int32_t n = ToInteger(size);
  if (n < 2 || !(sd > 0)) return std::nullopt;
  return ColumnStats{n, mean, sd * sd * (n - 1), sd};
}

}  // namespace tellurix
