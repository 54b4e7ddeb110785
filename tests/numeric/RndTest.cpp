#include "numeric/Rnd.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <vector>

namespace tellurix {
namespace {

std::vector<double> OneOfEach(RndFamily& rnd) {
  return {rnd.uniform.GenUni(),
          rnd.uniform.GenUniAB(2, -1),
          rnd.uniform.GenCauchy(0, 1),
          rnd.uniform.GenLogistic(0, 1),
          rnd.uniform.GenWeibull(2, 3),
          rnd.normal.GenNorm(0, 1),
          rnd.normal.GenLnNorm(2, 3),
          rnd.exponential.GenExp(),
          rnd.gamma.GenGamma(0.5, 1),
          rnd.gamma.GenGamma(5, 1),
          rnd.gamma.GenChiSq(3),
          rnd.gamma.GenF(3, 4),
          rnd.gamma.GenT(5),
          rnd.beta.GenBeta(2, 3),
          rnd.beta.GenBeta(0.5, 3),
          rnd.binomial.GenBinom(10, 0.3),
          rnd.binomial.GenBinom(200, 0.4),
          rnd.poisson.GenPoisson(3),
          rnd.poisson.GenPoisson(30),
          rnd.poisson.GenNegbin(2.5, 0.4),
          rnd.poisson.GenGeom(0.2)};
}

TEST(Rnd, AnySeedReachesTheOneSource) {
  RndFamily rnd([]() -> std::int32_t { throw std::logic_error("seeded already"); });
  rnd.uniform.Seed(11);
  const std::vector<double> first = OneOfEach(rnd);
  const auto expectSame = [&](auto& seeded) {
    seeded.Seed(11);
    EXPECT_EQ(OneOfEach(rnd), first);
  };
  expectSame(rnd.normal);
  expectSame(rnd.exponential);
  expectSame(rnd.gamma);
  expectSame(rnd.beta);
  expectSame(rnd.binomial);
  expectSame(rnd.poisson);
  INITMTRND(11);
  EXPECT_EQ(OneOfEach(rnd), first);
  rnd.poisson.Seed(12);
  EXPECT_NE(OneOfEach(rnd), first);
}

TEST(Rnd, AsksForASeedAtTheFirstDrawOnly) {
  int asked = 0;
  RndFamily rnd([&] {
    ++asked;
    return 5;
  });
  EXPECT_EQ(asked, 0);
  const double first = rnd.gamma.GenGamma(3, 1);
  rnd.normal.GenNorm(0, 1);
  EXPECT_EQ(asked, 1);
  rnd.beta.Seed(5);
  EXPECT_EQ(rnd.gamma.GenGamma(3, 1), first);
  EXPECT_EQ(asked, 1);
}

TEST(Rnd, ClockSeedsArePositiveAndDiffer) {
  std::set<std::int32_t> seeds;
  for (int i = 0; i < 100; ++i) {
    const std::int32_t seed = ClockSeed();
    EXPECT_GT(seed, 0);
    seeds.insert(seed);
  }
  EXPECT_GT(seeds.size(), 1u);
}

// Every generator over every pair of corner values: it returns, with a number of its range or with MissingValue.
TEST(Rnd, CornersGiveNumbersOrMissing) {
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double Largest = std::numeric_limits<double>::max();
  const std::vector<double> corners{0,           1,        -1,          0.5,   1e-310, 1e-300, 1e-100,      1e-12,
                                    -Infinity,   Infinity, NaN,         2.5,   9.99,   10,     1 + 1.2e-16, 1e5,
                                    1e12,        1e15,     1e16,        1e100, 1e101,  3e300,  -3e300,      1e308,
                                    1 - 1.2e-16, 50,       1 + 2.3e-16, 110,   1e-5,   1e-6};
  RndFamily rnd;
  rnd.uniform.Seed(3);
  double a = 0, b = 0;
  const auto expect = [&](const char* what, double x, double low, double high, bool whole = false) {
    if (x == MissingValue) return;
    EXPECT_TRUE(x >= low && x <= high && (!whole || x == std::floor(x))) << what << " " << a << " " << b << ": " << x;
  };
  for (const double first : corners) {
    for (const double second : corners) {
      a = first;
      b = second;
      for (int round = 0; round < 20; ++round) {
        expect("uniform", rnd.uniform.GenUniAB(a, b), std::fmin(a, b), std::fmax(a, b));
        expect("Cauchy", rnd.uniform.GenCauchy(a, b), -Largest, Largest);
        expect("logistic", rnd.uniform.GenLogistic(a, b), -Largest, Largest);
        expect("Weibull", rnd.uniform.GenWeibull(a, b), 0, Largest);
        expect("normal", rnd.normal.GenNorm(a, b), -Largest, Largest);
        expect("lognormal", rnd.normal.GenLnNorm(a, b), 0, Largest);
        expect("gamma", rnd.gamma.GenGamma(a, b), 0, Largest);
        expect("F", rnd.gamma.GenF(a, b), 0, Largest);
        expect("t", rnd.gamma.GenT(a), -Largest, Largest);
        expect("beta", rnd.beta.GenBeta(a, b), 0, 1);
        expect("Poisson", rnd.poisson.GenPoisson(a), 0, 1e16, true);
        expect("negative binomial", rnd.poisson.GenNegbin(a, b), 0, 1e16, true);
        expect("geometric", rnd.poisson.GenGeom(a), 0, 1e16, true);
        if (a >= -1 && a <= 2147483647.0) {
          const auto n = static_cast<std::int32_t>(a);
          expect("binomial", rnd.binomial.GenBinom(n, b), 0, n, true);
        }
      }
    }
  }
}

TEST(Rnd, RefusesWhatIsOutOfRange) {
  RndFamily rnd;
  rnd.uniform.Seed(3);
  EXPECT_EQ(rnd.uniform.GenCauchy(0, 0), MissingValue);
  EXPECT_EQ(rnd.uniform.GenLogistic(0, -1), MissingValue);
  EXPECT_EQ(rnd.uniform.GenWeibull(0, 1), MissingValue);
  EXPECT_EQ(rnd.normal.GenLnNorm(0, 1), MissingValue);
  EXPECT_EQ(rnd.normal.GenLnNorm(1, 0), MissingValue);
  EXPECT_EQ(rnd.gamma.GenGamma(0, 1), MissingValue);
  EXPECT_EQ(rnd.gamma.GenGamma(1, -1), MissingValue);
  EXPECT_EQ(rnd.gamma.GenChiSq(0), MissingValue);
  EXPECT_EQ(rnd.gamma.GenF(1, 0), MissingValue);
  EXPECT_EQ(rnd.gamma.GenT(0), MissingValue);
  EXPECT_EQ(rnd.beta.GenBeta(0, 1), MissingValue);
  EXPECT_EQ(rnd.binomial.GenBinom(-1, 0.5), MissingValue);
  EXPECT_EQ(rnd.binomial.GenBinom(1, 1.01), MissingValue);
  EXPECT_EQ(rnd.poisson.GenPoisson(-1), MissingValue);
  EXPECT_EQ(rnd.poisson.GenNegbin(0, 0.5), MissingValue);
  EXPECT_EQ(rnd.poisson.GenNegbin(1, 1.01), MissingValue);
  EXPECT_EQ(rnd.poisson.GenGeom(0), MissingValue);
}

TEST(Rnd, DegenerateLawsGiveTheirOnlyValue) {
  RndFamily rnd;
  rnd.uniform.Seed(3);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(rnd.poisson.GenPoisson(0), 0);
    EXPECT_EQ(rnd.binomial.GenBinom(0, 0.5), 0);
    EXPECT_EQ(rnd.binomial.GenBinom(100, 0), 0);
    EXPECT_EQ(rnd.binomial.GenBinom(100, 1), 100);
    EXPECT_EQ(rnd.poisson.GenNegbin(4, 1), 0);
    EXPECT_EQ(rnd.poisson.GenGeom(1), 0);
    EXPECT_EQ(rnd.uniform.GenUniAB(4, 4), 4);
    EXPECT_EQ(rnd.gamma.GenGamma(4, 0), 0);
  }
}

}  // namespace
}  // namespace tellurix
