// Regions of the distributions beyond the tails: quantiles, counts, non-central distributions.

#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Tails.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

Region LogGammaRegion(double low, double high, const std::string& name) {
  return {"ALOGAM", name, 1e-15, 2e-16, [=](Random& random) -> std::optional<Point> {
            const double x = LogUniform(random, low, high);
            return Point{{x}, RelativeError(ALOGAM(x), LogGamma(Real(x)))};
          }};
}

Region LogOnePlusRegion(double low, double high, const std::string& name) {
  return {"DLNREL", name, 1e-15, 2e-16, [=](Random& random) -> std::optional<Point> {
            const double size = LogUniform(random, low, high);
            const double x = size < 1 && random() % 2 == 0 ? -size : size;
            const Real wanted = size < 1e-15 ? x - Real(x) * x / 2 + Real(x) * x * x / 3 : log(1 + Real(x));
            return Point{{x}, RelativeError(DLNREL(x), wanted)};
          }};
}

// p over both tails, from 1e-12 to 1 - 1e-12.
double Probability(Random& random) {
  const double p = LogUniform(random, 1e-12, 0.5);
  return random() % 2 == 0 ? p : 1 - p;
}

Region ChiSquareInverseRegion(double dfLow, double dfHigh, const std::string& name) {
  return {"PPCHI2", name, 1e-12, 5e-16, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, dfLow, dfHigh);
            const double p = Probability(random);
            i32 ifault = 0;
            const double x = PPCHI2(p, df, ifault);
            const auto root = Refined(x, [&](const Real& at) {
              const Real a = Real(df) / 2;
              const RealTails tails = Gamma(a, at / 2);
              const Real density = exp(a * log(at / 2) - at / 2 - LogGamma(a)) / at;
              return Real((p < 0.5 ? tails.lower - p : (1 - Real(p)) - tails.upper) / density);
            });
            return Point{{p, df}, root && ifault == 0 ? RelativeError(x, *root) : INFINITY};
          }};
}

Region FisherInverseRegion(double dfLow, double dfHigh, const std::string& name) {
  return {"FFROMP", name, 1e-12, 1e-15, [=](Random& random) -> std::optional<Point> {
            const double dfd = LogUniform(random, dfLow, dfHigh);
            const double dfn = LogUniform(random, dfLow, dfHigh);
            const double p = Probability(random);
            const double f = FFROMP(dfd, dfn, p);
            const auto root = Refined(f, [&](const Real& at) {
              const Real odds = Real(dfn) * at / dfd;
              const Real x = odds / (1 + odds);
              const Real y = 1 / (1 + odds);
              const RealTails tails = Beta(x, y, Real(dfn) / 2, Real(dfd) / 2);
              const Real density = BetaPower(x, y, Real(dfn) / 2, Real(dfd) / 2) / at;
              return Real((p < 0.5 ? p - tails.upper : tails.lower - (1 - Real(p))) / density);
            });
            return Point{{dfd, dfn, p}, root ? RelativeError(f, *root) : INFINITY};
          }};
}

// The worst of the three figures of a count; results below 1e-290 are passed over.
std::optional<double> WorstOf(const std::array<double, 3>& got, const std::array<Real, 3>& wanted) {
  double worst = 0;
  for (int i = 0; i < 3; ++i) {
    if (wanted[i] < Real("1e-290")) return std::nullopt;
    worst = std::max(worst, RelativeError(got[i], wanted[i]));
  }
  return worst;
}

