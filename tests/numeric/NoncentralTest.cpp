#include "numeric/Noncentral.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numeric/Elementary.h"
#include "numeric/Missing.h"

namespace tellurix {
namespace {

// Figures of R 4.2.2: uniroot(function(d) pt(t, df, d) - p, c(-20, 36), tol = 1e-13).
TEST(Noncentrality, FromT) {
  const auto delta = [](double p, double t, double df) {
    bool failed = true;
    const double found = NoncentralityFromT(p, t, df, failed);
    EXPECT_FALSE(failed);
    return found;
  };
  EXPECT_NEAR(delta(0.025, 2, 10), 4.10113501708335, 1e-6);
  EXPECT_NEAR(delta(0.975, 2, 10), -0.183517085104815, 1e-6);
  EXPECT_NEAR(delta(0.025, -1.3, 25), 0.705005221208855, 1e-6);
  EXPECT_NEAR(delta(0.975, 8.2, 4), 2.43021105445917, 1e-6);
  EXPECT_NEAR(delta(0.5, 0, 7), 0, 1e-6);
  // Held strictly between 0 and 1: eight normal deviates, not infinitely many.
  EXPECT_NEAR(delta(0, 0, 7), 8.1, 0.1);
  EXPECT_NEAR(delta(1, 0, 7), -8.1, 0.1);
}

// uniroot(function(l) pchisq(x, df, l) - p, c(0, 500), tol = 1e-13).
TEST(Noncentrality, FromChi) {
  bool failed = true;
  EXPECT_NEAR(NoncentralityFromChi(0.2, 3.841458820694124, 1, failed), 7.8488605093262, 2e-6);
  EXPECT_FALSE(failed);
  EXPECT_NEAR(NoncentralityFromChi(0.1, 9.487729036781154, 4, failed), 15.4050518586993, 2e-6);
  EXPECT_NEAR(NoncentralityFromChi(0.5, 300, 50, failed), 250.97029078223, 2e-6);
  EXPECT_FALSE(failed);
}

TEST(Noncentrality, WithoutAnAnswer) {
  bool failed = false;
  // Already at lambda = 0 the probability is 0.95.
  EXPECT_EQ(NoncentralityFromChi(0.96, 3.841458820694124, 1, failed), MissingValue);
  EXPECT_TRUE(failed);
  for (const double bad : {MissingValue, std::nan(""), HUGE_VAL, -1.0}) {
    failed = false;
    EXPECT_EQ(NoncentralityFromChi(bad, 3, 1, failed), MissingValue) << bad;
    EXPECT_TRUE(failed) << bad;
    failed = false;
    EXPECT_EQ(NoncentralityFromChi(0.5, 3, bad, failed), MissingValue) << bad;
    EXPECT_TRUE(failed) << bad;
    failed = false;
    EXPECT_EQ(NoncentralityFromT(bad, 3, 1, failed), MissingValue) << bad;
    EXPECT_TRUE(failed) << bad;
    failed = false;
    EXPECT_EQ(NoncentralityFromT(0.5, 3, bad, failed), bad == HUGE_VAL ? 3 : MissingValue) << bad;
  }
}

TEST(Elementary, ExpMinus1) {
  for (const double x : {0.0, 1e-300, -3e-17, 1e-12, -1e-8, 2e-8, 0.3, -0.6, 0.6969, -0.7, 5.0, -40.0, -800.0, 700.0}) {
    const double exact = static_cast<double>(std::expm1(static_cast<long double>(x)));
    EXPECT_NEAR(ExpMinus1(x), exact, 6e-16 * std::fabs(exact)) << x;
  }
  EXPECT_TRUE(std::isnan(ExpMinus1(std::nan(""))));
  EXPECT_EQ(ExpMinus1(HUGE_VAL), HUGE_VAL);
}

}  // namespace
}  // namespace tellurix
