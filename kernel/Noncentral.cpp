// The non-central t and chi-square distributions.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"
#include "kernel/Root.h"

namespace tellurix::kernel {

namespace {

constexpr f64 Negligible = 1e-18;

// lambda^s e^-lambda / Gamma(s + 1), the Poisson probability carried on to s between the integers.
f64 PoissonWeight(f64 s, f64 lambda) { return s == 0 ? std::exp(-lambda) : GammaPower(s, lambda) / s; }

// The counts beyond which the Poisson probabilities of a mean are negligible.
f64 FirstCount(f64 mean) { return std::max(0.0, std::floor(mean - 9 * std::sqrt(mean) - 2)); }
f64 LastCount(f64 mean) { return std::ceil(mean + 8.5 * std::sqrt(mean) + 14); }

// The sum over s = first, first + 1, ... of PoissonWeight(s) times a tail that grows with s: `tail` is its value at
// `first`, `term` what it grows by there, and ratio(s) the next term over this one.
template <typename Ratio>
f64 SumUp(f64 first, f64 lambda, f64 tail, f64 term, Ratio ratio) {
  f64 weight = PoissonWeight(first, lambda);
  f64 sum = 0;
  for (f64 s = first;; s += 1) {
    sum += weight * tail;
    if (s > lambda && weight <= Negligible * sum) return sum;
    if (s > lambda && weight < 1e-300) return sum;
    tail = std::min(tail + term, 1.0);
    term *= ratio(s);
    weight *= lambda / (s + 1);
  }
}

// The same over s = last, last - 1, ..., where the tail grows as s falls, down to `end` or the negligible.
template <typename Ratio>
f64 SumDown(f64 last, f64 end, f64 lambda, f64 tail, f64 term, Ratio ratio) {
  const f64 perLambda = 1 / lambda;
  f64 weight = PoissonWeight(last, lambda);
  f64 sum = 0;
  for (f64 s = last; s >= end; s -= 1) {
    sum += weight * tail;
    if (s < lambda && weight <= Negligible * sum) break;
    tail = std::min(tail + term, 1.0);
    term *= ratio(s);
    weight *= s * perLambda;
  }
  return sum;
}

// --- t ---

// Beyond this non-centrality the series gives way to integration.
constexpr f64 SeriesDelta = 40;

// Where the lower tail lies, t > 0. R. V. Lenth (1989), Algorithm AS 243, Applied Statistics 38:185-189; summed from
// the middle as in D. Benton & K. Krishnamoorthy (2003), Computational Statistics & Data Analysis 43:249-267. The two
// sums of the series are one over whole and half s: the incomplete beta functions with parameter s + 1/2.
struct TSeries {
  f64 x;  // t^2/(df + t^2)
  f64 y;
  f64 b;  // df/2
  f64 lambda;

  // Sum of PoissonWeight(s) I_x(s + 1/2, b) over s = end, end + 1, ...
  f64 Lower(f64 end) const {
    f64 last = LastCount(lambda) + end;
    BetaParts parts = BetaAt(x, y, last + 0.5, b);
    // From a tail that has underflowed no recurrence comes back; the terms above it are smaller still.
    while (parts.power < 1e-290 && last > end) {
      last = std::floor((last - end) / 2) + end;
      parts = BetaAt(x, y, last + 0.5, b);
    }
    const f64 a = last + 0.5;
    const f64 term = a > 1 ? parts.power / ((a + b - 1) * x) : 0;
    const f64 perX = 1 / x;
    return SumDown(last, end, lambda, parts.tails.lower, term,
                   [this, perX](f64 s) { return s > 1 ? (s - 0.5) / (s + b - 1.5) * perX : 0; });
  }

