#include "numeric/TwoMeans.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

TEST(TwoMeans, ErrorsHoldAtEveryScale) {
  // Variances 9 and 16 with 4 and 8 observations: pooled (27 + 112)/10, apart 9/4 + 16/8.
  for (const double scale : {1e-290, 1e-60, 1.0, 1e60, 1e290}) {
    const MeanDifferenceError equal = EqualVarianceError(4, 3 * scale, 8, 4 * scale);
    EXPECT_NEAR(equal.pooledSd / scale, std::sqrt(13.9), 1e-14);
    EXPECT_NEAR(equal.standardError / scale, std::sqrt(13.9 * 3 / 8), 1e-14);
    EXPECT_EQ(equal.df, 10);
    const MeanDifferenceError unequal = UnequalVarianceError(4, 3 * scale, 8, 4 * scale);
    EXPECT_NEAR(unequal.standardError / scale, std::sqrt(4.25), 1e-14);
    EXPECT_NEAR(unequal.df, 4.25 * 4.25 / (2.25 * 2.25 / 3 + 4.0 / 7), 1e-12);
    EXPECT_NEAR(CompareVariances(4, 3 * scale, 8, 4 * scale).f, 16.0 / 9, 1e-14);
  }
}

TEST(TwoMeans, SmallSamples) {
  EXPECT_EQ(EqualVarianceError(1, MissingValue, 1, MissingValue).df, MissingValue);
  EXPECT_EQ(EqualVarianceError(1, MissingValue, 2, 2).standardError, 2 * std::sqrt(1.5));
  EXPECT_EQ(UnequalVarianceError(1, MissingValue, 5, 1).standardError, MissingValue);
  const MeanDifferenceError none = UnequalVarianceError(3, 0, 3, 0);
  EXPECT_EQ(none.standardError, 0);
  EXPECT_EQ(none.df, MissingValue);
}

TEST(TwoMeans, VarianceRatio) {
  // The F distribution on 2 and 2 degrees of freedom has the upper tail 1/(1 + F).
  EXPECT_NEAR(CompareVariances(3, 1, 3, 3).upperP, 0.1, 1e-16);
  EXPECT_NEAR(CompareVariances(3, 3, 3, 1).upperP, 0.1, 1e-16);
  EXPECT_NEAR(CompareVariances(3, std::sqrt(39.0), 3, 1).upperP, 0.025, 1e-16);
  // On a tie the first is the numerator: on 1 and 3 degrees of freedom P(F > 1) = P(|T| > 1) of t on 3.
  EXPECT_NEAR(CompareVariances(2, 5, 4, 5).upperP, 0.39100221895577053, 1e-15);
  EXPECT_EQ(CompareVariances(3, 0, 3, 2).f, OverflowMarker);
  EXPECT_EQ(CompareVariances(3, 0, 3, 2).upperP, 0);
  EXPECT_EQ(CompareVariances(3, 0, 3, 0).f, MissingValue);
  EXPECT_EQ(CompareVariances(1, MissingValue, 3, 2).upperP, MissingValue);
}

}  // namespace
}  // namespace tellurix
