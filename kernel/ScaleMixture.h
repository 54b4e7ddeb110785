// Statistics divided by a common estimate of the standard deviation: the mean of a tail over the distribution of S,
// where df S^2 is chi-square on df degrees of freedom, and the inverse of such a tail. Internal to the library.
#pragma once

#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

// A value of S, by the variable z in which the density of ln S is a normal one times `slope`.
struct ScalePoint {
  f64 s;
  f64 slope;
};

// Solves (s^2 - 1 - ln s^2) = zeta^2 / 2 for s on the side of the sign of zeta; slope is zeta / (s^2 - 1).
inline ScalePoint ScaleAt(f64 zeta) {
  const f64 target = zeta * zeta / 2;
  if (target < 1e-300) return {1, 1};
  if (zeta < -1) {
    // By y = ln s^2, lest s^2 lose its precision as it goes to 0.
    f64 y = std::expm1(-1 - target) - target;
    for (int round = 0; round < 20; ++round) {
      const f64 e = std::expm1(y);
      const f64 step = (e - y - target) / e;
      y -= step;
      if (std::fabs(step) < 1e-8 * std::fabs(y)) break;
    }
    return {std::exp(y / 2), zeta / std::expm1(y)};
  }
  f64 e = zeta * (1 + zeta * (1.0 / 3 + zeta / 36));
  for (int round = 0; round < 20; ++round) {
    const f64 step = (LogDeficit(e, 1 + e) - target) * (1 + e) / e;
    e -= step;
    if (std::fabs(step) < 1e-8 * std::fabs(e)) break;
  }
  return {std::sqrt(1 + e), zeta / e};
}

// The mean of P(X > x S), X falling off about as exp(-rate X^2): `tail(w)` gives exp(rate w^2) P(X > w), w >= 0.
//
// The exponential joins the density of S, which keeps its form on another scale, 1/sqrt(1 + 2 rate x^2 / df): so what
// is left varies slowly, and small tails keep their relative precision. S is then replaced by the variable in which its
// density is normal (N. M. Temme 1982, SIAM Journal on Mathematical Analysis 13:239-253), where the trapezoidal rule
// converges exponentially.
//
// `width` is the distance over which P(X > w) falls: it sets the step.
template <typename Tail>
f64 ScaleMixture(f64 x, f64 df, f64 rate, f64 width, Tail tail) {
  if (df > 1e20) {
    const f64 exponent = rate * x * x;
    return exponent > 2 * UnderflowExponent ? 0 : tail(x) * std::exp(-exponent);
  }
  const f64 unit = std::sqrt(df / (2 * rate));
  const f64 ratio = x / unit;
  const f64 exponent = df * (ratio > 1e8 ? std::log(ratio) : std::log1p(ratio * ratio) / 2);
  if (exponent > UnderflowExponent + 40) return 0;
  const f64 centre = 1 / std::hypot(1 / x, 1 / unit);  // x times the new scale

  const f64 zetaPerZ = std::sqrt(2 / df);
  const f64 step = std::min(0.8 / std::hypot(1, centre / (width * std::sqrt(2 * df))), 0.35 * std::sqrt(df));
  const auto term = [&](f64 z) {
    const ScalePoint at = ScaleAt(z * zetaPerZ);
    return std::exp(-z * z / 2) * at.slope * tail(centre * at.s);
  };
  f64 sum = term(0);
  for (const f64 direction : {step, -step}) {
    f64 previous = 0;
    for (int i = 1; i < 1000; ++i) {
      const f64 value = term(direction * i);
      sum += value;
      if (value <= previous && value < 1e-13 * sum) break;
      previous = value;
    }
  }
  return InverseSqrtTwoPi * step * sum * std::exp(-exponent - StirlingRemainder(df / 2));
}

// The x with tail(x) = p for a tail that falls from 1 to 0 over the positive x, by the secant method between the logits
// over ln x, which are nearly straight at both ends; halving where that leaves the bracket. 0 < p < 1; NoValue when the
// root lies beyond the doubles.
template <typename Tail>
f64 InverseTail(f64 p, f64 start, Tail tail) {
  const f64 wanted = std::log(p) - std::log1p(-p);
  const auto error = [&](f64 logX) {
    const f64 reached = tail(std::exp(logX));
    return std::log(reached) - std::log1p(-reached) - wanted;  // falls with x; infinite at the ends
  };
  constexpr f64 Limit = 345;  // of ln x, so that x^2 stays a double
  constexpr f64 MostStep = 1;
  if (!(start > 0)) return NoValue;
  f64 low = -Limit;
  f64 high = Limit;
  f64 older = std::clamp(std::log(start), -Limit, Limit);
  f64 olderError = error(older);
  f64 newer = older + std::clamp(olderError * 0.1, -0.2, 0.2);
  for (int round = 0; round < 200; ++round) {
    if (olderError == 0) return std::exp(older);
    (olderError > 0 ? low : high) = older;
    if (high - low < 1e-15 * std::max(1.0, std::fabs(low))) break;
    if (!(newer > low && newer < high)) newer = (std::max(low, older - 20) + std::min(high, older + 20)) / 2;
    const f64 newerError = error(newer);
    const f64 slope = (newerError - olderError) / (newer - older);
    // An infinite error leaves it to the halving.
    const f64 step = std::isfinite(slope) && slope != 0 ? std::clamp(-newerError / slope, -MostStep, MostStep) : 0;
    const f64 next = newer + step;
    const bool settled = newerError == 0 || (step != 0 && std::fabs(step) < 1e-9);  // the next would be its square
    older = newer;
    olderError = newerError;
    newer = next;
    if (settled) break;
  }
  return std::fabs(newer) < Limit - 1 ? std::exp(newer) : NoValue;
}

}  // namespace tellurix::kernel
