// The exact distributions of rank statistics in their laws, against printed tables and at their limits; enumeration and
// exact integers are in RankRegions.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kernel/Tails.h"

namespace tellurix::kernel {
namespace {

constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();
constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr i32 Most = std::numeric_limits<i32>::max();

void ExpectClose(f64 got, f64 wanted, f64 tolerance) { EXPECT_NEAR(got, wanted, tolerance * std::fabs(wanted)); }

f64 Prho(i32 n, i32 T) {
  i32 ifault = 0;
  const f64 p = PRHO(n, T, ifault);
  EXPECT_EQ(ifault, 0) << n << " " << T;
  return p;
}

f64 Ksp2(i32 n1, i32 n2, f64 d) {
  i32 ifault = 0;
  const f64 p = KSP2(n1, n2, d, ifault);
  EXPECT_EQ(ifault, 0) << n1 << " " << n2 << " " << d;
  return p;
}

// --- Spearman ---

TEST(Prho, EveryExactDistributionIsSymmetric) {
  for (int n = 3; n <= 22; ++n) {
    SCOPED_TRACE(n);
    const int most = (n * n * n - n) / 3;
    for (int T = 0; T <= most; T += 2) {
      EXPECT_GE(Prho(n, T), Prho(n, T + 2));
      EXPECT_EQ(Prho(n, T - 1), Prho(n, T));  // an odd one is the next even one
      EXPECT_NEAR(Prho(n, T) + Prho(n, most - T + 2), 1, 1e-15);
    }
    // One permutation is at the end, n - 1 are two from it.
    ExpectClose(Prho(n, most), 1 / std::tgamma(n + 1.0), 1e-15);
    ExpectClose(Prho(n, most - 2), n / std::tgamma(n + 1.0), 1e-15);
    EXPECT_EQ(Prho(n, most + 1), 0);
  }
}

// Two-sided 5% and 1% points of J. H. Zar (1972), Significance testing of the Spearman rank correlation coefficient,
// Journal of the American Statistical Association 67:578-580: rho 0.648 and 0.794 for n = 10, 0.447 and 0.570 for n
// = 20.
TEST(Prho, AgreesWithPrintedTables) {
  const auto upperTailOfRho = [](int n, f64 rho) {
    const int T = static_cast<int>(std::floor((1 - rho) * (n * n * n - n) / 6 / 2)) * 2;
    return 1 - Prho(n, T + 2);
  };
  const struct {
    int n;
    f64 rho;
    f64 p;
  } rows[] = {{10, 0.648, 0.025}, {10, 0.794, 0.005}, {20, 0.447, 0.025}, {20, 0.570, 0.005}};
  for (const auto& row : rows) {
    EXPECT_LE(upperTailOfRho(row.n, row.rho - 0.0005), row.p) << row.n;
    EXPECT_GT(upperTailOfRho(row.n, row.rho - 0.013), row.p) << row.n;
  }
}

TEST(Prho, SeriesContinuesTheExactValues) {
  EXPECT_NE(Prho(22, 1000), SpearmanSeries(22, 1000));  // two methods
  EXPECT_EQ(Prho(23, 1000), SpearmanSeries(23, 1000));
  EXPECT_EQ(Prho(1000, 166666500), SpearmanSeries(1000, 166666500));
  EXPECT_NEAR(Prho(1000, 166666500), 0.5, 1e-5);
  EXPECT_EQ(SpearmanSeries(1e6, 1e18 / 3), 0);
  EXPECT_EQ(SpearmanSeries(1, 10), 1);
}

// --- Smirnov ---

// D as it comes from sorted samples: a difference of two quotients.
TEST(Ksp2, TakesRoundedGaps) {
  for (int m = 3; m <= 40; m += 6) {
    for (int n = 4; n <= 45; n += 5) {
      for (int i = 1; i <= m; i += 3) {
        const int j = i * n / m / 2;
        const f64 d = static_cast<f64>(i) / m - static_cast<f64>(j) / n;
        const f64 exact = Ksp2(m, n, static_cast<f64>(i * n - j * m) / (m * n));
        EXPECT_EQ(Ksp2(m, n, d), exact);
        EXPECT_EQ(Ksp2(m, n, 1 - (1 - d)), exact);
      }
    }
  }
}

TEST(Ksp2, LargeSamplesApproachTheLimit) {
  const auto limit = [](f64 x) { return 2 * (std::exp(-2 * x * x) - std::exp(-8 * x * x)); };
  for (const f64 x : {1.0, 1.36, 2.5}) {
    const f64 reflected = Ksp2(1000000, 1000000, x / std::sqrt(5e5));
    ExpectClose(reflected, limit(x), 0.005);
    // Following the paths, between the exact values for equal sizes on both sides.
    const f64 paths = Ksp2(9999, 10001, x / std::sqrt(5e3));
    ExpectClose(paths, Ksp2(10000, 10000, x / std::sqrt(5e3)), 0.08);
    ExpectClose(paths, limit(x), 0.08);
    // The limit itself, where the paths are too many.
    ExpectClose(Ksp2(20000000, 19999999, x / std::sqrt(1e7)), limit(x), 1e-3);
  }
  EXPECT_EQ(Ksp2(1000000, 900001, 0.5), 0);
}

// --- rank sum ---

// Of the 1287 samples of 5 from 13 ranks the sums 15, 16, ..., 20 have 1, 1, 2, 3, 5 and 7, the partitions of 0 to 5
// (F. Wilcoxon 1945, Individual comparisons by ranking methods, Biometrics Bulletin 1:80-83, tabulates such counts): 19
// in all.
TEST(Wmwpx, CountsPartitions) {
  std::vector<i32> ranks(13);
  for (i32 i = 0; i < 13; ++i) ranks[static_cast<std::size_t>(i)] = 2 * i + 2;
  i32 ifault = 0;
  f64 upper = 0;
  // The rank sum W of the first sample is 5 * 8 + 15 - U.
  WMWPX(5, 8, ranks[0], 2 * (55 - 20), upper, ifault);
  ExpectClose(upper, 19.0 / 1287, 1e-14);
}

TEST(Wmwpx, LargeSamplesNeitherOverflowNorLoseTheirSum) {
  std::vector<i32> ranks(400);
  for (int i = 0; i < 400; ++i) ranks[i] = 2 * i + 2;
  i32 ifault = 0;
  f64 upper = 0;
  const f64 lower = WMWPX(60, 340, ranks[0], 20400, upper, ifault);
  EXPECT_EQ(ifault, 0);
  EXPECT_NEAR(lower, upper, 1e-12);  // the middle of a symmetric distribution
  EXPECT_GT(lower, 0.5);
  EXPECT_LT(lower, 0.501);
}

// --- bad arguments ---

TEST(RankStatistics, BadArgumentsSetTheFault) {
  for (const i32 n : {0, 1, -1, -Most, Most}) {
    for (const i32 T : {0, 1, -1, -Most - 1, Most}) {
      i32 ifault = 0;
      const f64 p = PRHO(n, T, ifault);
      EXPECT_EQ(ifault, n < 2 ? 1 : 0);
      EXPECT_TRUE(p >= 0 && p <= 1) << n << " " << T;
    }
  }
  for (const i32 n1 : {0, 1, -1, 7, -Most - 1, Most}) {
    for (const i32 n2 : {0, 1, -1, 12, -Most - 1, Most}) {
      for (const f64 d : {0.0, 0.3, 1.0, -1.0, 1e-300, 3e300, Infinity, -Infinity, NaN}) {
        i32 ifault = 0;
        const f64 p = KSP2(n1, n2, d, ifault);
        // Too small for the limiting distribution beside one too large for counting.
        const bool beyond = std::max(n1, n2) == Most && std::min(n1, n2) < 100 && (d == 0.3 || d == 1);
        EXPECT_EQ(ifault != 0, n1 < 1 || n2 < 1 || std::isnan(d) || beyond) << n1 << " " << n2 << " " << d;
        EXPECT_TRUE(p >= 0 && p <= 1) << n1 << " " << n2 << " " << d;
      }
    }
  }
  const std::vector<i32> ranks{2, 4, 6, 8, 10};
  const std::vector<i32> falling{10, 8, 6, 4, 2};
  const std::vector<i32> negative{-2, 4, 6, 8, 10};
  f64 upper = 0;
  for (const i32 n1 : {0, -1, -Most - 1}) {
    i32 ifault = 0;
    WMWPX(n1, 5, ranks[0], 4, upper, ifault);
    EXPECT_NE(ifault, 0);
    ifault = 0;
    WMWPX(5, n1, ranks[0], 4, upper, ifault);
    EXPECT_NE(ifault, 0);
  }
  for (const auto* wrong : {&falling, &negative}) {
    i32 ifault = 0;
    WMWPX(2, 3, (*wrong)[0], 4, upper, ifault);
    EXPECT_NE(ifault, 0);
  }
  // Sizes whose table would take hours.
  std::vector<i32> many(200002);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<i32>(2 * i + 2);
  i32 tooLarge = 0;
  WMWPX(2, 200000, many[0], 200000, upper, tooLarge);
  EXPECT_EQ(tooLarge, 2);
  for (const i32 twiceU : {-Most - 1, -1, 13, Most}) {
    i32 ifault = 0;
    const f64 lower = WMWPX(2, 3, ranks[0], twiceU, upper, ifault);
    EXPECT_EQ(ifault, 0);
    EXPECT_NEAR(lower, twiceU < 0 ? 0 : 1, 1e-15);
    EXPECT_NEAR(upper, twiceU < 0 ? 1 : 0, 1e-15);
  }
}

}  // namespace
}  // namespace tellurix::kernel
