// The sorts of columns and records, and the kernel's ranks on the same order.

#include "numeric/Sorting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"

namespace tellurix {
namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

struct Record {
  double value;
  int place;
};

// Values with many ties and the awkward ones, `count` of them.
std::vector<Record> Drawn(int count) {
  std::mt19937_64 random(3);
  std::normal_distribution<double> normal;
  const double awkward[] = {0.0, -0.0, Infinity, -Infinity, 5e-324, -5e-324, 1e308, 7.0};
  std::vector<Record> records;
  for (int i = 0; i < count; ++i) {
    const double x = i % 3 == 0 ? std::round(3 * normal(random)) : i % 3 == 1 ? awkward[random() % 8] : normal(random);
    records.push_back({x, i});
  }
  return records;
}

// Both sides of the change from comparing to distributing.
TEST(Sorting, IsStableInBothDirections) {
  for (const int count : {0, 1, 2, 255, 256, 5000}) {
    for (const auto direction : {SortDirection::Rising, SortDirection::Falling}) {
      auto sorted = Drawn(count);
      auto wanted = sorted;
      DxSortArrayMulti(sorted, &Record::value, direction);
      std::stable_sort(wanted.begin(), wanted.end(), [&](const Record& a, const Record& b) {
        return direction == SortDirection::Rising ? a.value < b.value : a.value > b.value;
      });
      for (int i = 0; i < count; ++i)
        ASSERT_EQ(sorted[static_cast<std::size_t>(i)].place, wanted[static_cast<std::size_t>(i)].place)
            << count << " " << i;
    }
  }
}

TEST(Sorting, MissingValuesComeLast) {
  std::vector<double> values{3, MissingValue, -1, Infinity, NaN, 4};
  DxSortArray(values);
  EXPECT_EQ(std::vector<double>(values.begin(), values.begin() + 5),
            (std::vector<double>{-1, 3, 4, Infinity, MissingValue}));
  EXPECT_TRUE(std::isnan(values[5]));
  EXPECT_EQ(SortedOrder(std::vector<double>{3, MissingValue, -1, Infinity, NaN, 4}, SortDirection::Falling),
            (std::vector<std::uint32_t>{3, 5, 0, 2, 1, 4}));
}

TEST(Sorting, ByStratumThenTime) {
  const std::vector<double> stratum{2, 1, 2, 1, 1};
  const std::vector<double> time{5, 3, 4, 3, 1};
  const std::vector<std::span<const double>> columns{stratum, time};
  EXPECT_EQ(SortedOrder(columns), (std::vector<std::uint32_t>{4, 1, 3, 2, 0}));
}

std::vector<f64> RanksOf(const std::vector<f64>& data, i32 method, f64& correction) {
  std::vector<f64> ranks(data.size());
  RANK(data.data(), ranks.data(), static_cast<i32>(data.size()), method, correction);
  return ranks;
}

TEST(Rank, TiesShareTheirMeanRank) {
  const std::vector<f64> data{2, 7, 2, -1, 2, 7, 0.0, -0.0};
  const f64 terms[] = {0, 2 + 0.5 + 0.5, 3 + 1 + 1, 3 * 2 * 11 + 2 * 9 + 2 * 9, 6};
  for (i32 method = 0; method <= 4; ++method) {
    f64 correction = NaN;
    EXPECT_EQ(RanksOf(data, method, correction), (std::vector<f64>{5, 7.5, 5, 1, 5, 7.5, 2.5, 2.5}));
    EXPECT_EQ(correction, terms[method]) << method;
  }
  f64 correction = NaN;
  EXPECT_EQ(RanksOf({4, 4, 4, 4}, 1, correction), (std::vector<f64>{2.5, 2.5, 2.5, 2.5}));
  EXPECT_EQ(RanksOf({NaN, Infinity, 1, NaN}, 2, correction), (std::vector<f64>{3.5, 2, 1, 3.5}));
  EXPECT_EQ(correction, 1);
}

TEST(Rank, OutOfRangeDoesNothing) {
  f64 data = 1;
  f64 rank = -7;
  f64 correction = NaN;
  for (const i32 n : {0, -1, std::numeric_limits<i32>::min()}) {
    RANK(&data, &rank, n, 1, correction);
    EXPECT_EQ(rank, -7);
    EXPECT_EQ(correction, 0);
  }
  for (const i32 method : {-1, 5, std::numeric_limits<i32>::max()}) {
    RANK(&data, &rank, 1, method, correction);
    EXPECT_EQ(rank, 1);
    EXPECT_EQ(correction, 0);
  }
}

}  // namespace
}  // namespace tellurix
