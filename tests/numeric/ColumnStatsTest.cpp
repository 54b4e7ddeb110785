#include "numeric/ColumnStats.h"

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "numeric/Missing.h"
#include "tests/numeric/ReferenceSets.h"

namespace tellurix {
namespace {

TEST(ColumnStats, StatisticalReferenceDatasets) {
  for (const auto& [name, n, sdDigits] : UnivariateSets()) {
    SCOPED_TRACE(name);
    const ReferenceSet set = ReadReferenceSet(name);
    ASSERT_EQ(set.data.size(), n);
    const ColumnStats stats = ComputeColumnStats(set.data);
    EXPECT_EQ(stats.n, static_cast<std::int32_t>(n));
    EXPECT_GE(LogRelativeError(stats.mean, set.mean), 15);
    EXPECT_GE(LogRelativeError(stats.sd, set.sd), sdDigits);

    // Of the doubles as read, all digits can be had.
    using Real = boost::multiprecision::cpp_bin_float_50;
    Real mean = 0;
    for (const double x : set.data) mean += x;
    mean /= static_cast<double>(n);
    Real squares = 0;
    for (const double x : set.data) squares += (x - mean) * (x - mean);
    EXPECT_LT(static_cast<double>(abs(stats.sumOfSquares / squares - 1)), 2e-15);
    EXPECT_LT(static_cast<double>(abs(stats.sd / sqrt(squares / static_cast<double>(n - 1)) - 1)), 2e-15);
  }
}

TEST(ColumnStats, MissingAndShortColumns) {
  const ColumnStats none = ComputeColumnStats(std::vector<double>{MissingValue});
  EXPECT_EQ(none.n, 0);
  EXPECT_EQ(none.mean, MissingValue);
  EXPECT_EQ(none.sd, MissingValue);
  EXPECT_EQ(none.sumOfSquares, 0);
  const ColumnStats one = ComputeColumnStats(std::vector<double>{MissingValue, 7, MissingValue});
  EXPECT_EQ(one.n, 1);
  EXPECT_EQ(one.mean, 7);
  EXPECT_EQ(one.sd, MissingValue);
  EXPECT_EQ(one.sumOfSquares, 0);
  const ColumnStats two = ComputeColumnStats(std::vector<double>{1, MissingValue, 3});
  EXPECT_EQ(two.n, 2);
  EXPECT_EQ(two.mean, 2);
  EXPECT_EQ(two.sumOfSquares, 2);
  EXPECT_EQ(two.sd, std::sqrt(2.0));
}

TEST(ColumnStats, EndsOfTheRangeOfDoubles) {
  const ColumnStats large = ComputeColumnStats(std::vector<double>{1e300, 1e300, 1e300, 5e300});
  EXPECT_NEAR(large.mean / 1e300, 2, 1e-15);
  EXPECT_NEAR(large.sd / 1e300, 2, 1e-15);
  EXPECT_EQ(large.sumOfSquares, std::numeric_limits<double>::infinity());
  const ColumnStats largest = ComputeColumnStats(std::vector<double>(100, 1.7e308));
  EXPECT_NEAR(largest.mean / 1.7e308, 1, 1e-15);
  EXPECT_EQ(largest.sd, 0);
  const ColumnStats small = ComputeColumnStats(std::vector<double>{1e-200, 3e-200});
  EXPECT_NEAR(small.mean / 1e-200, 2, 1e-15);
  EXPECT_NEAR(small.sd / 1e-200, std::sqrt(2.0), 1e-15);
  EXPECT_EQ(ComputeColumnStats(std::vector<double>(1000, 0.1)).sd, 0);
}

}  // namespace
}  // namespace tellurix
