// CLMAIN against enumeration and against another program.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/kernel/MatchedSets.h"

namespace tellurix {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

using namespace matched;

// R 4.2.2, survival 3.5-3: clogit(d ~ x1 + x2 + x3 + strata(st), method = "exact", eps = 1e-14).
TEST(ConditionalLikelihood, SeveralCasesInASet) {
  Matched data = SixSets();
  data.Run({0, 0, 0}, 0);
  ASSERT_EQ(data.status, 0);
  EXPECT_NEAR(data.fit.logLikelihood, -30.3082164928258, 1e-12);
  data.Run({0, 0, 0}, 30);
  ASSERT_EQ(data.status, 0);
  EXPECT_LT(data.fit.iterations, 8);
  EXPECT_NEAR(data.fit.logLikelihood, -29.5993812134024, 1e-12);
  const f64 b[] = {-0.1352895444008060, 0.0956606983584501, 0.3219380649621598};
  const f64 v[] = {0.03094905221324287,  -0.00136790454623001, 0.01069354634932007,
                   -0.00136790454623001, 0.02575523759197294,  -0.00216304114323878,
                   0.01069354634932007,  -0.00216304114323878, 0.30486476032679988};
  for (std::size_t j = 0; j < 3; ++j) {
    EXPECT_NEAR(data.b[j], b[j], 1e-13);
    EXPECT_NEAR(data.score[j], 0, 1e-10);
  }
  for (std::size_t j = 0; j < 9; ++j) EXPECT_NEAR(data.covariance[j], v[j], 1e-13);
}

void ExpectEnumerated(Matched& data, const std::vector<f64>& b) {
  const Likelihood wanted = Enumerated(data, b);
  data.Run(b, 0);
  ASSERT_EQ(data.status, 0);
  EXPECT_NEAR(data.fit.logLikelihood, wanted.value, 1e-11);
  for (std::size_t i = 0; i < wanted.score.size(); ++i) EXPECT_NEAR(data.score[i], wanted.score[i], 1e-11);
  for (std::size_t i = 0; i < wanted.information.size(); ++i)
    EXPECT_NEAR(data.information[i], wanted.information[i], 1e-10);
}

// Cases and controls in any number are in TableRegions.cpp.
TEST(ConditionalLikelihood, OneCaseASetAndSetsWithoutEitherGroup) {
  Matched data = SixSets();
  for (std::size_t i = 0; i < 60; ++i) {
    data.isCase[i] = i % 60 == 0 || data.stratum[i] != data.stratum[i == 0 ? 0 : i - 1];
    if (data.stratum[i] == 3) data.isCase[i] = 1;
    if (data.stratum[i] == 5) data.isCase[i] = 0;
  }
  ExpectEnumerated(data, {0.2, 0.1, 0.4});
}

// Pairs as in TableRegions.cpp.
TEST(ConditionalLikelihood, CovariatesInOtherUnitsGiveCoefficientsInTheirs) {
  Matched data{1};
  for (i32 pair = 0; pair < 50; ++pair) {
    for (const i32 flag : {1, 0}) {
      data.stratum.push_back(pair);
      data.isCase.push_back(flag);
      data.covariates.push_back(1e9 + 1e-3 * (pair < 37 ? flag : 1 - flag));
    }
  }
  data.Run({0}, 30);
  ASSERT_EQ(data.status, 0);
  EXPECT_NEAR(data.b[0], 1e3 * std::log(37.0 / 13), 0.5);
}

// A set of 400 cases among 900: C(900, 400) is near 1e269, its square beyond every double. At b = 0 the choices are
// samples without replacement, whose mean and variance are known.
TEST(ConditionalLikelihood, LargeSetsDoNotOverflow) {
  Matched data{1};
  const i32 n = 900;
  for (i32 i = 0; i < 2 * n; ++i) {
    data.stratum.push_back(i / n);
    data.isCase.push_back(i % 9 < 4);
    data.covariates.push_back(i % 10);
  }
  data.Run({0}, 0);
  ASSERT_EQ(data.status, 0);
  EXPECT_NEAR(data.fit.logLikelihood, 2 * (std::lgamma(401.0) + std::lgamma(501.0) - std::lgamma(901.0)), 1e-9);
  EXPECT_NEAR(data.information[0], 2 * 400 * 8.25 * 900 / 899 * 500 / 900, 1e-9);
  data.Run({300}, 0);
  EXPECT_EQ(data.status, 0);
  EXPECT_TRUE(std::isfinite(data.fit.logLikelihood));
}

TEST(ConditionalLikelihood, TellsWhatFails) {
  Matched collinear = SixSets();
  for (i32 i = 0; i < 60; ++i)
    collinear.covariates[static_cast<std::size_t>(120 + i)] = collinear.X(i, 0) - 3 * collinear.X(i, 1);
  collinear.Run({0, 0, 0}, 30);
  EXPECT_EQ(collinear.status, 4);
  EXPECT_EQ(collinear.fit.singular, 3);

  // A covariate that tells every case: the maximum lies at infinity.
  Matched separated = SixSets();
  for (std::size_t i = 0; i < 60; ++i) separated.covariates[i] = separated.isCase[i];
  separated.Run({0, 0, 0}, 25);
  EXPECT_EQ(separated.status, 5);
  EXPECT_EQ(separated.fit.iterations, 25);
  EXPECT_TRUE(std::isfinite(separated.fit.logLikelihood));

  // No set with both groups: nothing is known of the coefficient.
  Matched empty{1, {1, 1, 2}, {1, 1, 0}, {3, 4, 5}};
  EXPECT_EQ(empty.Run({0}, 10).status, 4);

  const auto statusOf = [](auto change, f64 start = 0, i32 iterations = 5, f64 accuracy = 1e-6) {
    Matched data = SixSets();
    change(data);
    return data.Run({start, 0, 0}, iterations, accuracy).status;
  };
  const auto nothing = [](Matched&) {};
  EXPECT_EQ(statusOf(nothing), 0);
  EXPECT_EQ(statusOf([](Matched& m) { m.columns = 0; }), 1);
  EXPECT_EQ(statusOf([](Matched& m) { m.stratum.clear(); }), 1);
  EXPECT_EQ(statusOf([](Matched& m) { m.isCase[7] = 2; }), 1);
  EXPECT_EQ(statusOf(nothing, 0, -1), 1);
  for (const f64 bad : {-1.0, NaN, Infinity}) EXPECT_EQ(statusOf(nothing, 0, 5, bad), 1);
  for (const f64 bad : {NaN, Infinity, -Infinity}) {
    EXPECT_EQ(statusOf(nothing, bad), 2);
    EXPECT_EQ(statusOf([&](Matched& m) { m.covariates[0] = bad; }), 2);
  }
  EXPECT_EQ(statusOf(nothing, 1e308), 2);
}

}  // namespace
}  // namespace tellurix
