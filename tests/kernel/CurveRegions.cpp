// Regions of polynomials, interpolation, integration and normal scores, in 50 digits; of ranks and ordered pairs,
// exact by their definitions.

#include <algorithm>
#include <array>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>

#include "kernel/Kernel.h"
#include "kernel/NormalScores.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

// --- polynomials, interpolation, integration ---

Real Horner(const std::vector<f64>& c, const Real& x) {
  Real sum = 0;
  for (std::size_t i = c.size(); i-- > 0;) sum = sum * x + c[i];
  return sum;
}

// (x - 1)^7 near 1, where plain evaluation has no digit right.
Region MultipleRootRegion() {
  return {"POLYFUNC", "(x - 1)^7, x within 1/32 to 1/2 of 1", 1e-15, 0, [](Random& random) -> std::optional<Point> {
            const std::vector<f64> c{-1, 7, -21, 35, -35, 21, -7, 1};
            const double off = LogUniform(random, 0x1p-5, 0.5);
            const double x = random() % 2 == 0 ? 1 + off : 1 - off;
            return Point{{x}, RelativeError(POLYFUNC(x, c.data(), 7), Horner(c, x))};
          }};
}

Region PolynomialRegion() {
  return {"POLYFUNC", "degree 0 to 10, coefficients -9 to 9, |x| to 4", 1e-15, 0,
          [](Random& random) -> std::optional<Point> {
            std::vector<f64> c(1 + random() % 11);
            for (auto& one : c) one = Uniform(random, -9, 9);
            const double x = Uniform(random, -4, 4);
            const i32 degree = static_cast<i32>(c.size()) - 1;
            return Point{{x, static_cast<double>(degree)}, RelativeError(POLYFUNC(x, c.data(), degree), Horner(c, x))};
          }};
}

// Lagrange's formula, in units of the sum of the sizes of its terms.
Region InterpolationRegion() {
  return {"POLINT", "1 to 8 points, by Lagrange's formula, of its terms", 1e-12, 0,
          [](Random& random) -> std::optional<Point> {
            const std::size_t n = 1 + random() % 8;
            std::vector<f64> xa;
            std::vector<f64> ya;
            for (std::size_t i = 0; i < n; ++i) {
              xa.push_back(static_cast<f64>(i) + Uniform(random, -0.4, 0.4));
              ya.push_back(Uniform(random, -10, 10));
            }
            std::shuffle(xa.begin(), xa.end(), random);
            const double x = Uniform(random, -1, static_cast<f64>(n));
            Real wanted = 0;
            Real size = 0;
            for (std::size_t i = 0; i < n; ++i) {
              Real term = ya[i];
              for (std::size_t j = 0; j < n; ++j) {
                if (j != i) term *= (Real(x) - xa[j]) / (Real(xa[i]) - xa[j]);
              }
              wanted += term;
              size += abs(term);
            }
            f64 y = NAN;
            f64 dy = NAN;
            i32 status = -1;
            POLINT(xa.data(), ya.data(), static_cast<i32>(n), x, y, dy, status);
            return Point{{x, static_cast<double>(n)},
                         status == 0 ? AbsoluteError(y, wanted) / static_cast<double>(size) : INFINITY};
          }};
}

std::vector<f64> Points(double lower, double upper, i32 stage) {
  if (stage == 1) return {lower, upper};
  std::vector<f64> points(std::size_t{1} << (stage - 2));
  for (std::size_t i = 0; i < points.size(); ++i)
    points[i] = lower + (static_cast<f64>(i) + 0.5) * (upper - lower) / static_cast<f64>(points.size());
  return points;
}

// Any values: the rule is h (half the ends and all between).
Region TrapezoidRegion() {
  return AtMost(200, {"TRAPZD", "1 to 12 stages of values 0 to 1, sums in 50 digits", 1e-14, 0,
                      [](Random& random) -> std::optional<Point> {
                        const i32 stages = 1 + static_cast<i32>(random() % 12);
                        const double lower = Uniform(random, -3, 3);
                        const double upper = lower + LogUniform(random, 1e-3, 10);
                        f64 result = NAN;
                        Real sum = 0;
                        for (i32 stage = 1; stage <= stages; ++stage) {
                          std::vector<f64> values = Points(lower, upper, stage);
                          for (auto& value : values) value = Uniform(random, 0, 1);
                          TRAPZD(lower, upper, values.data(), stage, result, static_cast<i32>(values.size()));
                          for (const f64 value : values) sum += stage == 1 ? Real(value) / 2 : Real(value);
                        }
                        const Real wanted = sum * (Real(upper) - lower) / pow(Real(2), stages - 1);
                        return Point{{lower, upper, static_cast<double>(stages)}, RelativeError(result, wanted)};
                      }});
}

