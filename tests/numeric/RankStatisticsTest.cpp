#include "numeric/RankStatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"

namespace tellurix {
namespace {

double Kendall(int S, int n) {
  std::int32_t ifault = 0;
  const double p = KendallUpperP(S, n, ifault);
  EXPECT_EQ(ifault, 0) << S << " " << n;
  return p;
}

// The probabilities themselves are compared with exact integers in tests/kernel/RankRegions.cpp.
TEST(KendallUpperP, AnImpossibleParityCountsAsTheNextOneUp) {
  for (int n = 2; n <= 50; ++n) {
    const int pairs = n * (n - 1) / 2;
    for (int S = pairs; S > -pairs; S -= 2) EXPECT_EQ(Kendall(S - 1, n), Kendall(S, n)) << S << " " << n;
  }
}

// M. G. Kendall & J. D. Gibbons (1990), Rank Correlation Methods, 5th edition, appendix table 1: P of S or more.
TEST(KendallUpperP, AgreesWithThePrintedTable) {
  EXPECT_NEAR(Kendall(4, 4), 0.167, 5e-4);
  EXPECT_NEAR(Kendall(8, 5), 0.042, 5e-4);
  EXPECT_NEAR(Kendall(16, 8), 0.031, 5e-4);
  EXPECT_NEAR(Kendall(21, 10), 0.036, 5e-4);
}

TEST(KendallUpperP, Faults) {
  constexpr std::int32_t Most = std::numeric_limits<std::int32_t>::max();
  const struct {
    std::int32_t S;
    std::int32_t n;
    std::int32_t ifault;
  } rows[] = {{0, 1, 1}, {0, 0, 1}, {0, -Most - 1, 1}, {7, 4, 3}, {-7, 4, 3}, {Most, 50, 3}, {-Most - 1, 60, 3}};
  for (const auto& row : rows) {
    std::int32_t ifault = 0;
    EXPECT_EQ(KendallUpperP(row.S, row.n, ifault), MissingValue);
    EXPECT_EQ(ifault, row.ifault) << row.S << " " << row.n;
  }
  for (const std::int32_t S : {-Most - 1, -1, 0, 1, Most}) {
    const double p = Kendall(S, Most);
    EXPECT_TRUE(p >= 0 && p <= 1) << S;
  }
}

TEST(KendallFromP, GivesTheLargestSOfAtLeastP) {
  for (const int n : {8, 10, 20, 37, 50, 51, 80, 100}) {
    for (const double p : {0.3, 0.1, 0.05, 0.025, 0.01}) {
      std::int32_t ifault = 0;
      std::int32_t S = 0;
      double tau = 0;
      KendallFromP(p, tau, S, n, ifault);
      ASSERT_EQ(ifault, 0) << n << " " << p;
      EXPECT_EQ(tau, S / (n * (n - 1) / 2.0));
      EXPECT_GE(Kendall(S, n), p);
      if (S < n * (n - 1) / 2) {
        EXPECT_LT(Kendall(S + 1, n), p);
      }
    }
  }
  // A probability that is just reached.
  std::int32_t ifault = 0;
  std::int32_t S = 0;
  double tau = 0;
  KendallFromP(Kendall(21, 10), tau, S, 10, ifault);
  EXPECT_EQ(S, 21);
}

TEST(KendallFromP, FaultsWhereThereIsNone) {
  const struct {
    double p;
    int n;
  } rows[] = {{0.6, 10},          {0.3, 5},  // S would be 2
              {0.025, 1},         {0.025, -4},        {0, 10},    {1, 10}, {-1, 10},
              {MissingValue, 10}, {std::nan(""), 10}, {1e-4, 200}};  // P(S >= 1005) is 0.145 for 200
  for (const auto& row : rows) {
    std::int32_t ifault = 0;
    std::int32_t S = 5;
    double tau = 5;
    KendallFromP(row.p, tau, S, row.n, ifault);
    EXPECT_EQ(ifault, 1) << row.p << " " << row.n;
    EXPECT_EQ(S, 0);
    EXPECT_EQ(tau, MissingValue);
  }
}

TEST(HotellingFromP, GivesTheLargestTOfAtMostP) {
  for (const int n : {5, 9, 22, 23, 60, 1000}) {
    for (const double p : {0.4, 0.1, 0.05, 0.025, 0.01}) {
      std::int32_t ifault = 0;
      std::int32_t T = 0;
      double reached = 0;
      HotellingFromP(p, reached, T, n, ifault);
      ASSERT_EQ(ifault, 0) << n << " " << p;
      EXPECT_EQ(T % 2, 0);
      EXPECT_LE(reached, p);
      EXPECT_EQ(reached, 1 - PRHO(n, T, ifault));
      EXPECT_GT(1 - PRHO(n, T + 2, ifault), p);
    }
  }
  for (const double p : {0.0, 1.0, -1.0, MissingValue, std::nan("")}) {
    std::int32_t ifault = 0;
    std::int32_t T = 5;
    double reached = 5;
    HotellingFromP(p, reached, T, 10, ifault);
    EXPECT_EQ(ifault, 1) << p;
    EXPECT_EQ(T, 0);
    EXPECT_EQ(reached, MissingValue);
  }
  for (const int n : {1, -3, std::numeric_limits<std::int32_t>::max()}) {
    std::int32_t ifault = 0;
    std::int32_t T = 5;
    double reached = 5;
    HotellingFromP(0.3, reached, T, n, ifault);
    EXPECT_EQ(ifault, 1) << n;
  }
}

TEST(SpearmanUpperP, IsTheSeriesOfPrhoForEverySize) {
  std::int32_t ifault = 0;
  EXPECT_EQ(SpearmanUpperP(40, 7000, ifault), PRHO(40, 7000, ifault));
  EXPECT_NEAR(SpearmanUpperP(10, 60, ifault), PRHO(10, 60, ifault), 1e-3);
  EXPECT_NE(SpearmanUpperP(10, 60, ifault), PRHO(10, 60, ifault));
  // A T beyond 32 bits: half the range is the middle.
  const double n = 100000;
  EXPECT_NEAR(SpearmanUpperP(100000, (n * n * n - n) / 6, ifault), 0.5, 1e-6);
  EXPECT_EQ(SpearmanUpperP(10, 0, ifault), 1);
  EXPECT_EQ(SpearmanUpperP(10, -4, ifault), 1);
  EXPECT_EQ(SpearmanUpperP(10, 331, ifault), 0);
  EXPECT_GT(SpearmanUpperP(10, 300, ifault), 0);
  EXPECT_EQ(ifault, 0);
  EXPECT_EQ(SpearmanUpperP(1, 4, ifault), 1);
  EXPECT_EQ(ifault, 1);
  SpearmanUpperP(10, MissingValue, ifault);
  EXPECT_EQ(ifault, 1);
  SpearmanUpperP(10, std::nan(""), ifault);
  EXPECT_EQ(ifault, 1);
}

}  // namespace
}  // namespace tellurix
