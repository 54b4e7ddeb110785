// First and second moments of a column.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace tellurix {

struct ColumnStats {
  std::int32_t n;       // observations that are not missing
  double mean;          // MissingValue with none
  double sumOfSquares;  // of the deviations from the mean; 0 with fewer than two
  double sd;            // root of sumOfSquares/(n - 1); MissingValue with fewer than two
};

// The mean by a compensated sum (A. Neumaier 1974, Zeitschrift fuer angewandte Mathematik und Mechanik 54:39-51), the
// squares in a second pass with the correction for the rounding of the mean (Chan, Golub & LeVeque 1983, The American
// Statistician 37:242-247). Values so large or small that sums or squares leave the range of doubles are scaled
// on the way; then only a sumOfSquares that is itself too large becomes infinite.
ColumnStats ComputeColumnStats(std::span<const double> values);

// sumOfSquares/(n - 1); MissingValue with fewer than two and beyond the range of doubles.
double VarianceOf(const ColumnStats& stats);

// The same as of a column from figures that were typed in: a size, rounded to an integer, of at least 2, and a standard
// deviation above 0. Nothing otherwise.
std::optional<ColumnStats> StatsFromSummary(double size, double mean, double sd);

}  // namespace tellurix
