#include "numeric/TwoMeans.h"

#include <algorithm>
#include <cmath>

#include "numeric/Missing.h"
#include "numeric/Probability.h"

namespace tellurix {

namespace {

// Spread that a sample adds to a pooled one.
double SdOrNone(std::int32_t n, double sd) { return n < 2 ? 0 : sd; }

// Standard deviations relative to the larger of them, which is 1 unless both are 0.
struct Relative {
  Relative(double sd1, double sd2) : scale(std::max(sd1, sd2)) {
    if (scale == 0) return;
    first = sd1 / scale;
    second = sd2 / scale;
  }
  double scale;
  double first = 0;
  double second = 0;
};

}  // namespace

MeanDifferenceError EqualVarianceError(std::int32_t n1, double sd1, std::int32_t n2, double sd2) {
  const double df = static_cast<double>(n1) + n2 - 2;
  if (n1 < 1 || n2 < 1 || df < 1) return {MissingValue, MissingValue, MissingValue};
  const Relative sd(SdOrNone(n1, sd1), SdOrNone(n2, sd2));
  const double squares = sd.first * sd.first * (n1 - 1) + sd.second * sd.second * (n2 - 1);
  const double pooledSd = sd.scale * std::sqrt(squares / df);
  return {pooledSd, pooledSd * std::sqrt(1.0 / n1 + 1.0 / n2), df};
}

MeanDifferenceError UnequalVarianceError(std::int32_t n1, double sd1, std::int32_t n2, double sd2) {
  if (n1 < 2 || n2 < 2) return {MissingValue, MissingValue, MissingValue};
  const Relative sd(sd1, sd2);
  const double a = sd.first * sd.first / n1;
  const double b = sd.second * sd.second / n2;
  if (a + b == 0) return {MissingValue, 0, MissingValue};
  const double df = (a + b) * (a + b) / (a * a / (n1 - 1) + b * b / (n2 - 1));
  return {MissingValue, sd.scale * std::sqrt(a + b), df};
}

VarianceRatio CompareVariances(std::int32_t n1, double sd1, std::int32_t n2, double sd2) {
  if (n1 < 2 || n2 < 2 || (sd1 == 0 && sd2 == 0)) return {MissingValue, MissingValue};
  if (sd1 < sd2) {
    std::swap(sd1, sd2);
    std::swap(n1, n2);
  }
  const double ratio = sd1 / sd2;
  const double f = ratio * ratio;
  if (!std::isfinite(f)) return {OverflowMarker, 0};
  return {f, UpperPFromF(f, n1 - 1, n2 - 1)};
}

}  // namespace tellurix
