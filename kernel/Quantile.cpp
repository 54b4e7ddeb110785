// Quantiles of the chi-square (gamma) and F (beta) distributions.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// A distribution function P at v, looked at as a function of u = ln v.
struct Slopes {
  Tails tails;
  f64 power;  // dP/du
  f64 bend;   // d ln power / du
  f64 curl;   // the derivative of bend
};

// The v > 0 whose tails are the wanted ones, by the series of the inverse function to the third order in ln v; far from
// it by Newton's steps between the logarithms of the smaller tail, which are nearly in proportion at both ends; by
// bisection where those leave what is known to hold the answer. 0 or infinity beyond the range of doubles.
template <typename At>
f64 Inverse(f64 v, const Tails& wanted, At at) {
  const bool byLower = wanted.lower <= wanted.upper;
  const f64 target = byLower ? wanted.lower : wanted.upper;
  const f64 away = byLower ? 1 : -1;
  f64 low = 0;
  f64 high = Infinity;
  if (!(v > 0)) v = std::numeric_limits<f64>::min();
  if (!(v < Infinity)) v = std::numeric_limits<f64>::max();
  for (int round = 0; round < 3000; ++round) {
    const Slopes here = at(v);
    const f64 reached = byLower ? here.tails.lower : here.tails.upper;
    const f64 excess = away * (reached - target);
    if (excess == 0) return v;
    (excess > 0 ? high : low) = v;
    const f64 step = -excess / here.power;
    const f64 size = std::fabs(step) * (std::fabs(here.bend) + std::sqrt(std::fabs(here.curl)));
    f64 move = step * (1 - step * (here.bend / 2 - step * (2 * here.bend * here.bend - here.curl) / 6));
    if (!(size < 0.2)) move = away * std::log(target / reached) * (reached / here.power);
    f64 next = v * std::exp(move);
    if (!(next > low && next < high)) {
      // The series may step over a bound by a rounding error only: then v is the answer.
      if (size < 1e-14) return v;
      if (low == 0) {
        next = high * 1e-9;
      } else {
        next = high == Infinity ? low * 1e9 : std::sqrt(low) * std::sqrt(high);
      }
      if (next == 0 || next == Infinity || !(next > low && next < high)) return next;
    } else if (size < 1.5e-4) {
      return next;
    }
    v = next;
  }
  return v;
}

// The upper-tail normal deviate of given tails.
f64 Deviate(const Tails& tails) {
  i32 ifault = 0;
  return tails.lower <= tails.upper ? GAUINV(tails.lower, ifault) : -GAUINV(tails.upper, ifault);
}

// A first value for the gamma distribution: the leading term of either tail where it holds, otherwise the cube of
// E. B. Wilson & M. M. Hilferty (1931); choices after D. J. Best & D. E. Roberts (1975), Algorithm AS 91, Applied
// Statistics 24:385-388.
f64 GammaStart(f64 a, const Tails& wanted) {
  const f64 logLower = std::log(wanted.lower);
  const f64 logGammaOnePlus = LogGammaOnePlus(a);
  if (a < -0.62 * logLower) {
    const f64 v = std::exp((logLower + logGammaOnePlus) / a);
    if (v < 0.5 * (a + 1)) return v * (1 + v / (a + 1));
  }
  const f64 spread = 1 / (9 * a);
  const f64 root = 1 - spread + Deviate(wanted) * std::sqrt(spread);
  const f64 cube = a * root * root * root;
  if (cube < 2.2 * a + 3 && root > 0) return cube;
  const f64 logUpper = std::log(wanted.upper);
  const f64 guess = root > 0 ? cube : 1;
  return std::max(-(logUpper - (a - 1) * std::log(guess) + logGammaOnePlus - std::log(a)), 0.5 * guess);
}

// A first value for the odds x/(1 - x) of the beta distribution: the leading term of either tail, or Cochran's
// approximation for F in the form of Abramowitz & Stegun 26.6.16 by 26.5.22.
f64 BetaOddsStart(f64 a, f64 b, const Tails& wanted) {
  if (a > 1 && b > 1) {
    const f64 z = Deviate(wanted);
    const f64 perA = 1 / (2 * a - 1);
    const f64 perB = 1 / (2 * b - 1);
    const f64 h = 2 / (perA + perB);
    const f64 lambda = (z * z - 3) / 6;
    if (h + lambda > 0) {
      const f64 w = z * std::sqrt(h + lambda) / h - (perA - perB) * (lambda + 5.0 / 6 - 2 / (3 * h));
      if (std::fabs(w) < 1.5) return a / b * std::exp(2 * w);
    }
  }
  const f64 logB = LogBeta(a, b);
  const f64 low = (std::log(wanted.lower) + std::log(a) + logB) / a;
  const f64 high = -(std::log(wanted.upper) + std::log(b) + logB) / b;
  if (low < -1 && low + high < 0) return std::exp(low);
  return high > 1 ? std::exp(high) : a / b;
}

}  // namespace

f64 GammaInverse(f64 a, const Tails& wanted) {
  if (!(a > 0 && wanted.lower >= 0 && wanted.upper >= 0) || std::isinf(a)) return NaN;
  if (wanted.lower == 0) return 0;
  if (wanted.upper == 0) return Infinity;
  return Inverse(GammaStart(a, wanted), wanted, [a](f64 v) {
    const GammaParts parts = GammaAt(a, v);
    return Slopes{parts.tails, parts.power, a - v, -v};
  });
}

f64 BetaOddsInverse(f64 a, f64 b, const Tails& wanted) {
  if (!(a > 0 && b > 0 && wanted.lower >= 0 && wanted.upper >= 0) || std::isinf(a) || std::isinf(b)) return NaN;
  if (wanted.lower == 0) return 0;
  if (wanted.upper == 0) return Infinity;
  return Inverse(BetaOddsStart(a, b, wanted), wanted, [a, b](f64 v) {
    const f64 y = 1 / (1 + v);
    const f64 x = v < 1 ? v * y : 1 / (1 + 1 / v);
    const BetaParts parts = BetaAt(x, y, a, b);
    return Slopes{parts.tails, parts.power, a * y - b * x, -(a + b) * x * y};
  });
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 PPCHI2(const f64& p, const f64& df, i32& ifault) {
  const f64 x = p >= 0 && p < 1 && df > 0 ? 2 * GammaInverse(df / 2, {p, 1 - p}) : NaN;
  ifault = std::isfinite(x) ? 0 : 1;
  return ifault != 0 ? 0 : x;
}

f64 FFROMP(const f64& dfd, const f64& dfn, const f64& p) {
  if (!(p >= 0 && p <= 1)) return NoValue;
  const f64 f = BetaOddsInverse(dfn / 2, dfd / 2, {1 - p, p}) * (dfd / dfn);
  return std::isfinite(f) ? f : NoValue;
}
