// Student's distribution.
#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Inverse.h"

namespace tellurix::kernel {

namespace {

// The beta distribution of df/(df + t^2), parameters df/2 and 1/2: its lower tail is P(|T| > t), its upper one
// P(|T| < t), and its power t times the density of T.
BetaParts StudentAt(f64 t, f64 df) {
  df = std::max(df, 1e-300);  // so that df/2 is no subnormal; the tails are 1/2 all the same
  const f64 odds = t * (t / df);
  if (std::isinf(odds)) {
    // t/sqrt(df) above 1e154: only the leading term is left.
    const f64 powers = df < 4 ? std::pow(t, -df) * std::pow(df, df / 2) : 0;
    const f64 tail = std::min(powers * std::exp(-LogBeta(df / 2, 0.5) - std::log(df / 2)), 1.0);
    return {{tail, 1 - tail}, tail * (df / 2)};
  }
  return BetaAt(1 / (1 + odds), odds / (1 + odds), df / 2, 0.5);
}

// A first value for n >= 1 degrees of freedom, x being the normal deviate of the lower tail p: G. W. Hill (1970),
// Algorithm 396, Communications of the ACM 13:619-620.
f64 HillStart(f64 p, f64 x, f64 n) {
  constexpr f64 HalfPi = 1.57079632679489661923132;
  const f64 a = 1 / (n - 0.5);
  const f64 b = 48 / (a * a);
  f64 c = ((20700 * a / b - 98) * a - 16) * a + 96.36;
  const f64 d = ((94.5 / (b + c) - 3) / b + 1) * std::sqrt(a * HalfPi) * n;
  f64 y = std::pow(d * 2 * p, 2 / n);
  if (y > 0.05 + a) {
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

// The deviate y with t^2 = df (exp(y^2/a) - 1), a = df - 1/2, that belongs to the normal deviate z > 0 of the same
// tail: the expansion of G. W. Hill (1970, Algorithms 395 and 396, Communications of the ACM 13:617-620) in 1/a^2,
// carried on to its eighth term. Its coefficients come, in rational arithmetic, from the density of y, which is in
// proportion to exp(-y^2/2) sqrt(s/sinh(s)) with s = y^2/(2 a). NaN where eight terms are not enough.
f64 HillDeviate(f64 z, f64 a) {
  constexpr int Terms = 8;
  // The k-th term is z/a^(2 k) times a polynomial in z^2 with 2 k coefficients, from the constant one up.
  static constexpr std::array<f64, Terms*(Terms + 1)> C{
      -6.25000000000000000e-02, -2.08333333333333322e-02, 4.10156250000000000e-02,  1.56250000000000000e-02,
      2.73437499999999983e-03,  1.73611111111111118e-04,  -8.19091796875000000e-02, -2.99072265625000000e-02,
      -6.27441406249999983e-03, -8.56042286706349201e-04, -7.00989307760141027e-05, -2.75573192239858925e-06,
      3.43938827514648438e-01,  1.20686848958333329e-01,  2.52174377441406264e-02,  3.74901181175595240e-03,
      4.17628616252273461e-04,  3.41893756200396844e-05,  1.86227196318342158e-06,  5.16699735449735471e-08,
      -2.49128615856170654e+00, -8.55497002601623535e-01, -1.75623178482055664e-01, -2.58873780568440771e-02,
      -2.97423052409338589e-03, -2.76789871645180183e-04, -2.08659618288592351e-05, -1.21924202384362256e-06,
      -4.93757049384942909e-08, -1.04383784939340501e-09, 2.76653569377958775e+01,  9.39584568142890930e+00,
      1.90848928168416032e+00,  2.77806497329757318e-01,  3.15848713632298495e-02,  2.95111565076140855e-03,
      2.33396297695261914e-04,  1.57774605404479760e-05,  8.96779213526788125e-07,  4.05969827304965765e-08,
      1.30022660463451277e-09,  2.20174589111978884e-11,  -4.36419962685322389e+02, -1.47338785139145330e+02,
      -2.97614992966409773e+01, -4.30096501204451265e+00, -4.84560759208120750e-01, -4.48196468112417729e-02,
      -3.52276531411454446e-03, -2.40863832970944215e-04, -1.45128631527888280e-05, -7.69414036265036273e-07,
      -3.50313402517322696e-08, -1.29040081656293876e-09, -3.40268914332654430e-11, -4.77947733238738487e-13,
      9.27514332493016809e+03,  3.12045121525938157e+03,  6.28399251464878034e+02,  9.04631189663406587e+01,
      1.01406402007142979e+01,  9.31713463524522778e-01,  7.26202046606830992e-02,  4.92259285330886968e-03,
      2.95636729844870520e-04,  1.59361441939551375e-05,  7.75182376508063623e-07,  3.37747471432416806e-08,
      1.28060053249431928e-09,  3.96695573935051460e-11,  8.86100938450804095e-13,  1.05927509260080710e-14};
  const f64 w = z * z;
  if (!(a > 17 + w / 2 && a > 12.5 + 0.95 * w)) return NaN;
  const f64 square = w * w;
  const f64 perSquare = 1 / (a * a);
  f64 factor = 1;
  f64 sum = 1;
  const f64* coefficients = C.data();
  for (int k = 1; k <= Terms; ++k) {
    f64 even = coefficients[2 * k - 2];
    f64 odd = coefficients[2 * k - 1];
    for (int i = 2 * k - 4; i >= 0; i -= 2) {
      even = even * square + coefficients[i];
      odd = odd * square + coefficients[i + 1];
    }
    coefficients += 2 * k;
    factor *= perSquare;
    const f64 term = factor * (even + w * odd);
    sum += term;
    if (std::fabs(term) < 1e-16) return z * sum;
  }
  return NaN;
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

  i32 ifault = 0;
  const f64 z = GAUINV(p, ifault);
  const f64 deviate = HillDeviate(-z, df - 0.5);
  if (!std::isnan(deviate)) return std::sqrt(df * std::expm1(deviate * deviate / (df - 0.5)));

  // By the distribution of the size of T.
  const f64 start = df >= 1 ? HillStart(p, z, df) : HeavyStart(p, df);
  return Inverse(start, {1 - 2 * p, 2 * p}, [df](f64 t) {
    const BetaParts parts = StudentAt(t, df);
    const f64 odds = t * (t / df);
    const f64 y = 1 / (1 + odds);
    return LogisticSlopes({Swapped(parts.tails), parts.power}, std::isinf(odds) ? 1 : odds * y, y, 0.5, df / 2, 2);
  });
}
