#include "numeric/Elementary.h"

#include <cmath>

#include "kernel/Kernel.h"

namespace tellurix {

double ExpMinus1(double x) {
  const double size = std::fabs(x);
  if (size < 2.22e-16) return x;
  if (!(size <= 0.697)) return std::exp(x) - 1;
  const double y = size > 1e-8 ? std::exp(x) - 1 : (x / 2 + 1) * x;
  // One step of Newton's method on ln(1 + y) = x.
  return y - (1 + y) * (DLNREL(y) - x);
}

}  // namespace tellurix
