// The functions of the kernel in 50 digits, by methods of their own: incomplete gamma by power series and Legendre's
// continued fraction, incomplete beta by the continued fraction of Abramowitz & Stegun 26.5.8, inverses by Newton's
// method on those. For tests and for the accuracy table.
#pragma once

#include <boost/math/special_functions/bernoulli.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace tellurix::accuracy {

using Real = boost::multiprecision::cpp_bin_float_50;

inline const Real Tiny = Real("1e-52");

struct RealTails {
  Real lower;
  Real upper;
};

inline Real LogGamma(Real x) {
  Real product = 1;
  for (; x < 60; x += 1) product *= x;
  Real sum = (x - Real(0.5)) * log(x) - x + log(2 * boost::math::constants::pi<Real>()) / 2 - log(product);
  Real power = x;
  for (int k = 1; k <= 40; ++k, power *= x * x)
    sum += boost::math::bernoulli_b2n<Real>(k) / (power * (2 * k) * (2 * k - 1));
  return sum;
}

inline RealTails Gamma(const Real& a, const Real& x) {
  if (x == 0) return {0, 1};
  const Real power = exp(a * log(x) - x - LogGamma(a));  // x^a e^-x / Gamma(a)
  if (x < a + 1) {
    Real sum = 1 / a;
    Real term = sum;
    for (Real n = a + 1; term > sum * Tiny; n += 1) sum += term *= x / n;
    return {power * sum, 1 - power * sum};
  }
  // Lentz's method.
  Real b = x + 1 - a;
  Real c = 1 / Real("1e-1000");
  Real d = 1 / b;
  Real h = d;
  for (int i = 1; i < 2000000; ++i) {
    const Real an = -Real(i) * (i - a);
    b += 2;
    d = 1 / (an * d + b);
    c = b + an / c;
    const Real factor = d * c;
    h *= factor;
    if (abs(factor - 1) < Tiny * 10) break;
  }
  return {1 - power * h, power * h};
}

// x^a y^b / B(a, b)
inline Real BetaPower(const Real& x, const Real& y, const Real& a, const Real& b) {
  return exp(a * log(x) + b * log(y) - LogGamma(a) - LogGamma(b) + LogGamma(a + b));
}

inline RealTails Beta(const Real& x, const Real& y, const Real& a, const Real& b) {
  if (x > (a + 1) / (a + b + 2)) {
    const RealTails swapped = Beta(y, x, b, a);
    return {swapped.upper, swapped.lower};
  }
  Real c = 1;
  Real d = 1 / (1 - (a + b) * x / (a + 1));
  Real h = d;
  for (int m = 1; m < 2000000; ++m) {
    Real an = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
    d = 1 / (1 + an * d);
    c = 1 + an / c;
    h *= d * c;
    an = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
    d = 1 / (1 + an * d);
    c = 1 + an / c;
    const Real factor = d * c;
    h *= factor;
    if (abs(factor - 1) < Tiny * 10) break;
  }
  const Real lower = BetaPower(x, y, a, b) * h / a;
  return {lower, 1 - lower};
}

// The probabilities of 0 .. n successes.
inline std::vector<Real> Binomials(int n, const Real& p) {
  std::vector<Real> exactly(static_cast<std::size_t>(n) + 1);
  Real choose = 1;
  for (int k = 0; k <= n; ++k) {
    exactly[static_cast<std::size_t>(k)] = choose * pow(p, k) * pow(1 - p, n - k);
    choose = choose * (n - k) / (k + 1);
  }
  return exactly;
}

inline RealTails Normal(const Real& z) {
  const RealTails tails = Gamma(Real(0.5), z * z / 2);
  const RealTails halves{1 - tails.upper / 2, tails.upper / 2};
  return z < 0 ? RealTails{halves.upper, halves.lower} : halves;
}

// The upper tail for t > 0, and the density.
inline std::pair<Real, Real> Student(const Real& t, const Real& df) {
  const Real sum = df + t * t;
  const Real x = df / sum;
  const Real y = t * t / sum;
  return {Beta(x, y, df / 2, Real(0.5)).lower / 2, BetaPower(x, y, df / 2, Real(0.5)) / t};
}

// Lower tail of the non-central t for t > 0, by the series of Lenth (1989) term by term from the first.
inline Real NoncentralT(const Real& t, const Real& df, const Real& delta) {
  const Real x = t * t / (df + t * t);
  const Real y = df / (df + t * t);
  const Real lambda = delta * delta / 2;
  Real sum = 2 * Normal(-delta).lower;
  for (const Real& first : {Real(0), Real(0.5)}) {
    const Real a = first + Real(0.5);
    Real lower = Beta(x, y, a, df / 2).lower;
    Real term = BetaPower(x, y, a, df / 2) / a;
    Real weight = exp(first * log(lambda) - lambda - LogGamma(first + 1));
    if (first > 0 && delta < 0) weight = -weight;
    for (Real s = first; s < lambda || abs(weight) > Real("1e-40"); s += 1) {
      sum += weight * lower;
      lower -= term;
      term *= x * (s + Real(0.5) + df / 2) / (s + Real(1.5));
      weight *= lambda / (s + 1);
    }
  }
  return sum / 2;
}

// Lower tail of the non-central chi-square, by its definition as a Poisson mixture.
inline Real NoncentralChi(const Real& x, const Real& df, const Real& lambda) {
  const Real mean = lambda / 2;
  Real lower = Gamma(df / 2, x / 2).lower;
  Real term = exp(df / 2 * log(x / 2) - x / 2 - LogGamma(df / 2 + 1));
  Real weight = exp(-mean);
  Real sum = 0;
  for (Real s = 0; s < mean || weight > Real("1e-40"); s += 1) {
    sum += weight * lower;
    lower -= term;
    term *= x / 2 / (df / 2 + s + 1);
    weight *= mean / (s + 1);
  }
  return sum;
}

inline double RelativeError(double got, const Real& wanted) {
  if (!std::isfinite(got)) return std::numeric_limits<double>::infinity();
  if (wanted == 0) return got == 0 ? 0 : std::numeric_limits<double>::infinity();
  return static_cast<double>(abs((Real(got) - wanted) / wanted));
}

inline double AbsoluteError(double got, const Real& wanted) {
  return std::isfinite(got) ? static_cast<double>(abs(Real(got) - wanted)) : std::numeric_limits<double>::infinity();
}

// The true root that Newton's method reaches from the computed one; `ratio` is (value - target)/derivative. Nothing
// when it does not settle.
inline std::optional<Real> Refined(double start, const std::function<Real(const Real&)>& ratio) {
  if (!std::isfinite(start)) return std::nullopt;
  Real root = start;
  for (int round = 0; round < 12; ++round) {
    const Real step = ratio(root);
    root -= step;
    if (abs(step) < abs(root) * Real("1e-22")) return root;
  }
  return std::nullopt;
}

}  // namespace tellurix::accuracy
