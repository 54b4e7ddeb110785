#include "tests/kernel/AccuracyRegions.h"

#include <algorithm>
#include <array>
#include <boost/math/special_functions/bernoulli.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <random>

#include "kernel/Tails.h"

namespace tellurix::accuracy {

namespace {

using Real = boost::multiprecision::cpp_bin_float_50;

const Real Tiny = Real("1e-52");

struct RealTails {
  Real lower;
  Real upper;
};

Real LogGamma(Real x) {
  Real product = 1;
  for (; x < 60; x += 1) product *= x;
  Real sum = (x - Real(0.5)) * log(x) - x + log(2 * boost::math::constants::pi<Real>()) / 2 - log(product);
  Real power = x;
  for (int k = 1; k <= 40; ++k, power *= x * x)
    sum += boost::math::bernoulli_b2n<Real>(k) / (power * (2 * k) * (2 * k - 1));
  return sum;
}

RealTails Gamma(const Real& a, const Real& x) {
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
Real BetaPower(const Real& x, const Real& y, const Real& a, const Real& b) {
  return exp(a * log(x) + b * log(y) - LogGamma(a) - LogGamma(b) + LogGamma(a + b));
}

RealTails Beta(const Real& x, const Real& y, const Real& a, const Real& b) {
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

RealTails Normal(const Real& z) {
  const RealTails tails = Gamma(Real(0.5), z * z / 2);
  const RealTails halves{1 - tails.upper / 2, tails.upper / 2};
  return z < 0 ? RealTails{halves.upper, halves.lower} : halves;
}

// The upper tail for t > 0, and the density.
std::pair<Real, Real> Student(const Real& t, const Real& df) {
  const Real sum = df + t * t;
  const Real x = df / sum;
  const Real y = t * t / sum;
  return {Beta(x, y, df / 2, Real(0.5)).lower / 2, BetaPower(x, y, df / 2, Real(0.5)) / t};
}

double RelativeError(double got, const Real& wanted) {
  if (!std::isfinite(got)) return std::numeric_limits<double>::infinity();
  if (wanted == 0) return got == 0 ? 0 : std::numeric_limits<double>::infinity();
  return static_cast<double>(abs((Real(got) - wanted) / wanted));
}

// The true root that Newton's method reaches from the computed one; `ratio` is (value - target)/derivative. Nothing
// when it does not settle.
std::optional<Real> Refined(double start, const std::function<Real(const Real&)>& ratio) {
  if (!std::isfinite(start)) return std::nullopt;
  Real root = start;
  for (int round = 0; round < 12; ++round) {
    const Real step = ratio(root);
    root -= step;
    if (abs(step) < abs(root) * Real("1e-22")) return root;
  }
  return std::nullopt;
}

using Random = std::mt19937_64;

double Uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

double LogUniform(Random& random, double low, double high) {
  return std::exp(Uniform(random, std::log(low), std::log(high)));
}

struct Point {
  std::array<double, 3> arguments;
  int count;
  double error;
};

struct Region {
  std::string function;
  std::string name;
  double worstBound;
  double medianBound;
  // One point, or nothing where the drawn arguments lie outside the region.
  std::function<std::optional<Point>(Random&)> draw;
};

struct Range {
  double low;
  double high;
  bool Holds(const Real& value) const { return value >= low && value <= high; }
};

constexpr Range Body{1e-5, 1};
constexpr Range Tail{1e-300, 1e-5};

// Deviates that reach well into the range of results.
double Deviate(Random& random, const Range& range) {
  return range.high == 1 ? Uniform(random, -4.5, 4.5) : Uniform(random, -38, 38);
}

double GammaArgument(Random& random, double a, const Range& range) {
  if (random() % 3 == 0) {
    // From the leading term x^a / Gamma(a + 1) of the lower tail.
    const double logP = -Uniform(random, 0, range.high == 1 ? 11.5 : 690);
    return std::min(std::exp((logP + std::lgamma(a + 1)) / a), 2 * a);
  }
  // Wilson & Hilferty's cube.
  const double root = 1 - 1 / (9 * a) + Deviate(random, range) / (3 * std::sqrt(a));
  return a * root * root * root;
}

Region GammaRegion(bool upper, double most, Range range, double worst, double median, const std::string& name) {
  return {upper ? "GammaTails upper" : "GAMMAD", name, worst, median, [=](Random& random) -> std::optional<Point> {
            const double a = LogUniform(random, 0.5, most);
            const double x = GammaArgument(random, a, range);
            if (!(x > 0)) return std::nullopt;
            i32 ifault = 0;
            const double got = upper ? kernel::GammaTails(a, x).upper : GAMMAD(x, a, ifault);
            // Cheaply passes over what is far outside.
            if (got < range.low / 1e3 || got > std::min(range.high * 1e3, 2.0)) return std::nullopt;
            const RealTails tails = Gamma(a, x);
            const Real wanted = upper ? tails.upper : tails.lower;
            if (!range.Holds(wanted)) return std::nullopt;
            return Point{{x, a}, 2, ifault != 0 ? INFINITY : RelativeError(got, wanted)};
          }};
}

// With `half`, q is 1/2, as for Student's distribution.
Region BetaRegion(double most, bool half, Range range, double worst, double median, const std::string& name) {
  return {"BETAIN", name, worst, median, [=](Random& random) -> std::optional<Point> {
            const double p = LogUniform(random, 0.5, most);
            const double q = half ? 0.5 : LogUniform(random, 0.5, most);
            const double logit = std::log(p / q) + Deviate(random, range) * std::sqrt(1 / p + 1 / q);
            const double x = 1 / (1 + std::exp(-logit));
            if (!(x > 0 && x < 1)) return std::nullopt;
            i32 ifault = 0;
            const double got = BETAIN(x, p, q, ifault);
            if (got < range.low / 1e3 || got > std::min(range.high * 1e3, 2.0)) return std::nullopt;
            const Real wanted = Beta(x, 1 - Real(x), p, q).lower;
            if (!range.Holds(wanted)) return std::nullopt;
            return Point{{x, p, q}, 3, ifault != 0 ? INFINITY : RelativeError(got, wanted)};
          }};
}

// Shapes that vanish, where the upper tail does so too.
Region SmallShapeRegion(const std::string& name) {
  return {"GammaTails upper", name, 5e-14, 5e-16, [=](Random& random) -> std::optional<Point> {
            const double a = LogUniform(random, 1e-8, 0.5);
            const double x = LogUniform(random, 1e-10, 30);
            return Point{{x, a}, 2, RelativeError(kernel::GammaTails(a, x).upper, Gamma(a, x).upper)};
          }};
}

Region NormalRegion(double low, double high, const std::string& name) {
  return {"ALNORM", name, 3e-15, 3e-16, [=](Random& random) -> std::optional<Point> {
            const double x = Uniform(random, low, high);
            return Point{{x}, 1, RelativeError(ALNORM(x), Normal(x).lower)};
          }};
}

Region NormalInverseRegion(const std::string& name, std::function<double(Random&)> drawP) {
  return {"GAUINV", name, 3e-15, 5e-16, [=](Random& random) -> std::optional<Point> {
            const double p = drawP(random);
            if (!(p > 0 && p < 1) || p == 0.5) return std::nullopt;
            i32 ifault = 0;
            const double z = GAUINV(p, ifault);
            const auto root = Refined(z, [&](const Real& at) {
              const Real density = exp(-at * at / 2) / sqrt(2 * boost::math::constants::pi<Real>());
              const RealTails tails = Normal(at);
              // Differences of the small tail.
              return Real((at < 0 ? tails.lower - p : (1 - Real(p)) - tails.upper) / density);
            });
            return Point{{p}, 1, root && ifault == 0 ? RelativeError(z, *root) : INFINITY};
          }};
}

Region StudentInverseRegion(const std::string& name, double worst, double dfLow, double dfHigh,
                            std::function<double(Random&)> drawP) {
  return {"TFROMP", name, worst, dfLow < 1 ? 5e-15 : 5e-16, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, dfLow, dfHigh);
            const double p = drawP(random);
            const double t = TFROMP(p, df);
            if (t > 1e300) return std::nullopt;
            if (p == 0.5) return Point{{p, df}, 2, t == 0 ? 0 : INFINITY};
            const auto root = Refined(t, [&](const Real& at) {
              const auto [tail, density] = Student(at, df);
              return Real((p - tail) / density);
            });
            return Point{{p, df}, 2, root ? RelativeError(t, *root) : INFINITY};
          }};
}

Region StudentRegion(Range range, double median, const std::string& name) {
  return {"StudentTails upper", name, range.high == 1 ? 5e-14 : 1e-12, median,
          [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, 1, 1e6);
            const double t = LogUniform(random, 1e-3, range.high == 1 ? 5 : 40);
            const Real wanted = Student(t, df).first;
            if (!range.Holds(wanted)) return std::nullopt;
            return Point{{t, df}, 2, RelativeError(kernel::StudentTails(t, df).upper, wanted)};
          }};
}

Region FisherRegion(Range range, double median, const std::string& name) {
  return {"FTails upper", name, range.high == 1 ? 1e-13 : 2e-12, median, [=](Random& random) -> std::optional<Point> {
            const double df1 = std::ceil(LogUniform(random, 0.5, 1e3));
            const double df2 = std::ceil(LogUniform(random, 0.5, 1e5));
            const double f = std::exp(Deviate(random, range) * std::sqrt(2 / df1 + 2 / df2));
            const Real odds = Real(df1) * f / df2;
            const Real wanted = Beta(1 / (1 + odds), odds / (1 + odds), Real(df2) / 2, Real(df1) / 2).lower;
            if (!range.Holds(wanted)) return std::nullopt;
            return Point{{f, df1, df2}, 3, RelativeError(kernel::FTails(f, df1, df2).upper, wanted)};
          }};
}

Region LogGammaRegion(double low, double high, const std::string& name) {
  return {"LogGamma", name, 1e-14, 5e-16, [=](Random& random) -> std::optional<Point> {
            const double a = LogUniform(random, low, high);
            return Point{{a}, 1, RelativeError(kernel::LogGamma(a), LogGamma(Real(a)))};
          }};
}

std::vector<Region> Regions() {
  const auto between = [](double low, double high) {
    return [=](Random& random) { return LogUniform(random, low, high); };
  };
  const auto belowHalf = [](Random& random) { return 0.5 - LogUniform(random, 1e-16, 0.4); };
  const auto aroundHalf = [](Random& random) {
    const double distance = LogUniform(random, 1e-16, 0.45);
    return random() % 2 == 0 ? 0.5 - distance : 0.5 + distance;
  };
  const auto near1 = [](Random& random) { return 1 - LogUniform(random, 1.2e-16, 0.1); };
  return {
      NormalRegion(-37.5, -5, "x -37.5 to -5"),
      NormalRegion(-5, 5, "x -5 to 5"),
      NormalRegion(5, 38, "x 5 to 38"),
      NormalInverseRegion("p 1e-300 to 0.5", between(1e-300, 0.5)),
      NormalInverseRegion("p around 0.5", aroundHalf),
      NormalInverseRegion("p 0.9 to 1 - 1e-16", near1),
      GammaRegion(false, 1e3, Body, 5e-14, 5e-16, "p 0.5 to 1e3, result 1e-5 to 1"),
      GammaRegion(false, 1e3, Tail, 1e-12, 5e-14, "p 0.5 to 1e3, result 1e-300 to 1e-5"),
      GammaRegion(false, 1e6, Body, 5e-14, 5e-16, "p 0.5 to 1e6, result 1e-5 to 1"),
      GammaRegion(false, 1e6, Tail, 2e-12, 5e-14, "p 0.5 to 1e6, result 1e-300 to 1e-5"),
      GammaRegion(true, 1e3, Body, 5e-14, 5e-16, "a 0.5 to 1e3, result 1e-5 to 1"),
      GammaRegion(true, 1e3, Tail, 1e-12, 5e-14, "a 0.5 to 1e3, result 1e-300 to 1e-5"),
      GammaRegion(true, 1e6, Body, 5e-14, 5e-16, "a 0.5 to 1e6, result 1e-5 to 1"),
      GammaRegion(true, 1e6, Tail, 2e-12, 5e-14, "a 0.5 to 1e6, result 1e-300 to 1e-5"),
      SmallShapeRegion("a 1e-8 to 0.5, x 1e-10 to 30"),
      BetaRegion(1e3, false, Body, 5e-14, 5e-16, "p, q 0.5 to 1e3, result 1e-5 to 1"),
      BetaRegion(1e3, false, Tail, 1e-12, 5e-14, "p, q 0.5 to 1e3, result 1e-300 to 1e-5"),
      BetaRegion(1e6, false, Body, 5e-14, 5e-16, "p, q 0.5 to 1e6, result 1e-5 to 1"),
      BetaRegion(1e6, false, Tail, 2e-12, 5e-14, "p, q 0.5 to 1e6, result 1e-300 to 1e-5"),
      BetaRegion(1e6, true, Body, 5e-14, 5e-16, "q 0.5, p 0.5 to 1e6, result 1e-5 to 1"),
      BetaRegion(1e6, true, Tail, 2e-12, 5e-14, "q 0.5, p 0.5 to 1e6, result 1e-300 to 1e-5"),
      StudentRegion(Body, 5e-16, "df 1 to 1e6, result 1e-5 to 0.5"),
      StudentRegion(Tail, 5e-14, "df 1 to 1e6, result 1e-300 to 1e-5"),
      FisherRegion(Body, 5e-16, "df1 to 1e3, df2 to 1e5, result 1e-5 to 1"),
      FisherRegion(Tail, 5e-14, "df1 to 1e3, df2 to 1e5, result 1e-300 to 1e-5"),
      LogGammaRegion(1e-20, 0.9, "a 1e-20 to 0.9"),
      LogGammaRegion(0.9, 2.2, "a 0.9 to 2.2"),
      LogGammaRegion(2.2, 1e10, "a 2.2 to 1e10"),
      StudentInverseRegion("df 1 to 1e6, p 1e-15 to 0.5", 3e-14, 1, 1e6, between(1e-15, 0.5)),
      StudentInverseRegion("df 1 to 1e6, p just below 0.5", 3e-14, 1, 1e6, belowHalf),
      StudentInverseRegion("df 1 to 1e6, p 1e-290 to 1e-15", 3e-14, 1, 1e6, between(1e-290, 1e-15)),
      StudentInverseRegion("df 0.05 to 1, p 1e-15 to 0.5", 1e-12, 0.05, 1, between(1e-15, 0.5)),
  };
}

RegionResult Measure(const Region& region, int points) {
  Random random(20240607);
  std::vector<double> errors;
  RegionResult result{.function = region.function,
                      .region = region.name,
                      .worstBound = region.worstBound,
                      .medianBound = region.medianBound};
  for (int tries = 0; tries < 200 * points && static_cast<int>(errors.size()) < points; ++tries) {
    const auto point = region.draw(random);
    if (!point) continue;
    errors.push_back(point->error);
    if (point->error < result.worst) continue;
    result.worst = point->error;
    result.worstPoint.clear();
    for (int i = 0; i < point->count; ++i) {
      std::array<char, 40> text{};
      std::snprintf(text.data(), text.size(), "%s%.17g", i == 0 ? "" : ", ", point->arguments[i]);
      result.worstPoint += text.data();
    }
  }
  result.points = static_cast<int>(errors.size());
  if (!errors.empty()) {
    const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
    std::nth_element(errors.begin(), middle, errors.end());
    result.median = *middle;
  }
  return result;
}

}  // namespace

