// Inverses that the flat interface has for the other tail only.
#pragma once

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// The x of chi-square on df > 0 degrees of freedom with P(X > x) = p, precise however small p is. 0 for p = 1, infinite
// for p = 0; NaN for an illegal argument.
TELLURIX_KERNEL f64 ChiSquareFromUpperP(f64 p, f64 df);

}  // namespace tellurix::kernel
