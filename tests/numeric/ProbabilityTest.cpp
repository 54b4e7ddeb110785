#include "numeric/Probability.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "numeric/Missing.h"
#include "numeric/Power.h"

namespace tellurix {
namespace {

TEST(Probability, MissingAndIllegalGiveMissing) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(UpperPFromChi(MissingValue, 1), MissingValue);
  EXPECT_EQ(UpperPFromChi(1, MissingValue), MissingValue);
  EXPECT_EQ(UpperPFromChi(-1, 1), MissingValue);
  EXPECT_EQ(UpperPFromChi(1, 0), MissingValue);
  EXPECT_EQ(UpperPFromF(MissingValue, 1, 1), MissingValue);
  EXPECT_EQ(UpperPFromF(2, 0, 5), MissingValue);
  EXPECT_EQ(UpperPFromF(2, 5, -1), MissingValue);
  EXPECT_EQ(UpperPFromT(MissingValue, 4), MissingValue);
  EXPECT_EQ(UpperPFromT(1, 0), MissingValue);
  EXPECT_EQ(UpperPFromT(0, 0), MissingValue);
  EXPECT_EQ(UpperPFromT(1, -3), MissingValue);
  EXPECT_EQ(UpperPFromT(std::nan(""), 3), MissingValue);
  EXPECT_EQ(OneSidedP(MissingValue), MissingValue);
  EXPECT_EQ(TwoSidedP(MissingValue), MissingValue);
  EXPECT_EQ(FoldP(MissingValue), MissingValue);
  EXPECT_EQ(UpperPFromT(infinity, 3), 0);
}

TEST(Probability, UpperTails) {
  EXPECT_EQ(UpperPFromF(0, 3, 4), 1);
  EXPECT_EQ(UpperPFromT(0, 2.5), 0.5);
  EXPECT_EQ(UpperPFromChi(0, 4), 1);
  // exp(-chi/2) on 2 degrees of freedom, far out too.
  for (const double chi : {0.5, 9.21, 1200.0}) {
    EXPECT_NEAR(UpperPFromChi(chi, 2) / std::exp(-chi / 2), 1, 1e-14);
  }
  // T on 2 degrees of freedom: both signs; and one whose square leaves the range of doubles.
  const auto upper = [](double t) { return 0.5 - t / (2 * std::sqrt(2 + t * t)); };
  for (const double t : {-3.0, -0.25, 0.25, 3.0}) EXPECT_NEAR(UpperPFromT(t, 2), upper(t), 1e-15);
  EXPECT_NEAR(UpperPFromT(1e200, 1) * 1e200, 1 / std::acos(-1.0), 1e-12);
  EXPECT_EQ(UpperPFromT(-1e200, 1), 1);
  // F on 1 and df is the square of T on df; F on 2 and 10 degrees of freedom has (1 + f/5)^-5.
  for (const double df : {1.0, 6.5, 3e5}) EXPECT_NEAR(UpperPFromF(4, 1, df), 2 * UpperPFromT(2, df), 1e-15);
  EXPECT_NEAR(UpperPFromF(1e12, 2, 10) * std::pow(2e11, 5), 1, 1e-10);
}

TEST(Probability, CriticalValues) {
  double value = 0;
  double alpha = 0;
  CriticalValue(0, value, 0.95, alpha);
  EXPECT_NEAR(value, 1.959963984540054, 1e-14);
  EXPECT_NEAR(alpha, 0.05, 1e-16);
  CriticalValue(10, value, 0.95, alpha);
  EXPECT_NEAR(UpperPFromT(value, 10), 0.025, 1e-15);
  CriticalValue(10, value, 0, alpha);
  EXPECT_EQ(value, 0);
  CriticalValue(-1, value, 0.95, alpha);
  EXPECT_EQ(value, MissingValue);
  CriticalValue(0, value, 1, alpha);
  EXPECT_EQ(value, MissingValue);
  CriticalValue(5, value, MissingValue, alpha);
  EXPECT_EQ(value, MissingValue);
  EXPECT_EQ(alpha, MissingValue);
}

TEST(Probability, FoldedTails) {
  EXPECT_EQ(FoldP(0.75), 0.25);
  EXPECT_EQ(FoldP(0.1), 0.1);
  EXPECT_EQ(TwoSidedP(0), 1);
  for (const double z : {-30.0, -1.0, 2.5}) {
    EXPECT_NEAR(TwoSidedP(z) / std::erfc(std::fabs(z) / std::sqrt(2.0)), 1, 1e-12);
    EXPECT_EQ(OneSidedP(z), OneSidedP(-z));
  }
}

TEST(Power, OneSampleOnTwoDegreesOfFreedom) {
  // Tail and critical value in closed form.
  const auto upper = [](double t) { return 0.5 - t / (2 * std::sqrt(2 + t * t)); };
  for (const double d : {-1.2, 0.0, 0.3, 4.0}) {
    const double p = 0.05 / 2;
    const double critical = (1 - 2 * p) / std::sqrt(2 * p * (1 - p));
    const double error = 0.8 / std::sqrt(3.0);
    const double wanted = 1 - (upper(d / error - critical) - upper(d / error + critical));
    EXPECT_NEAR(PowerOneSample(0.05, d, 0.8, 3), wanted, 1e-14) << d;
  }
  EXPECT_NEAR(PowerOneSample(1e-9, 0, 1, 30) / 1e-9, 1, 1e-10);
}

TEST(Power, OneSampleWithoutAnAnswer) {
  EXPECT_EQ(PowerOneSample(0.05, 1, 0, 10), MissingValue);
  EXPECT_EQ(PowerOneSample(0.05, 1, 1, 1), MissingValue);
  EXPECT_EQ(PowerOneSample(MissingValue, 1, 1, 10), MissingValue);
  EXPECT_EQ(PowerOneSample(0.05, MissingValue, 1, 10), MissingValue);
  EXPECT_EQ(PowerOneSample(0.05, 1, MissingValue, 10), MissingValue);
  EXPECT_EQ(PowerOneSample(0, 1, 1, 10), MissingValue);
  EXPECT_EQ(PowerOneSample(-0.05, 1, 1, 10), MissingValue);
}

}  // namespace
}  // namespace tellurix
