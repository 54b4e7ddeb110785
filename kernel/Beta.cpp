// The beta function, the beta distribution, and F as a form of it.
#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// From this smaller parameter on, the uniform expansion is faster than the continued fraction.
constexpr f64 UniformFrom = 400;

// a - (a + b) x, which is also (a + b) y - b, precise near its zero (the mean).
f64 MeanMinus(f64 x, f64 y, f64 a, f64 b) {
  const Pair sum = Sum(a, b);
  const bool byX = x <= y;
  const f64 factor = byX ? x : y;
  const Pair product = Product(sum.high, factor);
  const f64 low = product.low + sum.low * factor;
  return byX ? (a - product.high) - low : (product.high - b) + low;
}

// The smaller of x and y is exact; the other as a pair.
struct Weights {
  Pair x;
  Pair y;
};

Weights Exactly(f64 x, f64 y) { return x <= y ? Weights{{x, 0}, Sum(1, -x)} : Weights{Sum(1, -y), {y, 0}}; }

// The exponent a D(-lambda/a) + b D(lambda/b) of the saddle-point form (D is LogDeficit), and exp(-exponent), which is
// (r x/a)^a (r y/b)^b.
struct Saddle {
  f64 exponent;
  f64 decay;
};

Saddle SaddleAt(f64 x, f64 y, f64 a, f64 b, f64 lambda) {
  const f64 r = a + b;
  const f64 exponent = a * LogDeficit(-lambda / a, x * (r / a)) + b * LogDeficit(lambda / b, y * (r / b));
  if (exponent > DeepExponent && exponent < UnderflowExponent) {
    const Weights weights = Exactly(x, y);
    const Pair sum = Sum(a, b);
    const f64 decay =
        PowerProduct(Quotient(Product(weights.x, sum), a), a, Quotient(Product(weights.y, sum), b), b, {0, 0});
    if (!std::isnan(decay)) return {exponent, decay};
  }
  return {exponent, std::exp(-exponent)};
}

// x^a y^b / B(a, b) with both parameters below StirlingFrom: the plain product.
f64 SmallPower(f64 x, f64 y, f64 a, f64 b) {
  const f64 r = a + b;
  const f64 powers =
      x <= y ? std::pow(x, a) * std::exp(b * std::log1p(-x)) : std::exp(a * std::log1p(-y)) * std::pow(y, b);
  return powers * a * (b / r) * InverseGammaOnePlus(a) * InverseGammaOnePlus(b) / InverseGammaOnePlus(r);
}

// The same with a small: the gamma density's (r x)^a e^(-r x) with r = a + b, and what is left.
f64 MixedPower(f64 x, f64 y, f64 a, f64 b, f64 lambda) {
  const f64 r = a + b;
  const f64 mean = r * x;
  const f64 exponent = mean + b * LogDeficit(lambda / b, y * (r / b));
  if (exponent > 2 * UnderflowExponent) return 0;
  const f64 rest = a * InverseGammaOnePlus(a) * std::sqrt(b / r) * std::exp(StirlingSeries(r) - StirlingSeries(b));
  if (exponent > DeepExponent) {
    // e^-exponent is e^-a (r y/b)^b.
    const Weights weights = Exactly(x, y);
    const Pair sum = Sum(a, b);
    const f64 product = PowerProduct(Product(weights.x, sum), a, Quotient(Product(weights.y, sum), b), b, {-a, 0});
    if (!std::isnan(product)) return product * rest;
  }
  const f64 half = std::exp(-exponent / 2);
  return half * std::pow(mean, a) * rest * half;
}

// The same with both large, by the saddle-point form (Loader 2000).
f64 LargePower(f64 a, f64 b, const Saddle& saddle) {
  const f64 r = a + b;
  const f64 remainders = StirlingSeries(a) + StirlingSeries(b) - StirlingSeries(r);
  return InverseSqrtTwoPi * std::sqrt(a) * std::sqrt(b / r) * saddle.decay * std::exp(-remainders);
}

