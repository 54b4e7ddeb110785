// The studentized range and Dunnett's test against printed tables and other programs, and in their laws; further
// figures are those of MultipleComparisonsRegions.cpp.

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
constexpr f64 NoValue = 3e300;
constexpr i32 Most = std::numeric_limits<i32>::max();

void ExpectRelative(f64 got, f64 wanted, f64 tolerance) { EXPECT_NEAR(got, wanted, tolerance * std::fabs(wanted)); }

f64 Dmca(f64 q, i32 k, f64 df, i32 ranges) {
  i32 ifault = 0;
  f64 p = -1;
  EXPECT_EQ(DMCA(q, k, df, ranges, p, ifault), p);
  EXPECT_EQ(ifault, 0) << q << " " << k << " " << df << " " << ranges;
  return p;
}

f64 Dmcc(f64 d, f64 df, const std::vector<i32>& sizes) {
  i32 ifault = 0;
  f64 p = -1;
  EXPECT_EQ(DMCC(d, static_cast<i32>(sizes.size()), df, sizes[0], p, ifault), p);
  EXPECT_EQ(ifault, 0) << d << " " << df;
  return p;
}

f64 Ppd2(f64 p, f64 df, const std::vector<i32>& sizes) {
  i32 ifault = 0;
  f64 d = -1;
  EXPECT_EQ(PPD2(p, static_cast<i32>(sizes.size()), df, sizes[0], d, ifault), d);
  EXPECT_EQ(ifault, 0) << p << " " << df;
  return d;
}

// --- studentized range ---

// Upper 5% and 1% points of E. S. Pearson & H. O. Hartley (1966), Biometrika Tables for Statisticians, volume 1,
// table 29.
TEST(StudentizedRange, AgreesWithPrintedTables) {
  const struct {
    f64 p;
    f64 k;
    f64 df;
    f64 q;
  } rows[] = {{0.05, 2, 10, 3.15},        {0.05, 3, 10, 3.88},  {0.05, 10, 10, 5.60}, {0.05, 20, 10, 6.47},
              {0.05, 3, 20, 3.58},        {0.05, 10, 20, 5.01}, {0.05, 5, 60, 3.98},  {0.05, 3, Infinity, 3.31},
              {0.05, 20, Infinity, 5.01}, {0.01, 3, 10, 5.27},  {0.01, 10, 20, 6.09}, {0.01, 5, Infinity, 4.60}};
  for (const auto& row : rows) EXPECT_NEAR(QUANTSR(row.p, row.k, row.df), row.q, 0.0051) << row.k << " " << row.df;
}

// Two samples: |t| sqrt(2). And large df run into infinite df.
TEST(StudentizedRange, Limits) {
  for (const f64 df : {0.5, 2.0, 7.0, 100.0, 1e9}) {
    for (const f64 q : {1e-6, 0.1, 2.0, 9.0, 1e5}) {
      const f64 wanted = 2 * StudentTails(q / std::sqrt(2.0), df).upper;
      ExpectRelative(PROBSR(q, 2, df), wanted, 1e-14);
      ExpectRelative(Dmca(q, 2, df, 1), wanted, 1e-11);  // by the integral
      ExpectRelative(PROBSR(q, 2.0000001, df), wanted, 1e-5);
    }
  }
  for (const f64 k : {3.0, 60.0, 5000.0}) {
    ExpectRelative(PROBSR(5, k, 1e15), PROBSR(5, k, Infinity), 1e-12);
    ExpectRelative(PROBSR(5, k, 1e19), PROBSR(5, k, Infinity), 1e-12);
    // The integer way and the general one.
    ExpectRelative(PROBSR(5, k * (1 + 1e-13), 10), PROBSR(5, k, 10), 1e-11);
  }
}

TEST(StudentizedRange, FallsWithQAndRisesWithK) {
  for (const f64 df : {0.1, 1.0, 2.0, 30.0, 1e6}) {
    for (f64 q = 1e-3; q < 1e6; q *= 1.7) {
      f64 before = 0;
      for (const f64 k : {2.0, 3.0, 20.0, 50.0, 51.0, 700.0, 3001.0, 1e5, 1e6}) {
        const f64 p = PROBSR(q, k, df);
        EXPECT_GE(p, before * (1 - 1e-9)) << q << " " << k << " " << df;
        EXPECT_LE(p, 1);
        EXPECT_LE(PROBSR(q * 1.01, k, df), p * (1 + 1e-9)) << q << " " << k << " " << df;
        before = p;
      }
    }
  }
}

TEST(StudentizedRange, QuantilesOfSmallTails) {
  for (const f64 p : {1e-300, 1e-100, 1e-15, 1e-12, 1e-6, 0.5, 0.99, 0.999}) {
    for (const f64 k : {2.0, 3.0, 14.0, 200.0, 2.5}) {
      for (const f64 df : {1.0, 2.0, 11.0, 500.0, Infinity}) {
        const f64 q = QUANTSR(p, k, df);
        if (q == NoValue) {
          EXPECT_LT(p, 1e-99);  // beyond the doubles
          continue;
        }
        ExpectRelative(PROBSR(q, k, df), p, 1e-8);
      }
    }
  }
}

// --- Dunnett ---

