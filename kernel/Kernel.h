// The flat numeric library: published algorithms under upper-case names, callable from any language.
//
// Calling convention, the same for every function here:
//   - every argument is passed by reference, scalars too: f64 is a double, i32 a 32-bit signed integer;
//   - an array is a reference to its first element with its length beside it; of two indices the first runs fastest;
//   - a function that can fail has a trailing `ifault`: the caller sets it to 0, anything else on return means that the
//     result must not be used;
//   - nothing is reported to a user, nothing is allocated, no state is held.
#pragma once

#include <cstdint>

#define TELLURIX_KERNEL __attribute__((visibility("default")))

using f64 = double;
using i32 = std::int32_t;

extern "C" {

// Lower tail of the standard normal distribution, P(Z <= x), for every x; 0 below about -38.5. NaN for NaN.
// Name and purpose of algorithm AS 66 (Hill 1973, Applied Statistics 22:424-427).
TELLURIX_KERNEL f64 ALNORM(const f64& x);

// The normal deviate z with ALNORM(z) = p, for p strictly between 0 and 1; otherwise ifault is 1 and the result 0.
// Name and purpose of algorithm AS 70 (Odeh & Evans 1974, Applied Statistics 23:96-97).
TELLURIX_KERNEL f64 GAUINV(const f64& p, i32& ifault);

// The value t of Student's distribution on df degrees of freedom (above 0, fractional allowed) with P(T > t) = p.
// Meant for p in (0, 0.5], where the result is at least 0; above 0.5 it is the negative value of symmetry. Infinite for
// p = 0 or 1, or beyond the largest double; NaN for an illegal argument.
TELLURIX_KERNEL f64 TFROMP(const f64& p, const f64& df);

// The regularized incomplete beta function I_x(p, q) for x in [0, 1], p > 0, q > 0; otherwise ifault is not 0.
// Name and purpose of algorithm AS 63 (Majumder & Bhattacharjee 1973, Applied Statistics 22:409-411), with the
// logarithm of the complete beta function worked out inside.
TELLURIX_KERNEL f64 BETAIN(const f64& x, const f64& p, const f64& q, i32& ifault);

// The regularized lower incomplete gamma integral P(p, x) for x >= 0 and shape p > 0; otherwise ifault is not 0.
// Name and purpose of algorithm AS 239 (Shea 1988, Applied Statistics 37:466-473).
TELLURIX_KERNEL f64 GAMMAD(const f64& x, const f64& p, i32& ifault);

// --- distributions and their inverses ---

// --- exact distributions of rank statistics ---

// --- studentized range and multiple comparisons ---

// --- ranks and sorting ---

// --- least squares and matrices ---

// --- conditional likelihood and exact tables ---

// --- curves ---

// --- random numbers ---

}  // extern "C"
