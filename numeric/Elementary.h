// Elementary functions of the system's own.
#pragma once

namespace tellurix {

// exp(x) - 1 without cancellation near 0, for every x.
double ExpMinus1(double x);

}  // namespace tellurix