// R 4.2.2 with mvtnorm 1.1-3, pmvt(lower = -d, upper = d, df, corr, algorithm = TVPACK(abseps = 1e-14)) for two
// comparisons and GenzBretz(maxpts = 2e7) for more, whose error estimates are 1.2e-8, 7.7e-9 and 7.6e-7.
TEST(Dunnett, AgreesWithTheMultivariateT) {
  EXPECT_NEAR(Dmcc(3, 20, {4, 10, 25}), 0.011697968032568, 1e-13);
  EXPECT_NEAR(Dmcc(4, 5, {3, 3, 3}), 0.018020882257319, 1e-13);
  EXPECT_NEAR(Dmcc(2.5, 12, {5, 5, 5, 5}), 0.0690346617131, 2e-8);
  EXPECT_NEAR(Dmcc(2.2, 8, {20, 6, 9, 12, 3}), 0.185789655450, 2e-8);
  EXPECT_NEAR(Dmcc(2.7, 60, {10, 100, 50, 10, 10, 5}), 0.0334880429061, 1e-6);
}

// C. W. Dunnett (1964), New tables for multiple comparisons with a control, Biometrics 20:482-491, two-sided: 1 to 6
// comparisons, equal sizes.
TEST(Dunnett, AgreesWithPrintedTables) {
  const struct {
    f64 p;
    f64 df;
    std::vector<f64> d;
  } rows[] = {{0.05, 5, {2.57, 3.03, 3.29, 3.48, 3.62, 3.73}},  {0.05, 10, {2.23, 2.57, 2.76, 2.89, 2.99, 3.07}},
              {0.05, 20, {2.09, 2.38, 2.54, 2.65, 2.73, 2.80}}, {0.05, Infinity, {1.96, 2.21, 2.35, 2.44, 2.51, 2.57}},
              {0.01, 10, {3.17, 3.53, 3.74, 3.88, 3.99, 4.08}}, {0.01, Infinity, {2.58, 2.79, 2.92, 3.00, 3.06, 3.11}}};
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.d.size(); ++i)
      EXPECT_NEAR(Ppd2(row.p, row.df, std::vector<i32>(i + 2, 9)), row.d[i], 0.0051) << row.df << " " << i;
  }
}

TEST(Dunnett, QuantilesGoBack) {
  const std::vector<i32> equal(8, 6);
  const std::vector<i32> steep{1, 10000, 3, 10000};
  for (const f64 p : {1e-200, 1e-15, 1e-6, 0.01, 0.05, 0.5, 0.99}) {
    for (const f64 df : {0.5, 3.0, 40.0, Infinity}) {
      for (const auto* sizes : {&equal, &steep}) {
        if (sizes == &steep && (p < 1e-6 || df < 1)) continue;
        i32 ifault = 0;
        f64 d = 0;
        PPD2(p, static_cast<i32>(sizes->size()), df, (*sizes)[0], d, ifault);
        if (ifault != 0) {
          EXPECT_LT(p, 1e-99);
          continue;
        }
        ExpectRelative(Dmcc(d, df, *sizes), p, 1e-8);
      }
    }
  }
  // One comparison is Student's test; many samples so much larger than the control's are one comparison.
  ExpectRelative(Dmcc(2, 9, {4, 7}), 2 * StudentTails(2, 9).upper, 1e-14);
  ExpectRelative(Dmcc(2, 9, {1, 100000, 100000}), 2 * StudentTails(2, 9).upper, 0.01);
}

// --- bad arguments ---

TEST(MultipleComparisons, BadArgumentsGiveTheSentinel) {
  const f64 corners[] = {0, 1, 2, 3, -1, 0.5, 1e-300, 1e6, 1e7, 1e300, NoValue, Infinity, -Infinity, NaN};
  const auto sound = [](f64 value, f64 most) { return value == NoValue || (value >= 0 && value <= most); };
  for (const f64 x : corners) {
    for (const f64 k : corners) {
      for (const f64 df : corners) {
        EXPECT_TRUE(sound(PROBSR(x, k, df), 1)) << x << " " << k << " " << df;
        EXPECT_TRUE(sound(QUANTSR(x, k, df), 1e300)) << x << " " << k << " " << df;
        const bool legal = k >= 2 && k <= 1e6 && df >= 0.1;
        EXPECT_EQ(PROBSR(x, k, df) == NoValue, !legal || std::isnan(x)) << x << " " << k << " " << df;
      }
    }
  }
  std::vector<i32> sizes(1000, 5);
  for (const f64 x : corners) {
    for (const i32 k : {0, 1, 2, 3, -1, 1000, 1001, Most, -Most - 1}) {
      for (const f64 df : {0.0, 2.0, -1.0, Infinity, NaN}) {
        for (const i32 last : {0, 1, 5, -1, Most}) {
          sizes[1] = last;
          const auto consistent = [&](auto call, f64 most) {
            i32 ifault = 0;
            f64 value = -1;
            const f64 result = call(value, ifault);
            EXPECT_EQ(result, value);
            EXPECT_EQ(ifault != 0, value == NoValue) << x << " " << k << " " << df << " " << last;
            EXPECT_TRUE(sound(value, most)) << x << " " << k << " " << df << " " << last;
          };
          consistent([&](f64& value, i32& ifault) { return DMCA(x, k, df, last, value, ifault); }, 1);
          consistent([&](f64& value, i32& ifault) { return PPQ2(x, k, df, last, value, ifault); }, 1e300);
          if (k == 1000 && df == 2) continue;  // lawful, but slow so often
          consistent([&](f64& value, i32& ifault) { return DMCC(x, k, df, sizes[0], value, ifault); }, 1);
          consistent([&](f64& value, i32& ifault) { return PPD2(x, k, df, sizes[0], value, ifault); }, 1e300);
        }
      }
    }
  }
}

}  // namespace
}  // namespace tellurix::kernel
