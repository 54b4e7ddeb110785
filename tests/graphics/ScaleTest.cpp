#include "graphics/Scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

std::string Labels(double low, double high) {
  std::string text;
  for (const TickLabel& label : TickLabels(ChooseScale(low, high), {})) text += (text.empty() ? "" : " ") + label.text;
  return text;
}

// Worked by hand from the description of the algorithm.
TEST(Scale, OfHandWorkedLimits) {
  struct Case {
    double low, high;
    int intervals, minor;
    double start, step;
  };
  for (const Case& one : {
           Case{0, 1, 20, 5, 0, 0.05},
           // Equal limits become 2 and 4: d = 2 / 20.1, step 0.1, start 2; no other candidate takes fewer digits.
           Case{3, 3, 20, 5, 2, 0.1},
           // 20 gives 5 by labels of 25 (cost 2), 25 gives 4 by labels of 20 (cost 1), 24 gives 5 by labels of 20 with
           // the lower score.
           Case{0, 100, 24, 4, 0, 5},
           Case{-1, 1, 20, 5, -1, 0.1},
       }) {
    double low = one.low, high = one.high;
    const AxisScale scale = ChooseScale(low, high);
    EXPECT_EQ(scale.intervals, one.intervals) << one.low << " " << one.high;
    EXPECT_EQ(scale.minorPerMajor, one.minor) << one.low << " " << one.high;
    EXPECT_NEAR(scale.start, one.start, 1e-12);
    EXPECT_NEAR(scale.step, one.step, 1e-12);
  }
  EXPECT_EQ(Labels(0, 1), "0.00 0.25 0.50 0.75 1.00");
  EXPECT_EQ(Labels(3, 3), "2.0 2.5 3.0 3.5 4.0");
}

TEST(Scale, StepsOfOneCandidate) {
  // d = 10 / 20.1 = 0.4975, so 0.5; the start is 0.
  double low = 0, high = 10;
  AxisScale scale;
  ASSERT_TRUE(TickCandidate(low, high, 20, scale));
  EXPECT_DOUBLE_EQ(scale.step, 0.5);
  EXPECT_EQ(scale.start, 0);
  // d = 10 / 15.1 = 0.6623, so 0.75; Fix(-7 / 0.75) = -9, that is -6.75, above -7 + 0.0375: one step lower.
  low = -7, high = 3;
  ASSERT_TRUE(TickCandidate(low, high, 15, scale));
  EXPECT_DOUBLE_EQ(scale.step, 0.75);
  EXPECT_DOUBLE_EQ(scale.start, -7.5);
  EXPECT_FALSE(TickCandidate(low, high, 0, scale));
  // A first tick of 50 is rounder than 60, and 0.7 of 50 to 200 is not needed: 120 / 150 = 0.8.
  scale = {15, 5, 60, 10};
  RoundStart(60, 180, scale);
  EXPECT_EQ(scale.start, 50);
  EXPECT_EQ(scale.intervals, 15);
}

TEST(Scale, PrefersATickAtZero) {
  const AxisScale misses{10, 5, -1.3, 0.25}, hits{20, 5, -1.25, 0.25};
  EXPECT_EQ(CompareScales(misses, hits), ScaleOrder::Better);
  EXPECT_EQ(CompareScales(hits, misses), ScaleOrder::Worse);
}

TEST(Scale, FormatsOfLabels) {
  EXPECT_EQ(AxisNumberFormat({20, 5, 0, 0.05}), "0.00");
  EXPECT_EQ(AxisNumberFormat({20, 5, 0, 10}), "##0");
  EXPECT_EQ(AxisNumberFormat({20, 5, -20, 0.5}), "##0.0");
  EXPECT_EQ(AxisNumberFormat({20, 5, 0, 9e-7}), "Scientific");
  EXPECT_EQ(AxisNumberFormat({20, 5, 0, 1e6}), "Scientific");
  EXPECT_EQ(AxisNumberFormat({20, 5, 0, 1e-5}), "Scientific") << "0.0000 at every label";
  EXPECT_EQ(TickLabels({20, 5, 0, 0.05}, {.decimalSymbol = ","})[1].text, "0,25");
  // Two decimals of the scientific form would not tell these apart.
  EXPECT_EQ(TickLabels({20, 5, 1234567, 0.05}, {})[1].text, "1234567.25");
}

