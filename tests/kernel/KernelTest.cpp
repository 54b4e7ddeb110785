// The flat functions and the tails behind them at their edges, in their laws, and against printed tables.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "kernel/Tails.h"

namespace tellurix::kernel {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();
constexpr f64 Least = std::numeric_limits<f64>::denorm_min();
constexpr f64 Most = std::numeric_limits<f64>::max();

f64 Betain(f64 x, f64 p, f64 q) {
  i32 ifault = 0;
  const f64 value = BETAIN(x, p, q, ifault);
  EXPECT_EQ(ifault, 0) << x << " " << p << " " << q;
  return value;
}

f64 Gammad(f64 x, f64 p) {
  i32 ifault = 0;
  const f64 value = GAMMAD(x, p, ifault);
  EXPECT_EQ(ifault, 0) << x << " " << p;
  return value;
}

f64 Gauinv(f64 p) {
  i32 ifault = 0;
  const f64 value = GAUINV(p, ifault);
  EXPECT_EQ(ifault, 0) << p;
  return value;
}

void ExpectRelative(f64 got, f64 wanted, f64 tolerance) { EXPECT_NEAR(got, wanted, tolerance * std::fabs(wanted)); }

TEST(Kernel, IllegalArgumentsSetTheFault) {
  i32 ifault = 0;
  for (const f64 p : {0.0, 1.0, -0.1, 1.5, NaN}) {
    EXPECT_EQ(GAUINV(p, ifault), 0) << p;
    EXPECT_NE(ifault, 0) << p;
  }
  const std::vector<std::vector<f64>> beta{{-0.1, 1, 1}, {1.1, 1, 1},   {0.5, 0, 1},        {0.5, 1, 0}, {0.5, -1, 1},
                                           {NaN, 1, 1},  {0.5, 1, NaN}, {0.5, Infinity, 1}, {0, 0, 1}};
  for (const auto& x : beta) {
    ifault = 0;
    BETAIN(x[0], x[1], x[2], ifault);
    EXPECT_NE(ifault, 0) << x[0] << " " << x[1] << " " << x[2];
  }
  const std::vector<std::vector<f64>> gamma{{-1, 1}, {1, 0}, {1, -1}, {NaN, 1}, {1, NaN}, {1, Infinity}};
  for (const auto& x : gamma) {
    ifault = 0;
    GAMMAD(x[0], x[1], ifault);
    EXPECT_NE(ifault, 0) << x[0] << " " << x[1];
  }
  EXPECT_TRUE(std::isnan(TFROMP(0.1, 0)));
  EXPECT_TRUE(std::isnan(TFROMP(0.1, -1)));
  EXPECT_TRUE(std::isnan(TFROMP(1.1, 5)));
  EXPECT_TRUE(std::isnan(ALNORM(NaN)));
  EXPECT_TRUE(std::isnan(StudentTails(1, 0).upper));
  EXPECT_TRUE(std::isnan(FTails(-1, 2, 3).upper));
}

TEST(Kernel, EndsOfTheRange) {
  EXPECT_EQ(ALNORM(0), 0.5);
  EXPECT_EQ(ALNORM(-Infinity), 0);
  EXPECT_EQ(ALNORM(Infinity), 1);
  EXPECT_GT(ALNORM(-38.4), 0);
  EXPECT_EQ(ALNORM(-39), 0);
  EXPECT_EQ(Gauinv(0.5), 0);
  EXPECT_EQ(TFROMP(0.5, 3), 0);
  EXPECT_EQ(TFROMP(0, 3), Infinity);
  EXPECT_EQ(TFROMP(0.875, 7.5), -TFROMP(0.125, 7.5));
  EXPECT_EQ(Gammad(0, 3), 0);
  EXPECT_EQ(Gammad(Infinity, 3), 1);
  EXPECT_EQ(Betain(0, 2, 3), 0);
  EXPECT_EQ(Betain(1, 2, 3), 1);
  EXPECT_EQ(FTails(Infinity, 2, 3).upper, 0);
  EXPECT_EQ(StudentTails(-Infinity, 3).upper, 1);
}

// Every double may come: the result lies in [0, 1], and the tails make up 1.
TEST(Kernel, AnyLegalArgumentGivesAProbability) {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int count = 100 * (rounds != nullptr ? std::atoi(rounds) : 300);
  std::mt19937_64 random(11);
  std::uniform_real_distribution<f64> uniform(0, 1);
  const auto any = [&] {
    switch (random() % 12) {
      case 0:
        return Least;
      case 1:
        return Most;
      case 2:
        return 1.0;
      default:
        return std::ldexp(1 + uniform(random), static_cast<int>(uniform(random) * 2096) - 1073);
    }
  };
  const auto near = [&](f64 x, f64 spread) { return x * std::exp((uniform(random) - 0.5) * spread); };
  const auto check = [](const Tails& tails) {
    return tails.lower >= 0 && tails.lower <= 1 && tails.upper >= 0 && tails.upper <= 1 &&
           std::fabs(tails.lower + tails.upper - 1) < 1e-15;
  };
  for (int i = 0; i < count; ++i) {
    const bool ordinary = i % 2 == 0;
    const f64 a = ordinary ? near(1e4, 60) : any();
    const f64 b = ordinary ? near(1e4, 60) : any();
    const f64 x = ordinary ? near(a, 20 / std::sqrt(a)) : any();
    ASSERT_TRUE(check(GammaTails(a, x))) << a << " " << x;
    const f64 u = ordinary     ? std::min(near(a / (a + b), 20 / std::sqrt(a)), 1.0)
                  : i % 4 == 1 ? uniform(random)
                               : std::min(x, 1.0);
    ASSERT_TRUE(check(BetaTails(u, 1 - u, a, b))) << u << " " << a << " " << b;
    ASSERT_TRUE(check(StudentTails(i % 3 == 0 ? -x : x, a))) << x << " " << a;
    const f64 t = TFROMP(uniform(random) * 0.5, a);
    ASSERT_TRUE(t >= 0) << a;
  }
}

// Where one method hands over to the next there is no step against the order: P rises with x and falls with the shape.
TEST(Kernel, TailsAreMonotoneAcrossTheMethods) {
  constexpr f64 Slack = 1 + 2e-14;
  for (const f64 a : {0.2, 0.5, 0.999, 1.0, 3.7, 11.999, 12.0, 59.0, 61.0, 800.0}) {
    f64 before = 0;
    for (f64 x = 0; x < 4 * a + 8; x += (4 * a + 8) / 3000) {
      const f64 p = Gammad(x, a);
      ASSERT_GE(p * Slack, before) << a << " " << x;
      before = p;
    }
    for (const f64 b : {0.5, 2.0, 11.5, 60.5, 1500.0}) {
      before = 0;
      for (f64 x = 0; x <= 1; x += 1.0 / 1024) {
        const f64 p = Betain(x, a, b);
        ASSERT_GE(p * Slack, before) << x << " " << a << " " << b;
        before = p;
      }
    }
  }
  f64 before = 1;
  for (f64 a = 0.5; a < 100; a += 0.25) {
    const f64 p = Gammad(20, a);
    ASSERT_LE(p, before * Slack) << a;
    before = p;
  }
}

TEST(Kernel, ClosedForms) {
  for (const f64 x : {1e-12, 0.03, 0.5, 1.7, 6.0, 40.0, 600.0}) {
    ExpectRelative(GammaTails(1, x).upper, std::exp(-x), 4e-15);
    ExpectRelative(Gammad(x, 1), -std::expm1(-x), 2e-15);
    ExpectRelative(Gammad(x, 0.5), std::erf(std::sqrt(x)), 2e-15);
    // Student on 1 and 2 degrees of freedom.
    ExpectRelative(StudentTails(x, 1).upper, std::atan(1 / x) / std::acos(-1.0), 4e-15);
    const f64 root = std::sqrt(2 + x * x);
    ExpectRelative(StudentTails(x, 2).upper, 1 / (root * (root + x)), 4e-15);
    // F on 2 and df2.
    ExpectRelative(FTails(x, 2, 5).upper, std::exp(-2.5 * std::log1p(0.4 * x)), 4e-15);
  }
  for (const f64 p : {1e-14, 0.01, 0.2, 0.4, 0.4999}) {
    ExpectRelative(TFROMP(p, 1), 1 / std::tan(p * std::acos(-1.0)), 1e-12);
    ExpectRelative(TFROMP(p, 2), (1 - 2 * p) / std::sqrt(2 * p * (1 - p)), 1e-12);
  }
  // One parameter 1: a power; and on so many degrees of freedom that 1 - x is all there is.
  ExpectRelative(Betain(0.3, 1, 1e5), -std::expm1(1e5 * std::log1p(-0.3)), 1e-15);
  ExpectRelative(Betain(0.999, 3e5, 1), std::exp(3e5 * std::log1p(-(1 - 0.999))), 1e-12);
  ExpectRelative(StudentTails(8, 1e18).upper, NormalTails(8).upper, 1e-12);
}

// E. S. Pearson & H. O. Hartley (1966), Biometrika Tables for Statisticians, volume 1, tables 8, 12 and 18.
TEST(Kernel, PrintedTables) {
  EXPECT_NEAR(TFROMP(0.025, 10), 2.228, 0.0005);
  EXPECT_NEAR(TFROMP(0.005, 5), 4.032, 0.0005);
  EXPECT_NEAR(TFROMP(0.0005, 120), 3.373, 0.0005);
  EXPECT_NEAR(GammaTails(0.5, 3.84146 / 2).upper, 0.05, 1e-6);
  EXPECT_NEAR(GammaTails(5, 18.3070 / 2).upper, 0.05, 2e-6);
  EXPECT_NEAR(GammaTails(50, 135.807 / 2).upper, 0.01, 1e-6);
  EXPECT_NEAR(FTails(3.33, 5, 10).upper, 0.05, 2e-4);
  EXPECT_NEAR(FTails(2.20, 12, 21).upper, 0.055, 2e-3);
}

TEST(Kernel, InversesUndoTheTails) {
  for (const f64 df : {0.3, 1.0, 1.5, 4.0, 29.7, 1e3, 1e6}) {
    for (const f64 p : {1e-100, 1e-15, 1e-6, 0.01, 0.24, 0.26, 0.45, 0.7, 0.99}) {
      const f64 t = TFROMP(p, df);
      if (!std::isfinite(t)) continue;
      ExpectRelative(StudentTails(t, df).upper, p, 2e-12);
    }
  }
  for (const f64 p : {1e-290, 1e-20, 0.001, 0.3, 0.5000001, 0.97}) ExpectRelative(ALNORM(Gauinv(p)), p, 1e-12);
}

TEST(Kernel, LogGammaAndItsKin) {
  const f64 pi = std::acos(-1.0);
  ExpectRelative(LogGamma(0.5), std::log(pi) / 2, 4e-16);
  EXPECT_EQ(LogGamma(1), 0);
  EXPECT_EQ(LogGamma(2), 0);
  // Near the zeros the slopes are -gamma and 1 - gamma, Euler's constant.
  ExpectRelative(LogGamma(1 + 0x1p-40), -0.57721566490153286 * 0x1p-40, 1e-11);
  ExpectRelative(LogGamma(2 + 0x1p-40), 0.42278433509846714 * 0x1p-40, 1e-11);
  ExpectRelative(LogGamma(11), std::log(3628800.0), 4e-16);
  ExpectRelative(LogGamma(21), std::log(2432902008176640000.0), 4e-16);
  ExpectRelative(LogGammaOnePlus(1e-20), -0.57721566490153286e-20, 1e-15);
  ExpectRelative(LogBeta(2, 3), -std::log(12.0), 4e-16);
  ExpectRelative(LogBeta(1, 1e6), -std::log(1e6), 1e-15);
  ExpectRelative(LogBeta(20, 30), LogGamma(20) + LogGamma(30) - LogGamma(50), 1e-14);
  for (const f64 a : {0.1, 0.7, 3.0, 11.9, 12.1, 40.0}) {
    EXPECT_NEAR(StirlingRemainder(a), LogGamma(a) - ((a - 0.5) * std::log(a) - a + std::log(2 * pi) / 2), 1e-13) << a;
  }
  for (const f64 e : {-0.9, -0.2, -1e-9, 1e-9, 0.3, 0.86, 50.0}) {
    const long double exact = static_cast<long double>(e) - std::log1p(static_cast<long double>(e));
    const f64 series = e * e / 2 - e * e * e / 3;
    ExpectRelative(LogDeficit(e), std::fabs(e) < 1e-6 ? series : static_cast<f64>(exact), 1e-14);
  }
}

}  // namespace
}  // namespace tellurix::kernel