// n and a mean at most `deviates` standard deviations off, or anything when that is 0.
Region PoissonRegion(double nLow, double nHigh, double deviates, double worst, const std::string& name) {
  return {"POISSON", name, worst, worst / 20, [=](Random& random) -> std::optional<Point> {
            const i32 n = static_cast<i32>(LogUniform(random, nLow, nHigh));
            const double mean = deviates == 0 ? LogUniform(random, 1e-3, 3 * nHigh)
                                              : std::fabs(n + Uniform(random, -deviates, deviates) * std::sqrt(n));
            std::array<double, 3> got{};
            i32 ifault = 0;
            POISSON(mean, n, got[0], got[1], got[2], ifault);
            if (got[0] < 1e-295 || got[1] < 1e-295 || got[2] < 1e-295) return std::nullopt;
            const Real exactly = exp(n * log(Real(mean)) - mean - LogGamma(Real(n) + 1));
            const RealTails tails = Gamma(Real(n) + 1, mean);
            const auto error = WorstOf(got, {tails.lower + exactly, tails.upper, exactly});
            if (!error) return std::nullopt;
            return Point{{mean, static_cast<double>(n)}, ifault == 0 ? *error : INFINITY};
          }};
}

Region BinomialRegion(double nLow, double nHigh, double deviates, double worst, const std::string& name) {
  return {"BINO", name, worst, worst / 20, [=](Random& random) -> std::optional<Point> {
            const i32 n = static_cast<i32>(LogUniform(random, nLow, nHigh));
            const double share = random() % 3 == 0 ? LogUniform(random, 0.5 / n, 0.5) : Uniform(random, 0, 1);
            const i32 k = static_cast<i32>(share * n);
            if (k == 0 || k == n) return std::nullopt;
            const double center = static_cast<double>(k) / n;
            const double p = deviates == 0
                                 ? Uniform(random, 0, 1)
                                 : center + Uniform(random, -deviates, deviates) * std::sqrt(center * (1 - center) / n);
            if (!(p > 0 && p < 1)) return std::nullopt;
            std::array<double, 3> got{};
            i32 ifault = 0;
            BINO(n, p, k, got[0], got[1], got[2], ifault);
            if (got[0] < 1e-295 || got[1] < 1e-295 || got[2] < 1e-295) return std::nullopt;
            const Real q = 1 - Real(p);
            const Real exactly = BetaPower(p, q, Real(k), Real(n) - k + 1) / (k * q);
            const RealTails tails = Beta(p, q, Real(k) + 1, Real(n) - k);  // lower: more than k
            const auto error = WorstOf(got, {exactly, tails.upper, tails.lower + exactly});
            if (!error) return std::nullopt;
            return Point{{static_cast<double>(n), p, static_cast<double>(k)}, ifault == 0 ? *error : INFINITY};
          }};
}

// A t around the middle of the distribution.
double NoncentralArgument(Random& random, double df, double delta) {
  return delta + Uniform(random, -6, 6) * std::sqrt(1 + delta * delta / (2 * df));
}

Real NoncentralTAnywhere(const Real& t, const Real& df, const Real& delta) {
  return t < 0 ? Real(1 - NoncentralT(-t, df, -delta)) : NoncentralT(t, df, delta);
}

Region NoncentralTRegion(double dfLow, double dfHigh, double least, double most, double worst,
                         const std::string& name) {
  return {"PNCT", name, worst, worst / 100, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, dfLow, dfHigh);
            const double delta = Uniform(random, least, most) * (random() % 2 == 0 ? 1 : -1);
            const double t = NoncentralArgument(random, df, delta);
            if (t == 0) return std::nullopt;
            i32 ifault = 0;
            const double got = PNCT(t, df, delta, ifault);
            const Real wanted = NoncentralTAnywhere(t, df, delta);
            return Point{{t, df, delta}, ifault == 0 ? AbsoluteError(got, wanted) : INFINITY};
          }};
}

