// Quantiles of the chi-square (gamma) and F (beta) distributions.
#include <algorithm>
#include <cmath>

#include "kernel/Inverse.h"
#include "kernel/Quantile.h"

namespace tellurix::kernel {

namespace {

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

// A rough value for the odds x/(1 - x) of the beta distribution, given the normal deviate z of the wanted tails:
// Cochran's approximation for F in the form of Abramowitz & Stegun 26.5.22; with one small parameter the gamma
// distribution; with two the leading term of either tail.
f64 RoughBetaOdds(f64 a, f64 b, const Tails& wanted, f64 z) {
  if (a > 1 && b > 1) {
    const f64 perA = 1 / (2 * a - 1);
    const f64 perB = 1 / (2 * b - 1);
    const f64 h = 2 / (perA + perB);
    const f64 lambda = (z * z - 3) / 6;
    if (h + lambda > 0) {
      const f64 w = z * std::sqrt(h + lambda) / h - (perA - perB) * (lambda + 5.0 / 6 - 2 / (3 * h));
      if (std::fabs(w) < 1.5) return a / b * std::exp(2 * w);
    }
  }
  const f64 least = std::min(a, b);
  const f64 most = std::max(a, b);
  if (most > 2) {
    const f64 x = GammaStart(least, a < b ? wanted : Swapped(wanted));
    const f64 rest = most + (least - 1 - x) / 2;
    if (rest > x / 4) return a < b ? x / rest : rest / x;
  }
  const f64 logB = LogBeta(a, b);
  const f64 low = (std::log(wanted.lower) + std::log(a) + logB) / a;
  const f64 high = -(std::log(wanted.upper) + std::log(b) + logB) / b;
  if (low < -1 && low + high < 0) return std::exp(low);
  return high > 1 ? std::exp(high) : a / b;
}

// The rough value improved by a step of Newton's method on the normal approximation of D. B. Peizer & J. W. Pratt
// (1968), Journal of the American Statistical Association 63:1416-1456.
f64 BetaOddsStart(f64 a, f64 b, const Tails& wanted) {
  const f64 z = Deviate(wanted);
  const f64 v = RoughBetaOdds(a, b, wanted, z);
  if (!(a > 0.7 && b > 0.7 && v > 0 && v < 1e300)) return v;
  const f64 q = v / (1 + v);
  const f64 p = 1 / (1 + v);
  const f64 n = a + b - 1;
  const f64 S = b - 0.5;
  const f64 T = a - 0.5;
  const f64 distance = S - n * p;
  const f64 d = S + 1.0 / 6 - (n + 1.0 / 3) * p + 0.02 * (q / b - p / a + (q - 0.5) / (a + b));
  const f64 scale = 1 / (1 + 1 / (6 * n));
  if (!(std::fabs(distance) > 1e-3 * std::sqrt(n * p * q))) return v;
  const f64 deviance = std::sqrt(2 * scale * (S * std::log(S / (n * p)) + T * std::log(T / (n * q))));
  const f64 reached = d / std::fabs(distance) * deviance;
  const f64 move = (z - reached) / (scale * std::fabs(distance) / deviance);
  return std::fabs(move) < 1 ? v * std::exp(move) : v;
}

}  // namespace

f64 GammaInverse(f64 a, const Tails& wanted) {
  if (!(a > 0 && wanted.lower >= 0 && wanted.upper >= 0) || std::isinf(a)) return NaN;
  if (wanted.lower == 0) return 0;
  if (wanted.upper == 0) return Infinity;
  return Inverse(GammaStart(a, wanted), wanted, [a](f64 v) {
    const GammaParts parts = GammaAt(a, v);
    return Slopes{parts.tails, parts.power, {a - v, -v, -v, -v, -v}};
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
    return LogisticSlopes(parts, x, y, a, b, 1);
  });
}

f64 ChiSquareFromUpperP(f64 p, f64 df) {
  return p >= 0 && p <= 1 && df > 0 ? 2 * GammaInverse(df / 2, {1 - p, p}) : NaN;
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
