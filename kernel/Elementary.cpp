// Elementary functions and machine constants.
#include <cmath>
#include <limits>

#include "kernel/Kernel.h"

// The logarithm of the rounded 1 + x, and what the rounding left out over its derivative.
f64 DLNREL(const f64& x) {
  if (!(x > -1 && x < 1e15)) return std::log1p(x);
  const f64 sum = 1 + x;
  return std::log(sum) + (x - (sum - 1)) / sum;
}

f64 DPMACH(const i32& job) {
  using Limits = std::numeric_limits<f64>;
  switch (job) {
    case 1:
      return Limits::epsilon();
    case 2:
      return Limits::min();
    case 3:
      return Limits::max();
    default:
      return 0;
  }
}
