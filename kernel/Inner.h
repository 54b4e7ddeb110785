// Pieces that the gamma, beta and Student distributions share; internal to the library.
#pragma once

#include <cmath>
#include <limits>

#include "kernel/Tails.h"

namespace tellurix::kernel {

using i64 = std::int64_t;

inline constexpr f64 Epsilon = std::numeric_limits<f64>::epsilon();
inline constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();
inline constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
// What a function without an ifault answers where its callers look for the system's missing value.
inline constexpr f64 NoValue = 3e300;
inline constexpr f64 InverseSqrtTwoPi = 0.398942280401432677939946;
inline constexpr f64 HalfLogTwoPi = 0.918938533204672741780330;

// Beyond this exponent, exp(-x) is 0.
inline constexpr f64 UnderflowExponent = 746;

// From this exponent on, exp(-x) of a rounded x costs digits: see PowerProduct.
inline constexpr f64 DeepExponent = 20;

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

// A number as the sum of two doubles. Sum and Product are exact, Quotient nearly so: T. J. Dekker (1971), Numerische
// Mathematik 18:224-242.
struct Pair {
  f64 high;
  f64 low;
};

inline Pair Sum(f64 a, f64 b) {
  const f64 high = a + b;
  const f64 part = high - a;
  return {high, (a - (high - part)) + (b - part)};
}

inline Pair Split(f64 x) {
  const f64 scaled = 134217729.0 * x;
  const f64 high = scaled - (scaled - x);
  return {high, x - high};
}

inline Pair Product(f64 x, f64 y) {
  const f64 high = x * y;
  const Pair u = Split(x);
  const Pair v = Split(y);
  return {high, ((u.high * v.high - high) + u.high * v.low + u.low * v.high) + u.low * v.low};
}

inline Pair Product(const Pair& x, const Pair& y) {
  const Pair product = Product(x.high, y.high);
  return {product.high, product.low + (x.high * y.low + x.low * y.high)};
}

inline Pair Quotient(const Pair& x, f64 y) {
  const f64 high = x.high / y;
  const Pair product = Product(high, y);
  return {high, ((x.high - product.high) - product.low + x.low) / y};
}

// u^p v^q e^s, which is to be far below 1 although its factors may overflow: to a few rounding errors where exp() of
// the rounded logarithm would magnify the rounding by its size. NaN where the factors are so large that the logarithm
// is the more precise way.
f64 PowerProduct(const Pair& u, f64 p, const Pair& v, f64 q, const Pair& s);

// e - ln(1 + e), where onePlus is 1 + e as precisely as it is known.
f64 LogDeficit(f64 e, f64 onePlus);

// Most terms of the uniform expansion.
inline constexpr int MostTerms = 31;

// How many terms of the uniform expansion give full precision, with `a` the smaller parameter.
int UniformTerms(f64 a, f64 zeta);

// The smaller tail by Temme's expansion: `exponent` is a zeta^2 / 2 with the sign of zeta telling the side, `decay` is
// exp(-exponent), and coefficients[n] those of zeta/v(zeta) (see UniformCoefficients), `terms` of them.
Tails UniformTails(f64 a, f64 zeta, f64 exponent, f64 decay, const f64* coefficients, int terms);

// The lower and upper tail of the gamma distribution, and x^a e^-x / Gamma(a), which is x times its density.
struct GammaParts {
  Tails tails;
  f64 power;
};
GammaParts GammaAt(f64 a, f64 x);

// The power alone, for 0 < a < infinity and 0 < x < infinity.
f64 GammaPower(f64 a, f64 x);

// The lower and upper tail of the beta distribution, and x^a y^b / B(a, b).
struct BetaParts {
  Tails tails;
  f64 power;
};
BetaParts BetaAt(f64 x, f64 y, f64 a, f64 b);

// The x > 0 with GammaTails(a, x) = wanted, by the smaller of its tails (lower + upper = 1); 0 and infinity at the ends
// of the distribution or of the range of doubles; NaN for an illegal argument.
f64 GammaInverse(f64 a, const Tails& wanted);

// The same for the odds v = x/(1 - x) of the beta distribution with parameters a and b.
f64 BetaOddsInverse(f64 a, f64 b, const Tails& wanted);

inline Tails Swapped(const Tails& tails) { return {tails.upper, tails.lower}; }

}  // namespace tellurix::kernel