// W. Romberg's integration as the callers do it, of exp.
Region RombergRegion() {
  return AtMost(200, {"TRAPZD", "with POLINT, Romberg's integral of exp, lengths to 3", 1e-14, 0,
                      [](Random& random) -> std::optional<Point> {
                        const double lower = Uniform(random, -2, 2);
                        const double upper = lower + Uniform(random, 0.1, 3);
                        std::vector<f64> steps;
                        std::vector<f64> sums;
                        f64 sum = NAN;
                        f64 step = 1;
                        for (i32 stage = 1; stage <= 9; ++stage, step /= 4) {
                          std::vector<f64> values = Points(lower, upper, stage);
                          for (auto& value : values) value = std::exp(value);
                          TRAPZD(lower, upper, values.data(), stage, sum, static_cast<i32>(values.size()));
                          steps.push_back(step);
                          sums.push_back(sum);
                        }
                        f64 y = NAN;
                        f64 dy = NAN;
                        i32 status = -1;
                        POLINT(steps.data() + 4, sums.data() + 4, 5, 0, y, dy, status);
                        const Real wanted = exp(Real(upper)) - exp(Real(lower));
                        return Point{{lower, upper}, status == 0 ? RelativeError(y, wanted) : INFINITY};
                      }});
}

// --- normal scores ---

Real ExactScore(i32 n, f64 rank) {
  using boost::math::lgamma;
  const Real constant = lgamma(Real(n + 1)) - lgamma(Real(rank)) - lgamma(Real(n - rank + 1)) -
                        log(boost::math::constants::two_pi<Real>()) / 2;
  const auto integrand = [&](const Real& x) -> Real {
    const Real root = sqrt(Real(2));
    const Real lower = erfc(-x / root) / 2;
    const Real upper = erfc(x / root) / 2;
    return x * exp(constant + (rank - 1) * log(lower) + (n - rank) * log(upper) - x * x / 2);
  };
  // Beyond 40 standard deviations of the statistic there is less than 1e-17, exponential as the tail may be.
  const f64 p = rank / (n + 1.0);
  i32 ifault = 0;
  const f64 centre = GAUINV(p, ifault);
  const f64 width = 40 * std::sqrt(p * (1 - p) / (n + 2)) / (std::exp(-centre * centre / 2) / 2.5066282746310002);
  const Real low = std::max(centre - width, -14.0);
  const Real high = std::min(centre + width, 14.0);
  Real sum = 0;
  for (int part = 0; part < 12; ++part)
    sum += boost::math::quadrature::gauss_kronrod<Real, 61>::integrate(integrand, low + (high - low) * part / 12,
                                                                       low + (high - low) * (part + 1) / 12, 0);
  return sum;
}

Region NormalScoreRegion() {
  const std::vector<std::pair<i32, f64>> cases{
      {1, 1},        {2, 1},       {10, 7},  {100, 1},  {500, 499},  {1000, 501},   {10000, 10000}, {10000, 9990},
      {10000, 5001}, {9999, 3000}, {3, 1.5}, {10, 1.5}, {100, 50.5}, {1000, 998.5}, {10000, 1.5},   {10000, 4999.5}};
  return Listed("EXPNOS", "n 1 to 1e4, whole and half ranks, 50 digits, absolute", 1e-13, cases, [](const auto& at) {
    const auto [n, rank] = at;
    return Point{{static_cast<double>(n), rank},
                 AbsoluteError(tellurix::kernel::ExpectedNormalScore(n, rank), ExactScore(n, rank))};
  });
}

// --- ranks and ordered pairs ---

// Ties, both zeros, infinities.
std::vector<f64> AwkwardSample(Random& random, std::size_t most) {
  constexpr std::array<f64, 8> Awkward{0.0, -0.0, INFINITY, -INFINITY, 5e-324, -5e-324, 1e308, 7.0};
  std::vector<f64> data(1 + random() % most);
  for (auto& x : data) {
    const auto kind = random() % 3;
    x = kind == 0   ? std::round(Uniform(random, -5, 5))
        : kind == 1 ? Awkward[random() % Awkward.size()]
                    : Uniform(random, -5, 5);
  }
  return data;
}

