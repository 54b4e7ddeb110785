// Expected values of normal order statistics.
#pragma once

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// EXPNOS for the orders 1 .. n at once into `scores`; nothing for n below 1.
//
// The density of an order statistic is log-concave, analytic and falls off at least exponentially, so the trapezoidal
// rule with a quarter of its width as step is precise to the last digits (L. N. Trefethen & J. A. C. Weideman 2014,
// SIAM Review 56:385-458). Dividing by the sum of the density itself spares the binomial coefficient.
TELLURIX_KERNEL void ExpectedNormalScores(i32 n, f64* scores);

// EXPNOS for a rank that may lie between two orders, as the mean rank of tied values does, 1 <= rank <= n: the mean of
// the density in proportion to F(x)^(rank - 1) (1 - F(x))^(n - rank) f(x), F and f being those of the normal
// distribution; otherwise NaN.
TELLURIX_KERNEL f64 ExpectedNormalScore(f64 n, f64 rank);

}  // namespace tellurix::kernel
