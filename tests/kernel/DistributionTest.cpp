// Quantiles, counts and non-central distributions: printed tables, closed forms, enumeration, and the ends of ranges.
// Figures of R are from version 4.2.2, the call beside them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "kernel/Root.h"
#include "kernel/Tails.h"
#include "tests/kernel/Reference.h"

namespace tellurix::kernel {
namespace {

using accuracy::Real;
using accuracy::RelativeError;

constexpr f64 Missing = 3e300;

f64 ChiQuantile(f64 p, f64 df) {
  i32 ifault = 0;
  const f64 x = PPCHI2(p, df, ifault);
  EXPECT_EQ(ifault, 0) << p << " " << df;
  return x;
}

struct Count {
  f64 exactly = -1;
  f64 orFewer = -1;
  f64 orMore = -1;
  i32 ifault = 0;
};

Count Binomial(i32 n, f64 p, i32 k) {
  Count at;
  BINO(n, p, k, at.exactly, at.orFewer, at.orMore, at.ifault);
  return at;
}

Count Poisson(f64 mean, i32 n) {
  Count at;
  POISSON(mean, n, at.orMore, at.orFewer, at.exactly, at.ifault);
  return at;
}

TEST(Quantile, PrintedTablesAndClosedForms) {
  // Pearson & Hartley, Biometrika Tables for Statisticians I, tables 8 and 18.
  EXPECT_NEAR(ChiQuantile(0.95, 1), 3.84146, 5e-6);
  EXPECT_NEAR(ChiQuantile(0.005, 100), 67.3276, 5e-5);
  EXPECT_NEAR(FFROMP(10, 5, 0.05), 3.33, 5e-3);
  EXPECT_NEAR(FFROMP(5, 10, 0.05), 4.74, 5e-3);
  // Two degrees of freedom, far out in both tails.
  for (const f64 p : {1e-300, 1e-9, 0.3, 0.999}) {
    EXPECT_NEAR(ChiQuantile(p, 2) / (-2 * std::log1p(-p)), 1, 1e-15) << p;
    EXPECT_LT(RelativeError(FFROMP(8, 2, p), 4 * (pow(Real(p), Real(-0.25)) - 1)), 5e-15) << p;
  }
}

TEST(Quantile, EndsAndIllegalArguments) {
  EXPECT_EQ(ChiQuantile(0, 3), 0);
  EXPECT_EQ(ChiQuantile(1e-200, 0.5), 0);  // about 1e-800
  EXPECT_EQ(FFROMP(4, 3, 1), 0);
  EXPECT_EQ(FFROMP(4, 3, 0), Missing);
  EXPECT_EQ(FFROMP(0, 3, 0.1), Missing);
  EXPECT_EQ(FFROMP(4, -3, 0.1), Missing);
  EXPECT_EQ(FFROMP(1e-3, 3, 1e-3), Missing);  // beyond the largest double
  EXPECT_EQ(FFROMP(4, 3, std::nan("")), Missing);
  i32 ifault = 0;
  EXPECT_EQ(PPCHI2(1, 3, ifault), 0);
  EXPECT_NE(ifault, 0);
}

TEST(Binomial, SmallNumbersByEnumeration) {
  for (const f64 p : {0.0, 1e-9, 0.23, 0.5, 0.9, 1 - 1e-12, 1.0}) {
    for (i32 n = 0; n <= 9; ++n) {
      const std::vector<Real> exactly = accuracy::Binomials(n, p);
      for (i32 k = 0; k <= n; ++k) {
        const Count at = Binomial(n, p, k);
        ASSERT_EQ(at.ifault, 0);
        const Real orFewer = std::accumulate(exactly.begin(), exactly.begin() + k + 1, Real(0));
        const Real orMore = std::accumulate(exactly.begin() + k, exactly.end(), Real(0));
        EXPECT_LT(RelativeError(at.exactly, exactly[k]), 5e-15) << n << " " << p << " " << k;
        EXPECT_LT(RelativeError(at.orFewer, orFewer), 5e-15) << n << " " << p << " " << k;
        EXPECT_LT(RelativeError(at.orMore, orMore), 5e-15) << n << " " << p << " " << k;
      }
    }
  }
}

TEST(Binomial, EndsOfLongRuns) {
  for (const i32 n : {10000, 1000000000}) {
    for (const f64 expected : {1e-5, 0.3, 20.0, 600.0}) {
      const f64 p = expected / n;
      const f64 tolerance = n == 10000 ? 1e-13 : 1e-10;
      EXPECT_LT(RelativeError(Binomial(n, p, 0).exactly, exp(n * log(1 - Real(p)))), tolerance) << n << " " << p;
      EXPECT_LT(RelativeError(Binomial(n, 1 - p, n).exactly, exp(n * log(Real(1 - p)))), tolerance) << n << " " << p;
    }
  }
  EXPECT_EQ(Binomial(1000000000, 0.5, 7).exactly, 0);
}

// Certain and impossible outcomes; what lies between is in CountRegions.cpp.
TEST(Binomial, ExactTestsAtTheEndsOfP) {
  for (const i32 n : {1, 6, 20}) {
    for (i32 r = 0; r <= n; ++r) {
      for (const f64 p : {0.0, 1.0}) {
        const bool certain = r == (p == 0 ? 0 : n);
        f64 oneSided = -1;
        f64 twoSided = -1;
        i32 ifault = 0;
        BINO2(n, p, r, oneSided, twoSided, ifault);
        EXPECT_EQ(oneSided, certain ? 1 : 0);
        EXPECT_EQ(twoSided, certain ? 1 : 0);
        BINOMID(n, p, r, oneSided, twoSided, ifault);
        EXPECT_EQ(oneSided, certain ? 0.5 : 0);
        EXPECT_EQ(twoSided, certain ? 1 : 0);
      }
    }
  }
}

TEST(Binomial, ExactTestOfAPublishedExample) {
  // Conover (1971), Practical Nonparametric Statistics, p 97; digits: binom.test(682, 925, .75).
  f64 oneSided = 0;
  f64 twoSided = 0;
  i32 ifault = 0;
  BINO2(925, 0.75, 682, oneSided, twoSided, ifault);
  EXPECT_NEAR(twoSided, 0.382491559574852, 1e-14);
  EXPECT_NEAR(oneSided, 0.196009267053883, 1e-14);
  // The largest n that an i32 holds; by the normal approximation.
  BINO2(2147483647, 0.5, 1073741823, oneSided, twoSided, ifault);
  EXPECT_EQ(ifault, 0);
  EXPECT_NEAR(twoSided, 1, 1e-9);
  BINO2(2147483647, 0.5, 1073741823 - 46341, oneSided, twoSided, ifault);
  EXPECT_NEAR(twoSided, 2 * ALNORM(-46341.0 / std::sqrt(2147483647 * 0.25)), 1e-6);
  BINO2(2147483647, 0.9999, 0, oneSided, twoSided, ifault);
  EXPECT_LT(twoSided, 1e-300);
}

TEST(Poisson, MeanOfAProbability) {
  // F. Garwood (1936), Biometrika 28:437-442, 95% limits of the mean of 0, 10 and 30 events.
  const auto mean = [](f64 p, i32 n, i32 which) {
    f64 m = 0;
    Count at;
    i32 ifault = 0;
    POISSONI(p, n, which, m, at.orMore, at.orFewer, at.exactly, ifault);
    EXPECT_EQ(ifault, 0) << p << " " << n << " " << which;
    const f64 reached = which == 1 ? at.orMore : which == 2 ? at.orFewer : at.exactly;
    EXPECT_NEAR(reached / p, 1, 1e-13 * (1 + n)) << p << " " << n << " " << which;
    return m;
  };
  EXPECT_NEAR(mean(0.025, 0, 2), 3.689, 5e-4);
  EXPECT_NEAR(mean(0.025, 10, 1), 4.795, 5e-4);
  EXPECT_NEAR(mean(0.025, 10, 2), 18.390, 5e-4);
  EXPECT_NEAR(mean(0.025, 30, 1), 20.24, 5e-3);
  EXPECT_NEAR(mean(0.025, 30, 2), 42.83, 5e-3);
  EXPECT_NEAR(mean(1e-9, 0, 3), -std::log(1e-9), 1e-14);
  for (const f64 p : {1e-200, 1e-5, 0.02}) EXPECT_GT(mean(p, 25, 3), 25);
  // The likeliest mean of n is n itself; nothing lies above its probability, and n or more is certain for n = 0.
  EXPECT_NEAR(mean(Poisson(7, 7).exactly, 7, 3), 7, 1e-6);
  f64 m = 0;
  Count at;
  i32 ifault = 0;
  POISSONI(0.5, 7, 3, m, at.orMore, at.orFewer, at.exactly, ifault);
  EXPECT_NE(ifault, 0);
  POISSONI(0.5, 0, 1, m, at.orMore, at.orFewer, at.exactly, ifault);
  EXPECT_NE(ifault, 0);
}

TEST(Poisson, Ends) {
  EXPECT_EQ(Poisson(0, 0).exactly, 1);
  EXPECT_EQ(Poisson(0, 3).orFewer, 1);
  EXPECT_EQ(Poisson(0, 3).orMore, 0);
  EXPECT_EQ(Poisson(700, 0).orFewer, std::exp(-700.0));
  EXPECT_EQ(Poisson(1e300, 5).orMore, 1);
  EXPECT_NE(Poisson(-1, 5).ifault, 0);
  EXPECT_NE(Poisson(1, -1).ifault, 0);
}

TEST(Noncentral, FiguresOfR) {
  i32 ifault = 0;
  EXPECT_NEAR(PNCT(3.2, 7, 1.5, ifault), 0.889361692312588, 1e-12);    // pt(3.2, 7, 1.5)
  EXPECT_NEAR(PNCT(-0.4, 30, 0.8, ifault), 0.116023302920149, 1e-12);  // pt(-0.4, 30, 0.8)
  EXPECT_NEAR(TNCT(0.9, 5, 2, ifault), 4.301284511283, 1e-9);          // qt(.9, 5, 2)
  EXPECT_NEAR(TNCT(0.01, 40, -3, ifault), -5.78853622007304, 1e-9);    // qt(.01, 40, -3)
  EXPECT_NEAR(NCHI2(12, 4, 6), 0.689226579210534, 1e-10);              // pchisq(12, 4, 6)
  EXPECT_EQ(ifault, 0);
}

TEST(Noncentral, LawsAcrossTheMethods) {
  i32 ifault = 0;
  EXPECT_EQ(PNCT(1.3, 6, 0, ifault), StudentTails(1.3, 6).lower);
  EXPECT_EQ(PNCT(0, 6, 1.5, ifault), ALNORM(-1.5));
  EXPECT_EQ(NCHI2(3, 5, 0), GammaTails(2.5, 1.5).lower);
  EXPECT_EQ(NCHI2(0, 5, 2), 0);
  for (const f64 delta : {0.4, 3.0, 39.0, 41.0, 1e6}) {
    for (const f64 df : {1.5, 40.0, 1e4, 1e9}) {
      for (const f64 share : {0.9, 1.0, 1.2}) {
        const f64 t = share * delta;
        EXPECT_NEAR(PNCT(t, df, delta, ifault) + PNCT(-t, df, -delta, ifault), 1, 1e-14);
      }
    }
    // Infinite degrees of freedom are the limit of many.
    EXPECT_NEAR(PNCT(delta + 0.7, 1e300, delta, ifault), ALNORM(0.7), 1e-9);
    EXPECT_NEAR(PNCT(delta + 0.7, std::numeric_limits<f64>::infinity(), delta, ifault), ALNORM(0.7), 1e-9);
  }
  // Where series and integral, series and saddle point meet: alike except for what the step itself makes.
  for (const f64 df : {0.7, 12.0, 1e3, 1e7}) {
    for (const f64 t : {35.0, 40.0, 48.0}) {
      const f64 inside = PNCT(t, df, 40, ifault);
      const f64 outside = PNCT(t, df, 40 + 1e-9, ifault);
      EXPECT_NEAR(inside, outside, 5e-9) << t << " " << df;
    }
  }
  for (const f64 z : {-5.0, -0.8, 0.0, 1.0, 4.0}) {
    const f64 x = 1e8 + 3 + z * 2e4;
    EXPECT_NEAR(NCHI2(x, 3, 1e8), NCHI2(x + 1e-4, 3, 1e8 + 1e-4), 1e-9) << z;
  }
}

TEST(Noncentral, SmallTailsKeepTheirPrecision) {
  // Against the 50-digit series, far below and above.
  EXPECT_LT(RelativeError(NoncentralTTails(1.0, 20, 12).lower, accuracy::NoncentralT(1, 20, 12)), 1e-12);
  EXPECT_LT(RelativeError(NoncentralTTails(30, 20, 5).upper, 1 - accuracy::NoncentralT(30, 20, 5)), 1e-12);
  EXPECT_LT(RelativeError(NoncentralChiTails(1.0, 4, 90).lower, accuracy::NoncentralChi(1, 4, 90)), 1e-12);
  EXPECT_LT(RelativeError(NoncentralChiTails(250, 4, 30).upper, 1 - accuracy::NoncentralChi(250, 4, 30)), 1e-12);
}

TEST(Brent, FindsRootsAndTellsFailure) {
  const auto cube = [](f64 x) { return x * x * x - 2; };
  const Root root = BrentRoot(cube, 0, 10, cube(0), cube(10), 1e-15, 300);
  EXPECT_TRUE(root.converged);
  EXPECT_NEAR(root.at, std::cbrt(2.0), 1e-15);
  const auto step = [](f64 x) { return x < 0.3 ? -1.0 : 1.0; };
  EXPECT_NEAR(BrentRoot(step, 0, 1, -1, 1, 1e-12, 300).at, 0.3, 1e-11);
  EXPECT_FALSE(BrentRoot(cube, 5, 10, cube(5), cube(10), 1e-9, 300).converged);
  EXPECT_FALSE(BrentRoot(cube, 0, 10, cube(0), cube(10), 1e-15, 2).converged);
  EXPECT_FALSE(BrentRoot([](f64) { return std::nan(""); }, 0, 1, -1, 1, 1e-9, 300).converged);
}

}  // namespace
}  // namespace tellurix::kernel