// By counting what is smaller and what is equal; the terms of a set of ties are shared among its members.
Region RankRegion() {
  return {"RANK", "to 60 values with ties, four corrections, exact", 0, 0, [](Random& random) -> std::optional<Point> {
            const auto data = AwkwardSample(random, 60);
            const i32 method = 1 + static_cast<i32>(random() % 4);
            std::vector<f64> ranks(data.size(), NAN);
            f64 correction = NAN;
            RANK(data.data(), ranks.data(), static_cast<i32>(data.size()), method, correction);
            bool right = true;
            Real wanted = 0;
            for (std::size_t i = 0; i < data.size(); ++i) {
              const auto smaller = std::count_if(data.begin(), data.end(), [&](f64 x) { return x < data[i]; });
              const Real t = std::count(data.begin(), data.end(), data[i]);
              right &= Real(ranks[i]) == smaller + (t + 1) / 2;
              const std::array<Real, 4> terms{(t * t - 1) / 12, (t - 1) / 2, (t - 1) * (2 * t + 5), (t - 1) * (t - 2)};
              wanted += terms[static_cast<std::size_t>(method) - 1];
            }
            right &= abs(Real(correction) - wanted) < Real("1e-40");
            return Point{{static_cast<double>(data.size()), static_cast<double>(method)}, Exactly(right)};
          }};
}

std::vector<f64> OrderedSample(Random& random, std::size_t most) {
  std::vector<f64> data(1 + random() % most);
  for (auto& x : data) x = random() % 4 == 0 ? std::round(Uniform(random, -3, 3)) : Uniform(random, -3, 3);
  std::sort(data.begin(), data.end());
  return data;
}

// Whether a walk gives the wanted values in their order and then its end.
template <typename Next>
bool Walks(std::size_t rows, std::vector<f64> wanted, Next next) {
  std::vector<i32> places(rows);
  std::vector<i32> heap(rows);
  PairWalk walk{0, 0, 0, places.data(), heap.data()};
  std::sort(wanted.begin(), wanted.end());
  f64 value = NAN;
  bool right = true;
  for (const f64 one : wanted) {
    next(walk, value);
    right &= walk.status == 0 && value == one;
  }
  next(walk, value);
  return right && walk.status == 1 && std::isnan(value);
}

Region AveragesRegion() {
  return AtMost(300, {"PAIRNEXT", "all averages of 1 to 60, by sorting them, exact", 0, 0,
                      [](Random& random) -> std::optional<Point> {
                        const auto x = OrderedSample(random, 60);
                        std::vector<f64> wanted;
                        for (std::size_t i = 0; i < x.size(); ++i) {
                          for (std::size_t j = i; j < x.size(); ++j) wanted.push_back((x[i] + x[j]) / 2);
                        }
                        const bool right = Walks(x.size(), wanted, [&](PairWalk& walk, f64& value) {
                          PAIRNEXT(walk, value, x.data(), static_cast<i32>(x.size()));
                        });
                        return Point{{static_cast<double>(x.size())}, Exactly(right)};
                      }});
}

Region DifferencesRegion() {
  return AtMost(300, {"FINDNEXT", "all differences of 1 to 45 each, by sorting them, exact", 0, 0,
                      [](Random& random) -> std::optional<Point> {
                        const auto a = OrderedSample(random, 45);
                        const auto b = OrderedSample(random, 45);
                        std::vector<f64> wanted;
                        for (const f64 x : a) {
                          for (const f64 y : b) wanted.push_back(x - y);
                        }
                        const bool right = Walks(a.size(), wanted, [&](PairWalk& walk, f64& value) {
                          FINDNEXT(walk, value, a.data(), b.data(), static_cast<i32>(a.size()),
                                   static_cast<i32>(b.size()));
                        });
                        return Point{{static_cast<double>(a.size()), static_cast<double>(b.size())}, Exactly(right)};
                      }});
}

std::vector<Region> CurveRegions() {
  return {MultipleRootRegion(), PolynomialRegion(), InterpolationRegion(), TrapezoidRegion(),  RombergRegion(),
          NormalScoreRegion(),  RankRegion(),       AveragesRegion(),      DifferencesRegion()};
}

const bool added = AddRegions(&CurveRegions);

}  // namespace

}  // namespace tellurix::accuracy
