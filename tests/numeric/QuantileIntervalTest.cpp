#include "numeric/QuantileInterval.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tellurix {
namespace {

// The rank numbers of the 90% confidence interval of the 2.5th percentile in guideline C28 of the Clinical and
// Laboratory Standards Institute (Defining, establishing, and verifying reference intervals).
TEST(QuantileInterval, PublishedRanksOfTheLowerReferenceLimit) {
  struct Case {
    int first, last, lower, upper;
  };
  for (const auto& c : {Case{119, 132, 1, 7}, Case{133, 160, 1, 8}, Case{161, 187, 1, 9}, Case{188, 189, 2, 9},
                        Case{190, 218, 2, 10}, Case{219, 248, 2, 11}}) {
    for (const int n : {c.first, c.last}) {
      SCOPED_TRACE(n);
      const QuantileRanks ranks = QuantileInterval(n, 0.025, 0.90, true);
      EXPECT_TRUE(ranks.isPossible);
      EXPECT_EQ(ranks.lower, c.lower);
      EXPECT_EQ(ranks.upper, c.upper);
      EXPECT_FALSE(ranks.lowerIsCapped || ranks.upperIsCapped);
      // The upper limit mirrors it.
      const QuantileRanks mirrored = QuantileInterval(n, 0.975, 0.90, true);
      EXPECT_EQ(mirrored.lower, n + 1 - c.upper);
      EXPECT_EQ(mirrored.upper, n + 1 - c.lower);
      EXPECT_NEAR(mirrored.coverage, ranks.coverage, 1e-12);
    }
  }
}

// By sums of binomial probabilities, for every size and many quantiles.
TEST(QuantileInterval, CoverageIsThatOfTheRanks) {
  for (int n = 1; n <= 60; ++n) {
    for (const double p : {0.01, 0.025, 0.25, 0.5, 0.9, 0.995}) {
      for (const bool conservative : {false, true}) {
        SCOPED_TRACE(testing::Message() << n << " values, " << p << (conservative ? ", conservative" : ""));
        const QuantileRanks ranks = QuantileInterval(n, p, 0.95, conservative);
        const auto probability = [&](int k) {
          return std::exp(std::lgamma(n + 1.0) - std::lgamma(k + 1.0) - std::lgamma(n - k + 1.0) + k * std::log(p) +
                          (n - k) * std::log1p(-p));
        };
        if (!ranks.isPossible) {
          // Conservative: not even the whole sample would do.
          EXPECT_TRUE(!conservative || 1 - probability(0) - probability(n) < 0.95);
          continue;
        }
        EXPECT_GE(ranks.lower, 1);
        EXPECT_LE(ranks.upper, n);
        double covered = 0;
        for (int k = ranks.lower; k < ranks.upper; ++k) covered += probability(k);
        EXPECT_NEAR(ranks.coverage, covered, 1e-11);
        EXPECT_TRUE(!conservative || ranks.coverage >= 0.95);
      }
    }
  }
}

}  // namespace
}  // namespace tellurix
