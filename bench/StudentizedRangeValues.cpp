// Prints tests/kernel/StudentizedRangeValues.inc, tail probabilities of the studentized range to about 17 figures,
// which take some minutes: studentized_range_values > FILE.
//
// Every value is computed twice, in long double: as the mean over S of P(range > q S), and, by parts, as the mean over
// the range W of P(S < W / q), with the incomplete gamma function of Boost. The inner integral is that of the tail of
// the range in the first, of its density in the second. The largest relative difference is printed on standard error.
#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

using Real = long double;

const Real RootTwoPi = std::sqrt(2 * std::acos(Real(-1)));

Real Phi(Real x) { return std::erfc(-x / std::sqrt(Real(2))) / 2; }

Real Density(Real x) { return std::exp(-x * x / 2) / RootTwoPi; }

// P(range > w) and the density of the range at w, of k normal values; the trapezoidal rule over the largest, whose
// density falls off as exp(-(z - w/2)^2), or as that of the largest value alone.
constexpr Real InnerStep = Real(1) / 12;
constexpr Real Negligible = 50;  // a range beyond has a P of 1e-270

Real RangeTail(Real w, Real k) {
  if (w > Negligible) return 0;
  Real sum = 0;
  for (Real z = w / 2 - 12; z < w / 2 + 12; z += InnerStep) {
    const Real a = Phi(z);
    const Real share = Phi(z - w) / a;
    const Real power = std::pow(a, k - 1);
    sum += Density(z) * power * (share >= 1 ? 1 : -std::expm1((k - 1) * std::log1p(-share)));
  }
  return k * InnerStep * sum;
}

Real RangeDensity(Real w, Real k) {
  Real sum = 0;
  for (Real z = w / 2 - 9; z < w / 2 + 9; z += InnerStep)
    sum += Density(z) * Density(z - w) * std::pow(std::max(Phi(z) - Phi(z - w), Real(0)), k - 2);
  return k * (k - 1) * InnerStep * sum;
}

// The double exponential rule over ln S, about the place where the integrand is largest for normal tails.
Real ByScale(Real q, Real k, Real df, int ranges) {
  constexpr Real Step = Real(1) / 28;
  const Real logConstant = std::log(Real(2)) + df / 2 * std::log(df / 2) - std::lgamma(df / 2);
  const Real width = std::min(1 / std::sqrt(df), Real(1));
  const Real centre = -std::log1p(q * q / (2 * df)) / 2;
  Real sum = 0;
  for (const int direction : {-1, 1}) {
    for (int i = direction < 0 ? 1 : 0; i < 400; ++i) {
      const Real t = direction * i * Step;
      const Real logS = centre + width * std::sinh(t);
      const Real s = std::exp(logS);
      const Real logDensity = logConstant + df * logS - df / 2 * s * s;
      if (logDensity < -11000) break;
      const Real tail = std::min(RangeTail(q * s, k), Real(1));
      const Real value = std::exp(logDensity) * width * std::cosh(t) * -std::expm1(ranges * std::log1p(-tail));
      sum += value;
      if (i > 60 && value < Real(1e-22) * sum) break;
    }
  }
  return Step * sum;
}

// One range only, df up to MostByRange, above which Boost's function overflows. The double exponential rule over the
// range.
constexpr Real MostByRange = 1000;

Real ByRange(Real q, Real k, Real df) {
  const Real step = 1 / (40 + 4 * std::sqrt(df));
  const Real halfPi = std::acos(Real(0));
  Real sum = 0;
  for (int i = static_cast<int>(-5 / step); i * step < 5; ++i) {
    const Real t = i * step;
    const Real w = 3 * std::exp(halfPi * std::sinh(t));
    if (w > Negligible || w < 1e-30L) continue;
    const Real chi = df * (w / q) * (w / q) / 2;
    sum += 3 * std::exp(halfPi * std::sinh(t)) * halfPi * std::cosh(t) * RangeDensity(w, k) *
           boost::math::gamma_p(df / 2, chi);
  }
  return step * sum;
}

}  // namespace

int main() {
  std::mt19937_64 random(5);
  const auto uniform = [&] { return std::uniform_real_distribution<double>(0, 1)(random); };
  const double samples[] = {3, 4, 5, 7, 10, 16, 25, 40, 50, 51, 80, 120, 200, 3.5, 17.25};
  Real worst = 0;
  std::printf("// Written by bench/StudentizedRangeValues.cpp: q, k, df, ranges, P(Q > q).\n");
  for (int row = 0; row < 140;) {
    const double k = samples[random() % 15];
    double df = std::floor(std::exp(uniform() * std::log(1e4))) + 1;
    if (row % 10 == 0) df += 0.5;
    if (row % 10 == 1) df = 2;
    if (row % 25 == 2) df = 1e7;
    const int ranges = row % 10 == 3 ? 1 + static_cast<int>(random() % 12) : 1;
    const double q = std::round(256 * std::exp(uniform() * 4 - 0.5)) / 256;
    if (df < 2) continue;
    const Real p = ByScale(q, k, df, ranges);
    if (p < Real(1e-13) || p > 1 - Real(1e-7)) continue;
    ++row;
    if (ranges == 1 && df <= MostByRange) worst = std::max(worst, std::abs(ByRange(q, k, df) / p - 1));
    std::printf("{%.17g, %.17g, %.17g, %d, %.20Lg},\n", q, k, df, ranges, p);
    std::fflush(stdout);
  }
  std::fprintf(stderr, "the two methods differ by at most %.1Le\n", worst);
}