TEST(Scale, LogarithmicLabelsAreAntilogarithms) {
  const AxisScale scale{20, 5, std::log(0.0001), std::log(1e8) / 20};
  std::string text;
  for (const TickLabel& label : TickLabels(scale, {}, true)) text += label.text + " ";
  EXPECT_EQ(text, "1.00E-04 0.01 1 100 1.00E+04 ");
}

// Whatever the limits, a scale comes out, and it takes them in.
TEST(Scale, SurvivesAnyLimits) {
  constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double large = 1e308, small = 1e-308, least = 5e-324, max = std::numeric_limits<double>::max();
  const double limits[]{-inf,  -max, -large,    -MissingValue, -1,    -small, -least, 0,  least,
                        small, 1,    1 + 1e-15, MissingValue,  large, max,    inf,    nan};
  for (const double a : limits) {
    for (const double b : limits) {
      double low = a, high = b;
      const AxisScale scale = ChooseScale(low, high);
      EXPECT_TRUE(std::isfinite(scale.start) && std::isfinite(scale.step)) << a << " " << b;
      EXPECT_GT(scale.step, 0) << a << " " << b;
      EXPECT_LE(low, high);
      EXPECT_FALSE(TickLabels(scale, {}).empty());
      EXPECT_LE(scale.start, low + 0.05 * scale.step + 1e-12 * std::fabs(low)) << a << " " << b;
    }
  }
  double low = 3e300, high = -3e300;  // the sentinels of a column without values
  EXPECT_EQ(ChooseScale(low, high).End(), 1);
  low = 5, high = 2;
  ChooseScale(low, high);
  EXPECT_EQ(low, 2);
  EXPECT_EQ(high, 5);
}

bool HasZero(const AxisScale& scale) {
  for (int i = 0; i <= scale.intervals; ++i) {
    if (scale.Tick(i) == 0) return true;
  }
  return false;
}

// Whether any of the candidates that ChooseScale weighs has a tick at zero.
bool SomeCandidateHasZero(double low, double high) {
  for (const int n : {20, 15, 25, 16, 24}) {
    AxisScale scale;
    if (!TickCandidate(low, high, n, scale)) continue;
    RoundStart(low, high, scale);
    if (HasZero(scale)) return true;
  }
  return false;
}

// A million limits of all sizes. Scales are compared in pairs, and ticks within 1.1e-15 count as zero, so the tick at
// zero is only promised for limits on both sides of zero and well above that.
TEST(Scale, KeepsItsPromisesOnAMillionLimits) {
  std::mt19937_64 random(2026);
  std::uniform_real_distribution<double> uniform(0, 1);
  int zeros = 0;
  for (int i = 0; i < 1'000'000; ++i) {
    double low = (2 * uniform(random) - 1), high = 0;
    const double magnitude = std::pow(10, 24 * uniform(random) - 12);
    switch (i % 4) {
      case 0:  // anywhere
        low *= magnitude;
        high = (2 * uniform(random) - 1) * magnitude;
        break;
      case 1:  // a narrow range far from zero
        low *= magnitude;
        high = low + std::fabs(low) * std::pow(10, -6 * uniform(random));
        break;
      case 2:  // as people type them
        low = std::round(1000 * low) / 10;
        high = low + std::round(1000 * uniform(random)) / 10;
        break;
      default:  // lopsided about zero
        low = -magnitude;
        high = std::pow(10, 24 * uniform(random) - 12);
    }
    if (low > high) std::swap(low, high);
    const AxisScale scale = ChooseScale(low, high);
    const double noise = 1e-9 * scale.step + 4e-16 * std::max(std::fabs(low), std::fabs(high));
    ASSERT_LE(scale.start, low + 0.05 * scale.step + noise) << low << " " << high;
    ASSERT_GE(scale.End(), high - 0.04 * scale.step - noise) << low << " " << high;
    if (low < 0 && high > 0 && scale.start < 0 && scale.End() > 0 && high - low > 1e-10 && !HasZero(scale)) {
      ASSERT_FALSE(SomeCandidateHasZero(low, high)) << low << " " << high;
      ++zeros;
    }
    if (i % 16 != 0 || AxisNumberFormat(scale) == "Scientific") continue;
    for (const TickLabel& label : TickLabels(scale, {})) ASSERT_LE(label.text.size(), 9U) << low << " " << high;
  }
  EXPECT_LT(zeros, 20'000) << "scales that span zero without a tick there";
}

}  // namespace
}  // namespace tellurix
