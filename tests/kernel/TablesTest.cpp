// RCNWA at its limits and against another program; GENCMH against a published example and another program.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

struct Exact {
  f64 pTable = NaN;
  f64 p = NaN;
  i32 status = -1;
};

Exact TestOf(const std::vector<f64>& table, i32 rows, const RcnwaLimits& limits = {}) {
  Exact exact;
  RCNWA(table.data(), rows, static_cast<i32>(table.size()) / rows, limits, exact.pTable, exact.p, exact.status);
  return exact;
}

// Empty rows and columns, and the order of the rest, change nothing; enumeration is in TableRegions.cpp.
TEST(Network, EmptyRowsAndOrderDoNotMatter) {
  const Exact job = TestOf({1, 2, 1, 0, 3, 3, 6, 1, 10, 10, 14, 9, 6, 7, 12, 11}, 4);
  ASSERT_EQ(job.status, 0);
  const Exact same = TestOf({0, 0, 0, 0, 0, 10, 0, 10, 9, 14, 1, 0, 2, 0, 1, 6, 0, 7, 11, 12, 3, 0, 3, 1, 6}, 5);
  EXPECT_NEAR(same.p, job.p, 1e-12);
  EXPECT_NEAR(same.pTable, job.pTable, 1e-12 * job.pTable);
}

// R 4.2.2: fisher.test(..., workspace = 2e8) and, hybrid, the exact P once more.
TEST(Network, HybridIsNearTheExactOne) {
  const std::vector<f64> table{8, 3, 5, 6, 0, 2, 3, 10, 1, 4, 7, 5, 2, 9, 4, 3, 6, 1};
  EXPECT_NEAR(TestOf(table, 3).p, 0.01133449052960891, 1e-9);
  EXPECT_NEAR(TestOf(table, 3, {.hybrid = 1}).p, 0.01133449052960891, 2e-4);
  const std::vector<f64> large{25, 10, 8, 7, 12, 22, 9, 11, 5, 14, 30, 12};
  EXPECT_NEAR(TestOf(large, 4).p, 1.18477989829302e-06, 1e-12);
  EXPECT_NEAR(TestOf(large, 4, {.hybrid = 1}).p, 1.2e-6, 6e-7);
  // So small a table that chi-square must not be used.
  EXPECT_EQ(TestOf({3, 0, 1, 2, 1, 4, 0, 2, 2}, 3, {.hybrid = 1}).p, TestOf({3, 0, 1, 2, 1, 4, 0, 2, 2}, 3).p);
}

struct Watch {
  f64 share = -1;
  int calls = 0;
  int stopAfter = 0;
  bool rising = true;
};

i32 Look(void* context, f64 share) {
  Watch& watch = *static_cast<Watch*>(context);
  watch.rising = watch.rising && share >= watch.share && share <= 1;
  watch.share = share;
  return ++watch.calls != watch.stopAfter;
}

// A table beyond reach: whichever limit comes first is told, and the table's own probability is there.
TEST(Network, GivesUpAtItsLimits) {
  std::vector<f64> table;
  for (int i = 0; i < 64; ++i) table.push_back(4 + i * 7 % 5);
  EXPECT_EQ(TestOf(table, 8, {.memory = 1e6}).status, 4);
  EXPECT_EQ(TestOf(table, 8, {.work = 2e7}).status, 5);
  Watch watch{.stopAfter = 2};
  const Exact stopped = TestOf(table, 8, {.poll = Look, .context = &watch});
  EXPECT_EQ(stopped.status, 6);
  EXPECT_EQ(watch.calls, 2);
  EXPECT_TRUE(watch.rising);
  EXPECT_GT(stopped.pTable, 0);
  EXPECT_EQ(stopped.p, 0);
  // Columns that can be spread in more ways than will ever be counted.
  std::vector<f64> wide(100, 9e4);
  wide[0] = 95e3;
  EXPECT_EQ(TestOf(wide, 10, {.work = 2e7}).status, 5);
  EXPECT_EQ(TestOf({1e8, 1, 1, 1e8}, 2).status, 4);
}

TEST(Network, IllegalArguments) {
  EXPECT_EQ(TestOf({1, 2, 3, 4}, 1).status, 1);
  EXPECT_EQ(TestOf({1, 2, 3, 4}, 4).status, 1);
  EXPECT_EQ(TestOf({1, 2, 3, 4}, -2).status, 1);
  for (const f64 bad : {-1.0, 0.5, NaN, Infinity, -Infinity}) EXPECT_EQ(TestOf({1, bad, 3, 4}, 2).status, 2) << bad;
  EXPECT_EQ(TestOf({0, 0, 0, 0}, 2).status, 3);
  EXPECT_EQ(TestOf({1, 3e300, 3, 4}, 2).status, 3);
  const Exact single = TestOf({3, 0, 4, 0, 5, 0}, 2);
  EXPECT_EQ(single.status, 0);
  EXPECT_EQ(single.p, 1);
  EXPECT_NEAR(single.pTable, 1, 1e-14);
}

struct Cmh {
  f64 correlation = NaN;
  f64 meanScore = NaN;
  f64 association = NaN;
  i32 df[3] = {-1, -1, -1};
  i32 status = -1;
};

