// Student's distribution.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// The beta distribution of df/(df + t^2), parameters df/2 and 1/2: its lower tail is P(|T| > t), its upper one
// P(|T| < t), and its power t times the density of T.
BetaParts StudentAt(f64 t, f64 df) {
  df = std::max(df, 1e-300);  // so that df/2 is no subnormal; the tails are 1/2 all the same
  const f64 odds = t * (t / df);
  if (std::isinf(odds)) {
    // t/sqrt(df) above 1e154: only the leading term is left.
    const f64 logTail = -df * (std::log(t) - 0.5 * std::log(df)) - LogBeta(df / 2, 0.5) - std::log(df / 2);
    const f64 tail = std::min(std::exp(logTail), 1.0);
    return {{tail, 1 - tail}, tail * (df / 2)};
  }
  return BetaAt(1 / (1 + odds), odds / (1 + odds), df / 2, 0.5);
}

// A first value for df >= 1: G. W. Hill (1970), Algorithm 396, Communications of the ACM 13:619-620.
f64 HillStart(f64 p, f64 n) {
  constexpr f64 HalfPi = 1.57079632679489661923132;
  const f64 a = 1 / (n - 0.5);
  const f64 b = 48 / (a * a);
  f64 c = ((20700 * a / b - 98) * a - 16) * a + 96.36;
  const f64 d = ((94.5 / (b + c) - 3) / b + 1) * std::sqrt(a * HalfPi) * n;
  f64 y = std::pow(d * 2 * p, 2 / n);
  if (y > 0.05 + a) {
    i32 ifault = 0;
    const f64 x = GAUINV(p, ifault);
    y = x * x;
    if (n < 5) c += 0.3 * (n - 4.5) * (x + 0.6);
    c += (((0.05 * d * x - 5) * x - 7) * x - 2) * x + b;
    y = (((((0.4 * y + 6.3) * y + 36) * y + 94.5) / c - y - 3) / b + 1) * x;
    y = std::expm1(a * y * y);
  } else {
    y = ((1 / (((n + 6) / (n * y) - 0.089 * d - 0.822) * (n + 2) * 3) + 0.5 / (n + 4)) * y - 1) * (n + 1) / (n + 2) +
        1 / y;
  }
  return std::sqrt(n * y);
}

// A first value for df < 1: the leading term of the far tail, or of the centre.
f64 HeavyStart(f64 p, f64 df) {
  const f64 logB = LogBeta(df / 2, 0.5);
  const f64 logTail = std::log(p * df) + logB;
  if (logTail < -0.7) return std::sqrt(df) * std::exp(-logTail / df);
  return (0.5 - p) * std::sqrt(df) * std::exp(logB);
}

}  // namespace

Tails StudentTails(f64 t, f64 df) {
  if (!(df > 0) || std::isnan(t)) return {NaN, NaN};
  if (std::isinf(df)) return NormalTails(t);
  if (std::isinf(t)) return t < 0 ? Tails{0, 1} : Tails{1, 0};
  const f64 beyond = t == 0 ? 0.5 : StudentAt(std::fabs(t), df).tails.lower / 2;
  return t < 0 ? Tails{beyond, 1 - beyond} : Tails{1 - beyond, beyond};
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 TFROMP(const f64& p, const f64& df) {
  if (!(df > 0 && p >= 0 && p <= 1)) return NaN;
  if (p > 0.5) return -TFROMP(1 - p, df);
  if (p == 0.5) return 0;
  if (p == 0) return Infinity;
  if (df > 1e20) {
    i32 ifault = 0;
    return -GAUINV(p, ifault);
  }

  const bool central = p > 0.25;
  f64 t = df >= 1 ? HillStart(p, df) : HeavyStart(p, df);
  for (int round = 0; round < 100; ++round) {
    // On a fraction of a degree of freedom t may lie beyond every double.
    if (!(t < Infinity)) return Infinity;
    t = std::max(t, std::numeric_limits<f64>::min());
    const BetaParts at = StudentAt(t, df);
    // P(T > t) - p; near the centre by what lies between 0 and t, so that a small t keeps its precision.
    const f64 error = central ? (0.5 - p) - at.tails.upper / 2 : at.tails.lower / 2 - p;
    const f64 step = error / at.power * t;  // over the density, which may underflow
    const f64 slope = (df + 1) / (t + df / t);
    const f64 size = std::fabs(step) * (slope + 1 / t);
    if (size < 0.2) {
      // The series of the inverse function, to the third order.
      const f64 odds = t * (t / df);
      const f64 bend = slope / t * (std::isinf(odds) ? -1 : (1 - odds) / (1 + odds));
      t += step * (1 + step * (slope / 2 + step * (2 * slope * slope + bend) / 6));
      if (size < 1.5e-4) break;
    } else {
      // Far off: Newton's step between the logarithms, which are nearly in proportion in both tails.
      const f64 reached = central ? at.tails.upper / 2 : at.tails.lower / 2;
      const f64 wanted = central ? 0.5 - p : p;
      const f64 logStep = std::log(reached / wanted) * (reached / at.power);
      t *= std::exp(std::clamp(central ? -logStep : logStep, -20.0, 20.0));
    }
  }
  return t;
}
