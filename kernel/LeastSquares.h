// C++ companions of the least squares functions.
#pragma once

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// The powers 1 .. degree of x, each a column of `rows` values, as pairs of words for GlsqrData's design and designLow:
// a polynomial fitted to them suffers only from the rounding of x itself.
TELLURIX_KERNEL void PowerColumns(const f64* x, i32 rows, i32 degree, f64* high, f64* low);

}  // namespace tellurix::kernel