  // Sum of PoissonWeight(s) I_y(b, s + 1/2) over s = begin, begin + 1, ...
  f64 Upper(f64 begin) const {
    const f64 first = FirstCount(lambda) + begin;
    const f64 a = first + 0.5;
    const BetaParts parts = BetaAt(x, y, a, b);
    return SumUp(first, lambda, parts.tails.upper, parts.power / a,
                 [this](f64 s) { return x * (s + 0.5 + b) / (s + 1.5); });
  }
};

Tails FromLower(f64 lower) { return {std::clamp(lower, 0.0, 1.0), std::clamp(1 - lower, 0.0, 1.0)}; }
Tails FromUpper(f64 upper) { return Swapped(FromLower(upper)); }

Tails SeriesTails(f64 t, f64 df, f64 delta) {
  const f64 odds = t * (t / df);
  const TSeries series{odds < 1 ? odds / (1 + odds) : 1 / (1 + 1 / odds), std::max(1 / (1 + odds), 1e-300), df / 2,
                       delta * delta / 2};
  const f64 sign = delta < 0 ? -1 : 1;
  if (t < delta) {
    const f64 below = NormalTails(delta).upper;
    if (series.x < 1e-300) return FromLower(below);
    return FromLower(below + 0.5 * (series.Lower(0) + sign * series.Lower(0.5)));
  }
  return FromUpper(0.5 * (series.Upper(0) + sign * series.Upper(0.5)));
}

// For delta beyond SeriesDelta, t > 0: P(Z < t S - delta) with S^2 a mean square on df degrees of freedom. Where S
// hardly varies, t S - delta is normal; otherwise integrated over Z by the trapezoidal rule, which converges
// geometrically for such a function.
Tails IntegralTails(f64 t, f64 df, f64 delta) {
  const f64 spread = t / std::sqrt(2 * df);
  if (!(spread > 0.01)) return NormalTails((t * (1 - 0.25 / df) - delta) / std::hypot(1, spread));
  constexpr f64 Widest = 9;
  const int steps = static_cast<int>(Widest / 0.5 * std::hypot(1, 1 / spread));
  const f64 width = Widest / steps;
  Tails sum{0, 0};
  for (int i = -steps; i <= steps; ++i) {
    const f64 z = i * width;
    const f64 s = (z + delta) / t;
    const Tails tails = GammaTails(df / 2, df / 2 * s * s);
    const f64 weight = std::exp(-z * z / 2);
    sum.lower += weight * tails.upper;  // S above (z + delta)/t
    sum.upper += weight * tails.lower;
  }
  const f64 scale = width * InverseSqrtTwoPi;
  return sum.lower <= sum.upper ? FromLower(sum.lower * scale) : FromUpper(sum.upper * scale);
}

// --- chi-square ---

// Beyond this non-centrality the series gives way to the saddle point.
constexpr f64 SeriesLambda = 1e8;

// Benton & Krishnamoorthy's series as above; `mean` is lambda/2.
Tails ChiSeriesTails(f64 x, f64 df, f64 lambda) {
  const f64 mean = lambda / 2;
  const f64 half = x / 2;
  const f64 shape = df / 2;
  if (x < df + lambda) {
    f64 last = LastCount(mean);
    GammaParts parts = GammaAt(shape + last, half);
    while (parts.power < 1e-290 && last > 0) {
      last = std::floor(last / 2);
      parts = GammaAt(shape + last, half);
    }
    return FromLower(
        SumDown(last, 0, mean, parts.tails.lower, parts.power / half, [&](f64 s) { return (shape + s - 1) / half; }));
  }
  const f64 first = FirstCount(mean);
  const GammaParts parts = GammaAt(shape + first, half);
  return FromUpper(SumUp(first, mean, parts.tails.upper, parts.power / (shape + first),
                         [&](f64 s) { return half / (shape + s + 1); }));
}

// R. Lugannani & S. Rice (1980), Advances in Applied Probability 12:475-490. With u the saddle point's distance from
// the mean, the exponent is (lambda u^2 + df (u - ln(1 + u)))/2, in which nothing cancels.
Tails ChiSaddleTails(f64 x, f64 df, f64 lambda) {
  const f64 scale = std::max({x, df, lambda});
  const f64 l = lambda / scale;
  const f64 n = df / scale;
  const f64 excess = x / scale - l - n;
  const f64 linear = 2 * l + n;
  const f64 u = 2 * excess / (linear + std::sqrt(std::max(linear * linear + 4 * l * excess, 0.0)));
  if (!(u > -1)) return {0, 1};
  const f64 root = std::sqrt(scale);
  const f64 w = std::copysign(root * std::sqrt(l * u * u + n * LogDeficit(u)), u);
  const f64 variance = 4 * l + 2 * n;
  // At the mean the difference of the reciprocals becomes that of the skewness.
  const f64 skewness = (24 * l + 8 * n) / (variance * std::sqrt(variance)) / root;
  const f64 correction = std::fabs(w) < 1e-3 ? -skewness / 6 : 1 / (root * u * std::sqrt(l * (1 + u) + n / 2)) - 1 / w;
  const Tails tails = NormalTails(w);
  const f64 change = InverseSqrtTwoPi * std::exp(-w * w / 2) * correction;
  return w < 0 ? FromLower(tails.lower - change) : FromUpper(tails.upper + change);
}

}  // namespace

Tails NoncentralTTails(f64 t, f64 df, f64 delta) {
  if (!(df > 0) || std::isnan(t) || !std::isfinite(delta)) return {NaN, NaN};
  if (std::isinf(t)) return t < 0 ? Tails{0, 1} : Tails{1, 0};
  if (delta == 0) return StudentTails(t, df);
  if (std::isinf(df)) return NormalTails(t - delta);
  if (t == 0) return NormalTails(-delta);
  if (t < 0) return Swapped(NoncentralTTails(-t, df, -delta));
  if (std::fabs(delta) <= SeriesDelta) return SeriesTails(t, df, delta);
  return delta < 0 ? Tails{1, 0} : IntegralTails(t, df, delta);
}

Tails NoncentralChiTails(f64 x, f64 df, f64 lambda) {
  if (!(df > 0 && lambda >= 0 && x >= 0) || std::isinf(df) || std::isinf(lambda)) return {NaN, NaN};
  if (lambda == 0) return GammaTails(df / 2, x / 2);
  if (x == 0) return {0, 1};
  if (std::isinf(x)) return {1, 0};
  return lambda <= SeriesLambda ? ChiSeriesTails(x, df, lambda) : ChiSaddleTails(x, df, lambda);
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 PNCT(const f64& t, const f64& df, const f64& delta, i32& ifault) {
  const f64 lower = NoncentralTTails(t, df, delta).lower;
  ifault = std::isnan(lower) ? 1 : 0;
  return ifault != 0 ? 0 : lower;
}

f64 TNCT(const f64& p, const f64& df, const f64& delta, i32& ifault) {
  ifault = p > 0 && p < 1 && df > 0 && std::isfinite(delta) ? 0 : 1;
  if (ifault != 0) return 0;
  // Looked for between normal deviates, as a function of asinh(t): nearly straight, also in the long tails.
  i32 unused = 0;
  const f64 wanted = GAUINV(p, unused);
  const auto miss = [&](f64 u) {
    const Tails tails = NoncentralTTails(std::sinh(u), df, delta);
    const f64 tail = std::max(std::min(tails.lower, tails.upper), std::numeric_limits<f64>::min());
    const f64 deviate = GAUINV(std::min(tail, 0.5), unused);
    return (tails.lower <= tails.upper ? deviate : -deviate) - wanted;
  };
  constexpr f64 Furthest = 346;  // asinh(1e150)
  const f64 spread = std::min(std::hypot(1, delta / std::sqrt(2 * df)), 1e300);
  f64 low = std::clamp(std::asinh(delta + wanted * spread), -Furthest, Furthest);
  f64 atLow = miss(low);
  f64 high = low;
  f64 atHigh = atLow;
  for (f64 step = 0.02; atLow > 0 && low > -Furthest; step *= 3) {
    high = low;
    atHigh = atLow;
    low = std::max(low - step, -Furthest);
    atLow = miss(low);
  }
  for (f64 step = 0.02; atHigh < 0 && high < Furthest; step *= 3) {
    low = high;
    atLow = atHigh;
    high = std::min(high + step, Furthest);
    atHigh = miss(high);
  }
  const Root root = BrentRoot(miss, low, high, atLow, atHigh, 1e-15, 200);
  ifault = root.converged ? 0 : 1;
  return ifault != 0 ? 0 : std::sinh(root.at);
}

f64 NCHI2(const f64& x, const f64& df, const f64& lambda) { return NoncentralChiTails(x, df, lambda).lower; }
