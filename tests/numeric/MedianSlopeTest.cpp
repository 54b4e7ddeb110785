// Figures from R 4.2.2: s the sorted finite slopes over combn(n, 2), N of them; median(s), s[r], s[N + 1 - r] with
// r = floor((N - w) / 2), w = qnorm((1 + confidence) / 2) * sqrt(V), V with the ties of x.
#include "numeric/MedianSlope.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

TEST(MedianSlope, WithTiesInX) {
  // R's data set cars (M. Ezekiel 1930, Methods of Correlation Analysis): speeds and stopping distances.
  const std::vector<double> speed{4,  4,  7,  7,  8,  9,  10, 10, 10, 11, 11, 12, 12, 12, 12, 13, 13,
                                  13, 13, 14, 14, 14, 14, 15, 15, 15, 16, 16, 17, 17, 17, 18, 18, 18,
                                  18, 19, 19, 19, 20, 20, 20, 20, 20, 22, 23, 24, 24, 24, 24, 25};
  const std::vector<double> distance{2,  10, 4,  22, 16, 10, 18, 26, 34, 17, 28, 14, 20, 24, 28,  26, 34,
                                     34, 46, 26, 36, 60, 80, 20, 26, 54, 32, 40, 32, 40, 50, 42,  56, 76,
                                     84, 36, 46, 68, 32, 48, 52, 56, 64, 66, 54, 70, 92, 93, 120, 85};
  const std::vector<double> slopes = PairwiseSlopes(distance, speed);
  ASSERT_EQ(slopes.size(), 1225u);
  EXPECT_EQ(slopes[0], MissingValue);
  const MedianSlope at95 = MedianSlopeWithLimits(slopes, speed, 0.95);
  EXPECT_NEAR(at95.slope, 3.66666666666667, 1e-13);
  EXPECT_NEAR(at95.lower, 2.92307692307692, 1e-13);
  EXPECT_NEAR(at95.upper, 4.5, 1e-13);
  const MedianSlope at90 = MedianSlopeWithLimits(slopes, speed, 0.90);
  EXPECT_NEAR(at90.lower, 3, 1e-13);
  EXPECT_NEAR(at90.upper, 4.30769230769231, 1e-13);
}

// Kendall's S of 160 pairs goes beyond what KendallFromP seeks.
TEST(MedianSlope, OfManyPoints) {
  std::vector<double> x, y;
  for (int i = 1; i <= 160; ++i) {
    x.push_back(i);
    y.push_back(std::round((0.3 * i + 10 * std::sin(i * 1.7) + 5 * std::cos(i * i)) * 1e6) / 1e6);
  }
  const MedianSlope median = MedianSlopeWithLimits(PairwiseSlopes(y, x), x, 0.95);
  EXPECT_NEAR(median.slope, 0.29507522026251, 1e-13);
  EXPECT_NEAR(median.lower, 0.265021085714286, 1e-13);
  EXPECT_NEAR(median.upper, 0.324835125, 1e-13);
}

TEST(MedianSlope, OfFewPoints) {
  // Of 4 points all 6 slopes rise together in 1 of 24 orders: too few for 95 %, enough for 90 %.
  const std::vector<double> x{1, 2, 3, 4};
  const std::vector<double> y{1, 3, 4, 9};
  const std::vector<double> slopes = PairwiseSlopes(y, x);
  const MedianSlope at95 = MedianSlopeWithLimits(slopes, x, 0.95);
  EXPECT_NEAR(at95.slope, 7.0 / 3, 1e-15);
  EXPECT_EQ(at95.lower, MissingValue);
  EXPECT_EQ(at95.upper, MissingValue);
  const MedianSlope at90 = MedianSlopeWithLimits(slopes, x, 0.90);
  EXPECT_EQ(at90.lower, 1);
  EXPECT_EQ(at90.upper, 5);
  const std::vector<double> flat(4, 1.0);
  EXPECT_EQ(MedianSlopeWithLimits(PairwiseSlopes(y, flat), flat, 0.95).slope, MissingValue);
  EXPECT_TRUE(PairwiseSlopes({}, {}).empty());
}

}  // namespace
}  // namespace tellurix
