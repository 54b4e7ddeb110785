#include "numeric/Power.h"

#include <cmath>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/TwoMeans.h"

namespace tellurix {

namespace {

// The power at an effect of `shift` standard errors.
double TwoSidedPower(double alpha, double shift, double df) {
  const double critical = TFROMP(alpha / 2, df);
  // 1 - U(x) is U(-x): no small power is lost in the difference from 1.
  const double below = UpperPFromT(critical - shift, df);
  const double above = UpperPFromT(critical + shift, df);
  if (!std::isfinite(critical) || below == MissingValue || above == MissingValue) return MissingValue;
  return below + above;
}

bool IsLegal(double alpha, double d, double s) {
  return alpha > 0 && alpha < 1 && d != MissingValue && s != MissingValue && s > 0;
}

}  // namespace

double PowerOneSample(double alpha, double d, double s, std::int32_t n) {
  if (!IsLegal(alpha, d, s) || n < 2) return MissingValue;
  return TwoSidedPower(alpha, d / (s / std::sqrt(n)), n - 1);
}

double PowerTwoSample(double alpha, double d, double s, std::int32_t n, double r) {
  const double df = (r + 1) * n - 2;
  if (!IsLegal(alpha, d, s) || r == MissingValue || !(r > 0) || !(df >= 1)) return MissingValue;
  return TwoSidedPower(alpha, d / s / std::sqrt((1 / r + 1) / n), df);
}

double PowerUnequalVariance(double alpha, double d, std::int32_t n1, std::int32_t n2, double s1, double s2) {
  if (s1 == MissingValue || s2 == MissingValue || s1 < 0 || s2 < 0) return MissingValue;
  if (!IsLegal(alpha, d, s1 + s2) || n1 < 2 || n2 < 2) return MissingValue;
  const MeanDifferenceError error = UnequalVarianceError(n1, s1, n2, s2);
  const double critical = TFROMP(alpha / 2, error.df);
  return std::isfinite(critical) ? UpperPFromT(critical - d / error.standardError, error.df) : MissingValue;
}

}  // namespace tellurix
