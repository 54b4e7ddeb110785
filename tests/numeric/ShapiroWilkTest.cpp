#include "numeric/ShapiroWilk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

std::vector<double> Roots(int n) {
  std::vector<double> x;
  for (int i = 1; i <= n; ++i) x.push_back(std::sqrt(i));
  return x;
}

std::vector<double> Logits(int n) {
  std::vector<double> x;
  for (int i = 1; i <= n; ++i) x.push_back(std::log((i - 0.5) / (n - i + 0.5)));
  return x;
}

void ExpectRelative(double got, double expected, double tolerance) {
  EXPECT_NEAR(got, expected, std::fabs(expected) * tolerance);
}

// R 4.2.2: shapiro.test(sqrt(1:n)), shapiro.test(log((1:n - 0.5) / (n - 1:n + 0.5))), W and P of each.
TEST(ShapiroWilk, CompleteSamplesOfEverySize) {
  struct Case {
    int n;
    double rootW, rootP, logitW, logitP;
  };
  for (const auto& c : std::vector<Case>{
           {3, 0.99425572726584899, 0.85511094949094235, 1, 0.99999999999999334},
           {4, 0.98549467066538055, 0.93340265655753707, 0.99962912095527123, 0.99901751543752959},
           {5, 0.97880625222923201, 0.92813364777565943, 0.99961141163378431, 0.99992910179988914},
           {6, 0.97378508809059294, 0.91682690475000239, 0.99967904486565862, 0.99999718187023867},
           {7, 0.96990486551865862, 0.89776325488172959, 0.99974627381552417, 0.99999991126017218},
           {10, 0.96233343016758011, 0.81211796700784111, 0.99985452323199286, 0.99999999999654465},
           {11, 0.96065121091700623, 0.77979015308537003, 0.99985615214029389, 0.9999999999998519},
           {12, 0.95923771280590586, 0.77289384520295212, 0.99984369937112882, 1},
           {20, 0.95305271914217526, 0.41581545241996209, 0.99946421931514395, 1},
           {49, 0.94824977740923488, 0.031389967475989232, 0.99776295904952128, 0.99999931887247262},
           {100, 0.94709449915818555, 0.00053658817539698335, 0.99612375824423649, 0.9942548759919605},
           {500, 0.9467861488066891, 2.0353901420689821e-12, 0.99345198190506245, 0.028829848325870457},
           {1000, 0.94684103606754166, 1.6883898296178894e-18, 0.99283090441672472, 9.3294572514370904e-05},
           {2001, 0.94689006704591605, 2.8238491303062902e-26, 0.99243419203817218, 1.1830938232491241e-08},
           {5000, 0.94693150234563006, 3.8027547015929554e-39, 0.99213543004137528, 5.0033069669889159e-16},
       }) {
    SCOPED_TRACE(c.n);
    const ShapiroWilk roots = TestShapiroWilk(Roots(c.n), 0);
    ExpectRelative(roots.w, c.rootW, 1e-12);
    ExpectRelative(roots.upperP, c.rootP, 1e-9);
    const ShapiroWilk logits = TestShapiroWilk(Logits(c.n), 0);
    ExpectRelative(logits.w, c.logitW, 1e-12);
    ExpectRelative(logits.upperP, c.logitP, 1e-9);
  }
}

// Under the hypothesis P is uniform: of 4000 normal samples with their largest values censored some 5 and some 10 in a
// hundred have a P below 0.05 and 0.1. The bounds are more than three standard errors of the shares wide, and leave
// room for the approximation.
TEST(ShapiroWilk, CensoredNormalSamplesAreRejectedAsOftenAsTheLevelSays) {
  struct Case {
    int n, censored;
  };
  std::mt19937_64 random(20240607);
  const auto uniform = [&] { return (static_cast<double>(random() >> 11) + 0.5) * 0x1p-53; };
  for (const auto& [n, censored] : {Case{20, 4}, Case{50, 10}, Case{50, 25}, Case{100, 20}, Case{100, 70}}) {
    SCOPED_TRACE(testing::Message() << n << " with " << censored << " censored");
    constexpr int Samples = 4000;
    int below05 = 0, below10 = 0;
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int sample = 0; sample < Samples; ++sample) {
      for (double& value : x) {
        value = std::sqrt(-2 * std::log(uniform())) * std::cos(2 * std::numbers::pi * uniform());
      }
      std::ranges::sort(x);
      const double p = TestShapiroWilk(std::span(x).first(static_cast<std::size_t>(n - censored)), censored).upperP;
      below05 += p < 0.05;
      below10 += p < 0.1;
    }
    EXPECT_NEAR(static_cast<double>(below05) / Samples, 0.05, 0.015);
    EXPECT_NEAR(static_cast<double>(below10) / Samples, 0.10, 0.02);
  }
}

TEST(ShapiroWilk, WhatHasNoTest) {
  EXPECT_EQ(TestShapiroWilk(std::vector<double>{1, 2}, 0).w, MissingValue);
  EXPECT_EQ(TestShapiroWilk(Roots(5001), 0).w, MissingValue);
  EXPECT_EQ(TestShapiroWilk(std::vector<double>(9, 4.0), 0).upperP, MissingValue);
  EXPECT_EQ(TestShapiroWilk(Roots(15), 4).w, MissingValue);  // 19 in all
  EXPECT_NE(TestShapiroWilk(Roots(15), 5).w, MissingValue);
  EXPECT_NE(TestShapiroWilk(Roots(15), 60).w, MissingValue);  // four fifths
  EXPECT_EQ(TestShapiroWilk(Roots(15), 61).w, MissingValue);
  EXPECT_EQ(TestShapiroWilk(Roots(15), -1).w, MissingValue);
  EXPECT_EQ(MostCensored(3), 0);
  EXPECT_EQ(MostCensored(4), 16);
  EXPECT_EQ(MostCensored(4999), 1);
  EXPECT_EQ(MostCensored(5000), 0);
}

// The least W of three is 3/4, with P 0; of evenly spaced ones W is 1, with P 1.
TEST(ShapiroWilk, EndsOfThree) {
  const ShapiroWilk least = TestShapiroWilk(std::vector<double>{1, 1, 2}, 0);
  EXPECT_NEAR(least.w, 0.75, 1e-15);
  EXPECT_NEAR(least.upperP, 0, 1e-14);
  const ShapiroWilk most = TestShapiroWilk(std::vector<double>{1, 2, 3}, 0);
  EXPECT_NEAR(most.w, 1, 1e-15);
  EXPECT_NEAR(most.upperP, 1, 1e-7);
}

}  // namespace
}  // namespace tellurix
