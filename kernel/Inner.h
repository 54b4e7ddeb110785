// Pieces that the gamma, beta and Student distributions share; internal to the library.
#pragma once

#include <cmath>
#include <limits>

#include "kernel/Tails.h"

namespace tellurix::kernel {

inline constexpr f64 Epsilon = std::numeric_limits<f64>::epsilon();
inline constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();
inline constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
inline constexpr f64 InverseSqrtTwoPi = 0.398942280401432677939946;
inline constexpr f64 HalfLogTwoPi = 0.918938533204672741780330;

// Beyond this exponent, exp(-x) is 0.
inline constexpr f64 UnderflowExponent = 746;

// From this argument on, Stirling's series is precise to the last bit.
inline constexpr f64 StirlingFrom = 12;

// 1/Gamma(1 + x) for 0 <= x <= 25.
f64 InverseGammaOnePlus(f64 x);

// The Stirling remainder for a >= StirlingFrom.
inline f64 StirlingSeries(f64 a) {
  const f64 s = 1 / (a * a);
  // B(2k) / (2k (2k - 1)), DLMF 5.11.1.
  return (1.0 / 12 -
          s * (1.0 / 360 -
               s * (1.0 / 1260 - s * (1.0 / 1680 - s * (1.0 / 1188 - s * (691.0 / 360360 - s * (1.0 / 156))))))) /
         a;
}

// e - ln(1 + e), where onePlus is 1 + e as precisely as it is known.
f64 LogDeficit(f64 e, f64 onePlus);

// Most terms of the uniform expansion.
inline constexpr int MostTerms = 31;

// How many terms of the uniform expansion give full precision, with `a` the smaller parameter.
int UniformTerms(f64 a, f64 zeta);

// The smaller tail by Temme's expansion: `exponent` is a zeta^2 / 2 with the sign of zeta telling the side, and
// coefficients[n] those of zeta/v(zeta) (see UniformCoefficients), `terms` of them.
Tails UniformTails(f64 a, f64 zeta, f64 exponent, const f64* coefficients, int terms);

// The lower and upper tail of the beta distribution, and x^a y^b / B(a, b).
struct BetaParts {
  Tails tails;
  f64 power;
};
BetaParts BetaAt(f64 x, f64 y, f64 a, f64 b);

inline Tails Swapped(const Tails& tails) { return {tails.upper, tails.lower}; }

}  // namespace tellurix::kernel
