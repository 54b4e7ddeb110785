// Elementary functions and machine constants.
#include <cmath>
#include <limits>

#include "kernel/Kernel.h"

f64 DLNREL(const f64& x) { return std::log1p(x); }

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