Cmh CmhOf(const std::vector<f64>& table, i32 rows, i32 columns, const f64* rowScores, const f64* columnScores) {
  Cmh cmh;
  GENCMH(table.data(), rows, columns, static_cast<i32>(table.size()) / (rows * columns), rowScores, columnScores,
         cmh.correlation, cmh.meanScore, cmh.association, cmh.df, cmh.status);
  return cmh;
}

// Job satisfaction by income and gender, A. Agresti (2002), Categorical Data Analysis, 2nd edition, 7.5: 6.1563, 9.0342
// and 10.2001; further digits by R 4.2.2 (mantelhaen.test for the last, matrix formulas for all).
const std::vector<f64> Satisfaction{1, 2, 0, 0, 3, 3, 1, 2, 11, 17, 8, 4, 2, 3, 5, 2,
                                    1, 0, 0, 0, 1, 3, 0, 1, 2,  5,  7, 9, 1, 1, 3, 6};
const f64 Income[] = {3, 10, 20, 35};
const f64 Contentment[] = {1, 3, 4, 5};

TEST(GeneralizedCmh, PublishedExample) {
  const Cmh cmh = CmhOf(Satisfaction, 4, 4, Income, Contentment);
  ASSERT_EQ(cmh.status, 0);
  EXPECT_NEAR(cmh.correlation, 6.15630149185071, 1e-12);
  EXPECT_NEAR(cmh.meanScore, 9.03422210916286, 1e-12);
  EXPECT_NEAR(cmh.association, 10.2000887577686, 1e-12);
  EXPECT_EQ(cmh.df[0], 1);
  EXPECT_EQ(cmh.df[1], 3);
  EXPECT_EQ(cmh.df[2], 9);
}

// R's HairEyeColor, as above.
TEST(GeneralizedCmh, AnotherExample) {
  const f64 scores[] = {1, 2, 4, 8};
  const Cmh cmh = CmhOf(
      {32, 53, 10, 3, 11, 50, 10, 30, 10, 25, 7, 5, 3, 15, 7, 8, 36, 66, 16, 4, 9, 34, 7, 64, 5, 29, 7, 5, 2, 14, 7, 8},
      4, 4, nullptr, scores);
  ASSERT_EQ(cmh.status, 0);
  EXPECT_NEAR(cmh.correlation, 13.2942966151804, 1e-12);
  EXPECT_NEAR(cmh.meanScore, 19.1983342493324, 1e-12);
  EXPECT_NEAR(cmh.association, 140.283332051384, 1e-11);
}

TEST(GeneralizedCmh, WhatIsEmptyTakesItsDegreesAway) {
  const Cmh full = CmhOf(Satisfaction, 4, 4, Income, Contentment);
  // A fifth row that is empty, and a stratum of one.
  std::vector<f64> wider;
  for (std::size_t i = 0; i < Satisfaction.size(); ++i) {
    wider.push_back(Satisfaction[i]);
    if (i % 4 == 3) wider.push_back(0);
  }
  wider.insert(wider.end(), 20, 0.0);
  wider[43] = 1;
  const f64 income[] = {3, 10, 20, 35, 99};
  const Cmh cmh = CmhOf(wider, 5, 4, income, Contentment);
  ASSERT_EQ(cmh.status, 0);
  EXPECT_NEAR(cmh.correlation, full.correlation, 1e-12);
  EXPECT_NEAR(cmh.meanScore, full.meanScore, 1e-12);
  EXPECT_NEAR(cmh.association, full.association, 1e-12);
  EXPECT_EQ(cmh.df[1], 3);
  EXPECT_EQ(cmh.df[2], 9);
  const f64 alike[] = {7, 7, 7, 7};
  const Cmh flat = CmhOf(Satisfaction, 4, 4, Income, alike);
  EXPECT_EQ(flat.df[0], 0);
  EXPECT_EQ(flat.df[1], 0);
  EXPECT_EQ(flat.correlation, 0);
  EXPECT_NEAR(flat.association, full.association, 1e-12);
}

TEST(GeneralizedCmh, IllegalArguments) {
  EXPECT_EQ(CmhOf({1, 2}, 1, 2, nullptr, nullptr).status, 1);
  EXPECT_EQ(CmhOf({1, 2}, 2, 2, nullptr, nullptr).status, 1);
  EXPECT_EQ(CmhOf({1, 2, 3, 4}, -2, -2, nullptr, nullptr).status, 1);
  const i32 most = std::numeric_limits<i32>::max();
  Cmh huge;
  const f64 count = 1;
  GENCMH(&count, most, most, most, nullptr, nullptr, huge.correlation, huge.meanScore, huge.association, huge.df,
         huge.status);
  EXPECT_EQ(huge.status, 1);
  for (const f64 bad : {-1.0, NaN, Infinity, 3e300}) {
    EXPECT_EQ(CmhOf({1, bad, 3, 4}, 2, 2, nullptr, nullptr).status, 2);
    if (bad != -1) {
      const f64 scores[] = {1, bad};
      EXPECT_EQ(CmhOf({1, 2, 3, 4}, 2, 2, scores, nullptr).status, 2);
      EXPECT_EQ(CmhOf({1, 2, 3, 4}, 2, 2, nullptr, scores).status, 2);
    }
  }
  EXPECT_EQ(CmhOf({1, 0, 0, 0}, 2, 2, nullptr, nullptr).status, 3);
}

}  // namespace
}  // namespace tellurix