Region NoncentralTInverseRegion(double pLow, const std::string& name) {
  return {"TNCT", name, 1e-9, 1e-12, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, 0.5, 1e5);
            const double delta = Uniform(random, -37, 37);
            const double p = random() % 2 == 0 ? LogUniform(random, pLow, 0.5) : 1 - LogUniform(random, pLow, 0.5);
            i32 ifault = 0;
            const double t = TNCT(p, df, delta, ifault);
            // One step of Newton's method from so near tells the error; the slope from a difference.
            const Real near = NoncentralTAnywhere(t, df, delta);
            const Real width = (1 + abs(Real(t))) * Real("1e-15");
            const Real slope = (NoncentralTAnywhere(t + width, df, delta) - near) / width;
            const Real error = abs((near - p) / slope) / std::max(1.0, std::fabs(t));
            return Point{{p, df, delta}, ifault == 0 ? static_cast<double>(error) : INFINITY};
          }};
}

Region NoncentralChiRegion(double most, const std::string& name) {
  return {"NCHI2", name, 1e-12, 2e-15, [=](Random& random) -> std::optional<Point> {
            const double df = LogUniform(random, 0.5, 1e3);
            const double lambda = LogUniform(random, 0.01, most);
            const double x = df + lambda + Uniform(random, -6, 6) * std::sqrt(2 * df + 4 * lambda);
            if (!(x > 0)) return std::nullopt;
            return Point{{x, df, lambda}, RelativeError(NCHI2(x, df, lambda), NoncentralChi(x, df, lambda))};
          }};
}

std::vector<Region> DistributionRegions() {
  return {
      LogGammaRegion(1e-20, 0.9, "x 1e-20 to 0.9"),
      LogGammaRegion(0.9, 1.1, "x 0.9 to 1.1"),
      LogGammaRegion(1.1, 2.8, "x 1.1 to 2.8"),
      LogGammaRegion(2.8, 1e300, "x 2.8 to 1e300"),
      LogOnePlusRegion(1e-300, 1e300, "|x| 1e-300 to 1e300"),
      LogOnePlusRegion(1e-3, 1, "|x| 1e-3 to 1"),
      ChiSquareInverseRegion(0.1, 1e4, "df 0.1 to 1e4, p 1e-12 to 1 - 1e-12"),
      ChiSquareInverseRegion(0.1, 3, "df 0.1 to 3, p 1e-12 to 1 - 1e-12"),
      FisherInverseRegion(0.1, 1e4, "df 0.1 to 1e4, p 1e-12 to 1 - 1e-12"),
      FisherInverseRegion(0.1, 3, "df 0.1 to 3, p 1e-12 to 1 - 1e-12"),
      NoncentralTRegion(0.5, 1e5, 0, 37, 1e-13, "df 0.5 to 1e5, delta to 37, absolute"),
      NoncentralTRegion(1, 1e3, 0, 5, 1e-13, "df 1 to 1e3, delta to 5, absolute"),
      AtMost(100, NoncentralTRegion(0.5, 1e9, 40, 100, 1e-10, "df 0.5 to 1e9, delta 40 to 100, absolute")),
      AtMost(100, NoncentralTInverseRegion(1e-6, "df 0.5 to 1e5, delta to 37, p from 1e-6")),
      NoncentralChiRegion(100, "df 0.5 to 1e3, lambda to 100"),
      NoncentralChiRegion(1e4, "df 0.5 to 1e3, lambda to 1e4"),
      PoissonRegion(1, 1e4, 0, 1e-13, "n to 1e4, any mean, results to 1e-290"),
      PoissonRegion(1, 1e4, 36, 1e-13, "n to 1e4, means near n, results to 1e-290"),
      AtMost(100, PoissonRegion(1e4, 1e9, 36, 1e-10, "n 1e4 to 1e9, results to 1e-290")),
      BinomialRegion(2, 100, 0, 1e-13, "n to 100, any p, results to 1e-290"),
      BinomialRegion(2, 1e4, 36, 1e-13, "n to 1e4, p near k/n, results to 1e-290"),
      BinomialRegion(1e4, 1e9, 36, 1e-10, "n 1e4 to 1e9, results to 1e-290"),
  };
}

const bool added = AddRegions(&DistributionRegions);

}  // namespace

}  // namespace tellurix::accuracy
