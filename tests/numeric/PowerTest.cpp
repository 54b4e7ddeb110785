#include "numeric/Power.h"

#include <gtest/gtest.h>

#include <vector>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

// R 4.2.2: power.t.test(n, delta, sd = 1, sig.level, type = "one.sample" and "two.sample", strict = TRUE). Those come
// from the non-central distribution of t, ours from Student's moved by the effect, so that they differ in the second
// decimal, the more the smaller the sample.
TEST(Power, CloseToThatOfTheNoncentralDistribution) {
  struct Case {
    int n;
    double d, alpha, oneSample, twoSample, tolerance;
  };
  for (const auto& c :
       {Case{20, 1, 0.05, 0.9885912948, 0.8689530277, 0.01}, Case{10, 0.5, 0.05, 0.2931756065, 0.1850956563, 0.04},
        Case{100, 0.3, 0.01, 0.6457392842, 0.3183723102, 0.005}}) {
    SCOPED_TRACE(c.n);
    EXPECT_NEAR(PowerOneSample(c.alpha, c.d, 1, c.n), c.oneSample, c.tolerance);
    EXPECT_NEAR(PowerTwoSample(c.alpha, c.d, 1, c.n, 1), c.twoSample, c.tolerance);
    EXPECT_NEAR(PowerUnequalVariance(c.alpha, c.d, c.n, c.n, 1, 1), c.twoSample, c.tolerance);
  }
}

TEST(Power, WithoutEffectIsTheLevel) {
  EXPECT_NEAR(PowerOneSample(0.05, 0, 2, 7), 0.05, 1e-15);
  EXPECT_NEAR(PowerTwoSample(0.01, 0, 2e60, 4, 2.5), 0.01, 1e-15);
  EXPECT_NEAR(PowerUnequalVariance(0.10, 0, 5, 9, 1, 4), 0.05, 1e-15);  // one tail only
}

TEST(Power, DependsOnTheScaleOfNeither) {
  for (const double scale : {1e-200, 1e-60, 1e60, 1e200}) {
    EXPECT_NEAR(PowerTwoSample(0.05, scale, scale, 10, 1.5), PowerTwoSample(0.05, 1, 1, 10, 1.5), 1e-14);
    EXPECT_NEAR(PowerUnequalVariance(0.05, scale, 10, 15, scale, 3 * scale),
                PowerUnequalVariance(0.05, 1, 10, 15, 1, 3), 1e-14);
  }
}

TEST(Power, OfWhatHasNoneIsMissing) {
  EXPECT_EQ(PowerTwoSample(0.05, 1, 0, 10, 1), MissingValue);
  EXPECT_EQ(PowerTwoSample(0.05, 1, MissingValue, 10, 1), MissingValue);
  EXPECT_EQ(PowerTwoSample(0.05, 1, 1, 1, 1), MissingValue);
  EXPECT_EQ(PowerTwoSample(1, 1, 1, 10, 1), MissingValue);
  EXPECT_NE(PowerTwoSample(0.05, 1, 1, 1, 2), MissingValue);
  EXPECT_EQ(PowerUnequalVariance(0.05, 1, 1, 10, 1, 1), MissingValue);
  EXPECT_EQ(PowerUnequalVariance(0.05, 1, 10, 10, 0, 0), MissingValue);
  EXPECT_NE(PowerUnequalVariance(0.05, 1, 10, 10, 0, 1), MissingValue);
  EXPECT_EQ(PowerOneSample(0.05, MissingValue, 1, 10), MissingValue);
}

}  // namespace
}  // namespace tellurix
