#include "numeric/Power.h"

#include <cmath>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"
#include "numeric/Probability.h"

namespace tellurix {

double PowerOneSample(double alpha, double d, double s, std::int32_t n) {
  if (alpha == MissingValue || d == MissingValue || s == MissingValue || s == 0 || n < 2) return MissingValue;
  const double df = n - 1;
  const double critical = TFROMP(alpha / 2, df);
  const double standardError = s / std::sqrt(n);
  const double w = critical * standardError;
  // 1 - U(x) is U(-x): no small power is lost in the difference from 1.
  const double below = UpperPFromT(-(d - w) / standardError, df);
  const double above = UpperPFromT((d + w) / standardError, df);
  if (!std::isfinite(critical) || below == MissingValue || above == MissingValue) return MissingValue;
  return below + above;
}

}  // namespace tellurix