std::vector<RegionResult> MeasureRegions(int points) {
  std::vector<RegionResult> results;
  for (const Region& region : Regions()) results.push_back(Measure(region, points));
  return results;
}

double ReferenceDisagreement() {
  double worst = 0;
  const auto compare = [&](const Real& got, const Real& wanted) {
    worst = std::max(worst, static_cast<double>(abs((got - wanted) / wanted)));
  };
  for (const double x : {1e-3, 0.7, 3.0, 25.0, 300.0}) {
    // Q(3, x), I_x(2, 3) and I_x(1/2, 1/2) in closed form.
    compare(Gamma(3, x).upper, exp(-Real(x)) * (1 + Real(x) + Real(x) * x / 2));
    const Real u = Real(x) / 301;
    compare(Beta(u, 1 - u, 2, 3).lower, u * u * (6 - 8 * u + 3 * u * u));
    compare(Beta(u, 1 - u, Real(0.5), Real(0.5)).lower, 2 * asin(sqrt(u)) / boost::math::constants::pi<Real>());
  }
  for (const double a : {0.75, 12.0, 433.25}) {
    for (const double b : {0.5, 30.0, 1000.5}) {
      const Real x = Real(a) / (a + b) * Real(0.93);
      const Real y = 1 - x;
      Real sum = 1;
      Real term = 1;
      for (int n = 0; term > sum * Tiny; ++n) sum += term *= (Real(a) + b + n) * x / (Real(a) + 1 + n);
      compare(Beta(x, y, a, b).lower, BetaPower(x, y, a, b) * sum / a);
    }
    // The recurrence P(a, x) - P(a + 1, x) = x^a e^-x / Gamma(a + 1) across both methods.
    const Real x = Real(a) + Real(1.5);
    compare(Gamma(a, x).lower - Gamma(Real(a) + 1, x).lower, exp(a * log(x) - x - LogGamma(Real(a) + 1)));
  }
  return worst;
}

}  // namespace tellurix::accuracy
