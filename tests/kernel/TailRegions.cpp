// Regions of the tails of the normal, gamma, beta and Student distributions, and of their first inverses.

#include <algorithm>
#include <cmath>

#include "kernel/Tails.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

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
            return Point{{x, a}, ifault != 0 ? INFINITY : RelativeError(got, wanted)};
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
            return Point{{x, p, q}, ifault != 0 ? INFINITY : RelativeError(got, wanted)};
          }};
}

// Shapes that vanish, where the upper tail does so too.
Region SmallShapeRegion(const std::string& name) {
  return {"GammaTails upper", name, 5e-14, 5e-16, [=](Random& random) -> std::optional<Point> {
            const double a = LogUniform(random, 1e-8, 0.5);
            const double x = LogUniform(random, 1e-10, 30);
            return Point{{x, a}, RelativeError(kernel::GammaTails(a, x).upper, Gamma(a, x).upper)};
          }};
}

Region NormalRegion(double low, double high, const std::string& name) {
  return {"ALNORM", name, 3e-15, 3e-16, [=](Random& random) -> std::optional<Point> {
            const double x = Uniform(random, low, high);
            return Point{{x}, RelativeError(ALNORM(x), Normal(x).lower)};
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
            return Point{{p}, root && ifault == 0 ? RelativeError(z, *root) : INFINITY};
          }};
}

Region StudentInverseRegion(const std::string& name, double worst, double dfLow, double dfHigh,
                            std::function<double(Random&)> drawP) {
  return {"TFROMP", name, worst, dfLow < 1 ? 5e-15 : 5e-16, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, dfLow, dfHigh);
            const double p = drawP(random);
            const double t = TFROMP(p, df);
            if (t > 1e300) return std::nullopt;
            if (p == 0.5) return Point{{p, df}, t == 0 ? 0 : INFINITY};
            const auto root = Refined(t, [&](const Real& at) {
              const auto [tail, density] = Student(at, df);
              return Real((p - tail) / density);
            });
            return Point{{p, df}, root ? RelativeError(t, *root) : INFINITY};
          }};
}

Region StudentRegion(Range range, double median, const std::string& name) {
  return {"StudentTails upper", name, range.high == 1 ? 5e-14 : 1e-12, median,
          [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, 1, 1e6);
            const double t = LogUniform(random, 1e-3, range.high == 1 ? 5 : 40);
            const Real wanted = Student(t, df).first;
            if (!range.Holds(wanted)) return std::nullopt;
            return Point{{t, df}, RelativeError(kernel::StudentTails(t, df).upper, wanted)};
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
            return Point{{f, df1, df2}, RelativeError(kernel::FTails(f, df1, df2).upper, wanted)};
          }};
}

std::vector<Region> TailRegions() {
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
      GammaRegion(false, 1e3, Tail, 1e-13, 1e-15, "p 0.5 to 1e3, result 1e-300 to 1e-5"),
      GammaRegion(false, 1e6, Body, 5e-14, 5e-16, "p 0.5 to 1e6, result 1e-5 to 1"),
      GammaRegion(false, 1e6, Tail, 2e-12, 5e-14, "p 0.5 to 1e6, result 1e-300 to 1e-5"),
      GammaRegion(true, 1e3, Body, 5e-14, 5e-16, "a 0.5 to 1e3, result 1e-5 to 1"),
      GammaRegion(true, 1e3, Tail, 1e-13, 1e-15, "a 0.5 to 1e3, result 1e-300 to 1e-5"),
      GammaRegion(true, 1e6, Body, 5e-14, 5e-16, "a 0.5 to 1e6, result 1e-5 to 1"),
      GammaRegion(true, 1e6, Tail, 2e-12, 5e-14, "a 0.5 to 1e6, result 1e-300 to 1e-5"),
      SmallShapeRegion("a 1e-8 to 0.5, x 1e-10 to 30"),
      BetaRegion(1e3, false, Body, 5e-14, 5e-16, "p, q 0.5 to 1e3, result 1e-5 to 1"),
      BetaRegion(1e3, false, Tail, 1e-13, 1e-15, "p, q 0.5 to 1e3, result 1e-300 to 1e-5"),
      BetaRegion(1e6, false, Body, 5e-14, 5e-16, "p, q 0.5 to 1e6, result 1e-5 to 1"),
      BetaRegion(1e6, false, Tail, 2e-12, 5e-14, "p, q 0.5 to 1e6, result 1e-300 to 1e-5"),
      BetaRegion(1e6, true, Body, 5e-14, 5e-16, "q 0.5, p 0.5 to 1e6, result 1e-5 to 1"),
      BetaRegion(1e6, true, Tail, 2e-12, 5e-14, "q 0.5, p 0.5 to 1e6, result 1e-300 to 1e-5"),
      StudentRegion(Body, 5e-16, "df 1 to 1e6, result 1e-5 to 0.5"),
      StudentRegion(Tail, 5e-14, "df 1 to 1e6, result 1e-300 to 1e-5"),
      FisherRegion(Body, 5e-16, "df1 to 1e3, df2 to 1e5, result 1e-5 to 1"),
      FisherRegion(Tail, 5e-14, "df1 to 1e3, df2 to 1e5, result 1e-300 to 1e-5"),
      StudentInverseRegion("df 1 to 1e6, p 1e-15 to 0.5", 3e-14, 1, 1e6, between(1e-15, 0.5)),
      StudentInverseRegion("df 1 to 1e6, p just below 0.5", 3e-14, 1, 1e6, belowHalf),
      StudentInverseRegion("df 1 to 1e6, p 1e-290 to 1e-15", 3e-14, 1, 1e6, between(1e-290, 1e-15)),
      StudentInverseRegion("df 0.05 to 1, p 1e-15 to 0.5", 1e-12, 0.05, 1, between(1e-15, 0.5)),
  };
}

const bool added = AddRegions(&TailRegions);

}  // namespace

}  // namespace tellurix::accuracy