// I_x(a, b) over x^a y^b / B(a, b), for x not far above the mean (DiDonato & Morris 1992), by Steed's method. The first
// denominator may come near 0 there, so it is joined last.
f64 Fraction(f64 x, f64 y, f64 a, f64 b, f64 lambda) {
  const f64 r = a + b;
  const f64 first = a / (a + 1) * (lambda + 1);
  f64 perOdd = 1 / (a + 1);  // 1/(a + 2 n + 1)
  f64 denominator = 0;
  f64 term = 0;
  f64 sum = 0;
  for (f64 n = 1; n < 20000; n += 1) {
    const f64 perEven = perOdd;
    perOdd = 1 / (a + 2 * n + 1);
    const f64 t = n * (b - n) * x * perEven;
    const f64 alpha = (a + n - 1) * perEven * ((r + n - 1) * x) * t;
    const f64 beta = n + t + (a + n) * perOdd * (lambda + 1 + n * (1 + y));
    denominator = 1 / (beta + alpha * denominator);
    term = n == 1 ? alpha * denominator : term * (beta * denominator - 1);
    sum += term;
    if (std::fabs(term) <= std::fabs(first + sum) * (Epsilon / 8)) break;
  }
  return 1 / (first + sum);
}

// The same as Fraction by the power series (DLMF 8.17.7 with 8.17.8), for x far below the mean.
f64 Series(f64 x, f64 a, f64 b) {
  const f64 r = a + b;
  f64 sum = 1;
  f64 term = 1;
  for (f64 n = 0; n < 20000 && term > sum * (Epsilon / 8); n += 1) {
    term *= (r + n) * x / (a + 1 + n);
    sum += term;
  }
  return sum / a;
}

// Coefficients of zeta/v in powers of zeta, where v, the relative distance (x - x0)/(x0 sqrt(y0)) from the mean x0,
// solves v v' = zeta (1 + k v - x0 v^2), k = (1 - 2 x0)/sqrt(y0). With x0 = 0 they are those of the gamma distribution.
void UniformCoefficients(f64 x0, f64 y0, int terms, f64* coefficients) {
  const f64 k = (y0 - x0) / std::sqrt(y0);
  std::array<f64, MostTerms + 2> v;
  std::array<f64, MostTerms + 3> square;  // v^2
  v[0] = 0;
  v[1] = 1;
  square[0] = square[1] = 0;
  square[2] = 1;
  for (int m = 2; m <= terms; ++m) {
    square[m + 1] = 2 * (k * v[m - 1] - x0 * square[m - 1]) / (m + 1);
    // Two sums side by side, so that one addition need not wait for another.
    f64 cross = 0;
    f64 other = 0;
    int i = 2;
    int j = m - 1;
    for (; i + 1 < j - 1; i += 2, j -= 2) {
      cross += v[i] * v[j];
      other += v[i + 1] * v[j - 1];
    }
    if (i < j) cross += v[i] * v[j];
    cross = 2 * (cross + other);
    if (m % 2 == 1) cross += v[(m + 1) / 2] * v[(m + 1) / 2];
    v[m] = (square[m + 1] - cross) / 2;
  }
  // The reciprocal of v/zeta: each coefficient, once known, is at once taken out of all the later ones.
  coefficients[0] = 1;
  for (int n = 1; n < terms; ++n) coefficients[n] = -v[n + 1];
  for (int from = 1; from < terms; ++from) {
    const f64 known = coefficients[from];
    for (int n = from + 1; n < terms; ++n) coefficients[n] -= v[n - from + 1] * known;
  }
}

