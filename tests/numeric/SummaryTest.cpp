#include "numeric/Summary.h"

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <vector>

#include "tests/numeric/ReferenceSets.h"

namespace tellurix {
namespace {

using Column = std::vector<double>;

Summary Of(const Column& x, int centileType = 0) {
  Summary summary;
  EXPECT_TRUE(summary.FullSummaryFromXK(x, static_cast<std::int32_t>(x.size()), "x", 0.95, 0, 0, centileType));
  return summary;
}

TEST(Summary, StatisticalReferenceDatasets) {
  for (const auto& [name, n, sdDigits] : UnivariateSets()) {
    SCOPED_TRACE(name);
    const ReferenceSet set = ReadReferenceSet(name);
    const Summary summary = Of(set.data);
    EXPECT_EQ(summary.n, static_cast<std::int32_t>(n));
    EXPECT_GE(LogRelativeError(summary.mean, set.mean), 15);
    EXPECT_GE(LogRelativeError(summary.sd, set.sd), sdDigits);
    // Weights that are all alike change nothing, whatever they are.
    Summary weighted;
    ASSERT_TRUE(
        weighted.WeightedSummaryFromXK(set.data, Column(set.data.size(), 0.3), summary.n, "x", "w", 0.95, 0, 0));
    EXPECT_NEAR(weighted.sd / summary.sd, 1, 1e-15 * std::fabs(summary.mean / summary.sd));
    EXPECT_NEAR(weighted.kurtosis / summary.kurtosis, 1, 1e-13);
    EXPECT_EQ(weighted.median, summary.median);
  }
}

// Every moment to the last digits, in any scale.
TEST(Summary, MomentsAgainstFiftyDigits) {
  using Real = boost::multiprecision::cpp_bin_float_50;
  Column base(997);
  for (std::size_t i = 0; i < base.size(); ++i) {
    base[i] = std::exp(1.5 * std::fmod(static_cast<double>(i + 1) * 0.6180339887498949, 1.0));
  }
  for (const double scale : {1.0, 1e-60, 1e60, 1e-200, 1e140}) {
    SCOPED_TRACE(scale);
    Column x = base;
    Real sum = 0, logs = 0, m2 = 0, m3 = 0, m4 = 0;
    for (double& value : x) {
      value *= scale;
      sum += value;
      logs += log(Real(value));
    }
    const Real n = static_cast<double>(x.size()), mean = sum / n;
    for (const double value : x) {
      const Real d = value - mean;
      m2 += d * d / n;
      m3 += d * d * d / n;
      m4 += d * d * d * d / n;
    }
    const Summary summary = Of(x);
    const auto relative = [](double got, const Real& wanted) { return static_cast<double>(abs(got / wanted - 1)); };
    EXPECT_LT(relative(summary.sum, sum), 2e-16);
    EXPECT_LT(relative(summary.mean, mean), 3e-16);
    EXPECT_LT(relative(summary.sd, sqrt(m2 * n / (n - 1))), 5e-16);
    EXPECT_LT(relative(summary.geometricMean, exp(logs / n)), 1e-13);
    EXPECT_LT(relative(summary.skewness, m3 / (m2 * sqrt(m2))), 1e-13);
    EXPECT_LT(relative(summary.kurtosis, m4 / (m2 * m2)), 1e-14);
  }
}

TEST(Summary, QuantileRules) {
  const Column four{8, 1, 4, 2}, five{8, 1, 4, 2, 16};
  EXPECT_EQ(Of(four).median, 3);
  EXPECT_EQ(Of(five).median, 4);
  EXPECT_EQ(Of(four, 2).lowerQuartile, 1.25);
  EXPECT_EQ(Of(four, 2).Quantile(0.1), 1);  // (n + 1) p below 1
  EXPECT_EQ(Of(four, 2).Quantile(0.9), 8);
  EXPECT_EQ(Of(four).Quantile(1.5), MissingValue);
  EXPECT_EQ(Of(four).Quantile(0), 1);

  // Weights 1, 1, 2: half of the weight is reached exactly behind the second value.
  Summary weighted;
  ASSERT_TRUE(weighted.WeightedSummaryFromXK(Column{1, 2, 3}, Column{1, 1, 2}, 3, "x", "w", 0.95, 0, 0));
  EXPECT_EQ(weighted.title, "x (weight: w)");
  EXPECT_EQ(weighted.median, 2.5);
  EXPECT_EQ(weighted.weightTotal, 3);
  // With a scale of the caller's they do not sum to n: n p is 1.5, the running weight 0.5, 1, 2.
  ASSERT_TRUE(weighted.WeightedSummaryFromXK(Column{1, 2, 3}, Column{1, 1, 2}, 3, "x", "w", 0.95, 0, 0, 0.5));
  EXPECT_EQ(weighted.median, 3);
  EXPECT_EQ(weighted.weightTotal, 2);
}

TEST(Summary, WhatCannotBeToldIsMissing) {
  Summary summary;
  EXPECT_FALSE(summary.FullSummaryFromX(Column{MissingValue}, "x", 0.95, 5, 95));
  EXPECT_EQ(summary.n, 0);
  EXPECT_FALSE(summary.WeightedSummaryFromXK(Column{1, 2}, Column{0, 0}, 2, "x", "w", 0.95, 5, 95));
  EXPECT_EQ(summary.n, 0);

  const Summary one = Of({MissingValue, 7});
  EXPECT_EQ(one.n, 1);
  EXPECT_EQ(one.median, 7);
  EXPECT_EQ(one.mean, 7);
  EXPECT_EQ(one.sd, MissingValue);
  EXPECT_EQ(one.range, MissingValue);
  EXPECT_EQ(Of({1, 2, 3}).skewness, MissingValue);
  EXPECT_EQ(Of({1, 2, 0}).geometricMean, MissingValue);
  EXPECT_EQ(Of({-1, 1}).cv, MissingValue);
  EXPECT_EQ(Of({5, 5, 5, 5}).kurtosis, MissingValue);
  EXPECT_EQ(Of({5, 5, 5, 5}).variance, 0);
  const Summary vast = Of({1e150, 3e150, 8e150, 2e150});
  EXPECT_EQ(vast.variance, MissingValue);
  EXPECT_EQ(vast.kurtosis, MissingValue);
  EXPECT_EQ(vast.mean, 3.5e150);
  const Summary widest = Of({-1.7e308, 1.7e308, 1.7e308, 1.7e308});
  EXPECT_DOUBLE_EQ(widest.mean, 0.85e308);
  EXPECT_EQ(widest.range, MissingValue);
}

TEST(Summary, LabelsAndOddArguments) {
  Summary summary;
  ASSERT_TRUE(summary.FullSummaryFromX(Column{1, 2, 3}, "x", 1.5, 0, 100));
  EXPECT_EQ(summary.confidenceLabel, "95% CL");
  EXPECT_EQ(summary.centileALabel, "");
  EXPECT_EQ(summary.centileB, MissingValue);
  ASSERT_TRUE(summary.FullSummaryFromXSort(Column{1, 2, 3, MissingValue}, "x", 0.999, 2.5, 97.5));
  EXPECT_EQ(summary.confidenceLabel, "99.9% CL");
  EXPECT_EQ(summary.centileALabel, "2.5");
  EXPECT_EQ(summary.centileA, 1);
  EXPECT_EQ(summary.n, 3);
}

}  // namespace
}  // namespace tellurix