// For a <= b.
BetaParts Ordered(f64 x, f64 y, f64 a, f64 b) {
  if (b > 1e40) {
    // For b beyond all measure the variable b x has the gamma distribution, to a relative a^2/b.
    if (a * a < b * 1e-17) {
      const GammaParts parts = GammaAt(a, b * x);
      return {parts.tails, parts.power};
    }
    if (b > 1e280) {
      a *= 0x1p-200;
      b *= 0x1p-200;
    }
  }
  // Two vanishing parameters leave nothing but a mass at each end.
  if (b < 1e-250) return {{b / (a + b), a / (a + b)}, 0};
  // A vanishing one makes the upper tail proportional to it.
  constexpr f64 Least = 1e-290;
  if (a < Least) {
    const BetaParts parts = Ordered(x, y, Least, b);
    return {{1, parts.tails.upper * (a / Least)}, parts.power * (a / Least)};
  }
  const f64 lambda = MeanMinus(x, y, a, b);
  const f64 r = a + b;
  const bool below = a >= UniformFrom ? lambda >= 0 : x <= (a + 1) / (r + 2);
  const Saddle saddle = a >= StirlingFrom ? SaddleAt(x, y, a, b, lambda) : Saddle{0, 1};
  const f64 power = a >= StirlingFrom   ? LargePower(a, b, saddle)
                    : b >= StirlingFrom ? MixedPower(x, y, a, b, lambda)
                                        : SmallPower(x, y, a, b);
  if (a >= UniformFrom) {
    const f64 exponent = saddle.exponent;
    if (exponent > UnderflowExponent) return {below ? Tails{0, 1} : Tails{1, 0}, power};
    if (exponent <= 0.5 * a) {
      const f64 zeta = std::copysign(std::sqrt(2 * exponent / a), -lambda);
      const int terms = UniformTerms(a, zeta);
      std::array<f64, MostTerms> coefficients;
      UniformCoefficients(a / r, b / r, terms, coefficients.data());
      return {UniformTails(a, zeta, exponent, saddle.decay, coefficients.data(), terms), power};
    }
  }
  const auto part = [&](f64 u, f64 v, f64 p, f64 q, f64 distance) {
    const bool far = (p + q) * u < 0.5 * (p + 1);
    const f64 tail = std::min(power * (far ? Series(u, p, q) : Fraction(u, v, p, q, distance)), 1.0);
    return Tails{tail, 1 - tail};
  };
  return {below ? part(x, y, a, b, lambda) : Swapped(part(y, x, b, a, -lambda)), power};
}

}  // namespace

BetaParts BetaAt(f64 x, f64 y, f64 a, f64 b) {
  if (!(x >= 0 && y >= 0 && x <= 1 && y <= 1 && a > 0 && b > 0) || std::isinf(a) || std::isinf(b)) {
    return {{NaN, NaN}, NaN};
  }
  if (x == 0) return {{0, 1}, 0};
  if (y == 0) return {{1, 0}, 0};
  if (a <= b) return Ordered(x, y, a, b);
  const BetaParts parts = Ordered(y, x, b, a);
  return {Swapped(parts.tails), parts.power};
}

Tails BetaTails(f64 x, f64 y, f64 a, f64 b) { return BetaAt(x, y, a, b).tails; }

f64 LogBeta(f64 a, f64 b) {
  if (!(a > 0 && b > 0)) return NaN;
  if (a > b) std::swap(a, b);
  if (b < StirlingFrom)
    return LogGammaOnePlus(a) + LogGammaOnePlus(b) - LogGammaOnePlus(a + b) + std::log1p(a / b) - std::log(a);
  const f64 r = a + b;
  if (a < StirlingFrom) {
    return LogGamma(a) - a * (std::log(r) - 1) - (b - 0.5) * std::log1p(a / b) +
           (StirlingSeries(b) - StirlingSeries(r));
  }
  return HalfLogTwoPi - 0.5 * std::log(b) + (a - 0.5) * std::log(a / r) - b * std::log1p(a / b) + StirlingSeries(a) +
         StirlingSeries(b) - StirlingSeries(r);
}

Tails FTails(f64 f, f64 df1, f64 df2) {
  if (!(f >= 0)) return {NaN, NaN};
  // The larger of the two weights is divided out first, so that neither product overflows.
  const f64 odds = df1 / df2 * f;
  if (std::isinf(odds)) return df1 > 0 && df2 > 0 && !std::isinf(df1) ? Tails{1, 0} : Tails{NaN, NaN};
  return BetaTails(odds / (1 + odds), 1 / (1 + odds), df1 / 2, df2 / 2);
}

}  // namespace tellurix::kernel

f64 BETAIN(const f64& x, const f64& p, const f64& q, i32& ifault) {
  const f64 lower = tellurix::kernel::BetaTails(x, 1 - x, p, q).lower;
  ifault = std::isnan(lower) ? 1 : 0;
  return ifault != 0 ? 0 : lower;
}
