// GLSQR and RCOVARB: certified data sets, exact solutions, aliasing, weights, large data.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/kernel/StrdRegression.h"

namespace tellurix {
namespace {

using namespace strd;

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

// A problem of one response with all its memory.
struct Problem {
  i32 rows;
  i32 columns;
  bool intercept = true;
  std::vector<f64> design;
  std::vector<f64> response;
  std::vector<f64> weights = {};
  std::vector<f64> designLow = {};

  std::vector<f64> r = {};
  std::vector<f64> coefficients = {};
  std::vector<f64> effects = {};
  std::vector<i32> pivot = {};
  f64 totalSS = NaN;
  f64 regressionSS = NaN;
  f64 residualSS = NaN;
  GlsqrFit fit{};
  i32 status = -1;

  i32 P() const { return columns + (intercept ? 1 : 0); }
  f64 R(i32 i, i32 j) const { return r[static_cast<std::size_t>(j * P() + i)]; }
  GlsqrData Data() const {
    return {rows,
            columns,
            1,
            intercept,
            design.data(),
            rows,
            designLow.empty() ? nullptr : designLow.data(),
            response.data(),
            rows,
            weights.empty() ? nullptr : weights.data()};
  }

  Problem& Solve(f64 tolerance = 0) {
    const auto p = static_cast<std::size_t>(P());
    r.assign(p * p, NaN);
    coefficients.assign(p, NaN);
    effects.assign(p, NaN);
    pivot.assign(p, -1);
    fit = {r.data(), P(), coefficients.data(), effects.data(), pivot.data(), &totalSS, &regressionSS, &residualSS};
    GLSQR(Data(), tolerance, fit, status);
    return *this;
  }

  std::vector<f64> Covariance(f64 scale) const {
    std::vector<f64> covariance(r.size(), NaN);
    i32 fault = 0;
    RCOVARB(P(), r.data(), P(), scale, covariance.data(), P(), fault);
    EXPECT_EQ(fault, 0);
    return covariance;
  }
};

void ExpectClose(const std::vector<f64>& got, const std::vector<f64>& wanted, f64 tolerance) {
  ASSERT_EQ(got.size(), wanted.size());
  for (std::size_t i = 0; i < got.size(); ++i)
    EXPECT_NEAR(got[i], wanted[i], tolerance * std::fabs(wanted[i])) << "element " << i;
}

// What the certified figures miss of 15 digits was lost in reading the decimals, and rounded powers of Filip lose half
// the digits more; MatrixRegions.cpp has the fits of all sets.
TEST(LeastSquares, ReadingTheDecimalsLimitsTheDigits) {
  const auto filip = Read("Filip");
  EXPECT_NEAR(LeastLre(ExactFitOf(filip).coefficients, filip.coefficients), 14.0, 0.1);
  EXPECT_LT(LeastLre(ExactFitOf(filip, true).coefficients, filip.coefficients), 8);
}

// So many rows that doubles are tried first; the conditioning asks for more.
TEST(LeastSquares, LargeIllConditionedDataAreFittedInTwicePrecision) {
  constexpr i32 Times = 20'000;
  const auto set = Read("Wampler4");
  Problem many{set.rows * Times, set.columns, true, {}, {}};
  for (i32 j = 0; j <= set.columns; ++j) {
    const f64* from = j < set.columns ? set.design.data() + j * set.rows : set.response.data();
    auto& to = j < set.columns ? many.design : many.response;
    for (i32 time = 0; time < Times; ++time) to.insert(to.end(), from, from + set.rows);
  }
  many.Solve();
  ASSERT_EQ(many.status, 0);
  EXPECT_EQ(many.fit.doubled, 1);
  EXPECT_GE(LeastLre(many.coefficients, set.coefficients), 13);
  EXPECT_NEAR(many.residualSS, Times * set.residualSS, 1e-12 * Times * set.residualSS);
}

// Columns far from 0, as years are: the shift keeps them well-conditioned. Low-order words, zeros here, ask for twice
// the precision.
TEST(LeastSquares, DoublesAgreeWithTwicePrecisionOnLargeData) {
  constexpr i32 Rows = 400'000;
  std::mt19937_64 random(5);
  std::normal_distribution<f64> normal;
  Problem plain{Rows, 4, true, {}, {}};
  for (const f64 centre : {2000.0, -1e5, 0.0, 37.0}) {
    for (i32 i = 0; i < Rows; ++i) plain.design.push_back(centre + normal(random));
  }
  for (i32 i = 0; i < Rows; ++i)
    plain.response.push_back(1e3 + plain.design[static_cast<std::size_t>(i)] + normal(random));
  for (const bool weighted : {false, true}) {
    if (weighted) {
      for (i32 i = 0; i < Rows; ++i) plain.weights.push_back(i % 5 * 0.3);
    }
    Problem doubled = plain;
    doubled.designLow.assign(plain.design.size(), 0.0);
    plain.Solve();
    doubled.Solve();
    ASSERT_EQ(plain.status, 0);
    EXPECT_EQ(plain.fit.doubled, 0);
    EXPECT_EQ(doubled.fit.doubled, 1);
    EXPECT_EQ(plain.fit.rowsUsed, weighted ? Rows / 5 * 4 : Rows);
    ExpectClose({plain.totalSS, plain.regressionSS, plain.residualSS},
                {doubled.totalSS, doubled.regressionSS, doubled.residualSS}, 1e-13);
    // The second to fourth coefficients are near 0: relative to their standard errors.
    const auto errors = doubled.Covariance(1);
    for (std::size_t j = 0; j < 5; ++j) {
      const f64 error = std::sqrt(errors[j * 6]);
      EXPECT_NEAR(plain.coefficients[j], doubled.coefficients[j],
                  1e-11 * error + 1e-13 * std::fabs(doubled.coefficients[j]));
      EXPECT_NEAR(std::sqrt(plain.Covariance(1)[j * 6]), error, 1e-12 * error);
    }
  }
}

TEST(LeastSquares, AliasedColumnsHaveADiagonalOfZero) {
  // Celsius, a constant, Fahrenheit by decimals, an indicator, its complement, something new.
  const std::vector<f64> celsius{36.6, 37.1, 38.4, 39.9, 36.8, 37.7, 40.2};
  const std::vector<f64> group{0, 1, 0, 1, 1, 0, 1};
  const std::vector<f64> other{3, 1, 4, 1, 5, 9, 2};
  Problem problem{7, 6, true, celsius, {2, 7, 1, 8, 2, 8, 1.5}};
  problem.design.insert(problem.design.end(), 7, 0.1);
  for (const f64 c : celsius) problem.design.push_back(1.8 * c + 32);
  problem.design.insert(problem.design.end(), group.begin(), group.end());
  for (const f64 g : group) problem.design.push_back(1 - g);
  problem.design.insert(problem.design.end(), other.begin(), other.end());
  problem.Solve();
  ASSERT_EQ(problem.status, 0);
  EXPECT_EQ(problem.fit.rank, 4);
  EXPECT_EQ(problem.pivot, (std::vector<i32>{0, 1, 4, 6, 2, 3, 5}));
  for (const i32 j : {2, 3, 5}) {
    EXPECT_EQ(problem.R(j, j), 0);
    EXPECT_EQ(problem.coefficients[static_cast<std::size_t>(j)], 0);
  }

  Problem kept{7, 3, true, celsius, problem.response};
  kept.design.insert(kept.design.end(), group.begin(), group.end());
  kept.design.insert(kept.design.end(), other.begin(), other.end());
  kept.Solve();
  EXPECT_EQ(kept.fit.rank, 4);
  const auto& b = problem.coefficients;
  ExpectClose({b[0], b[1], b[4], b[6]}, kept.coefficients, 1e-13);
  EXPECT_NEAR(problem.residualSS, kept.residualSS, 1e-13 * kept.residualSS);
  // The covariance of what is kept stands between rows of zeros.
  const auto all = problem.Covariance(2);
  const auto some = kept.Covariance(2);
  const std::size_t places[] = {0, 1, 4, 6};
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j)
      EXPECT_NEAR(all[places[i] * 7 + places[j]], some[i * 4 + j], 1e-12 * std::fabs(some[i * 4 + j]));
  }
  EXPECT_EQ(all[3 * 7 + 3], 0);
  EXPECT_EQ(all[3 * 7 + 6], 0);
}

TEST(LeastSquares, RIsTheFactorOfTheWeightedDesign) {
  Problem problem{5, 2, true, {1, 2, 4, 8, 9, 1, 0, 2, 1, 7}, {3, 1, 4, 1, 5}, {2, 1, 3, 1, 2}};
  problem.Solve();
  ASSERT_EQ(problem.status, 0);
  const auto x = [&](i32 row, i32 j) {
    return j == 0 ? 1 : problem.design[static_cast<std::size_t>((j - 1) * 5 + row)];
  };
  f64 mean = 0;
  for (i32 row = 0; row < 5; ++row)
    mean += problem.weights[static_cast<std::size_t>(row)] * problem.response[static_cast<std::size_t>(row)] / 9;
  f64 total = 0;
  for (i32 row = 0; row < 5; ++row) {
    const f64 rest = problem.response[static_cast<std::size_t>(row)] - mean;
    total += problem.weights[static_cast<std::size_t>(row)] * rest * rest;
  }
  EXPECT_NEAR(problem.totalSS, total, 1e-13 * total);
  EXPECT_NEAR(problem.totalSS, problem.regressionSS + problem.residualSS, 1e-13 * total);
  EXPECT_NEAR(problem.regressionSS, problem.effects[1] * problem.effects[1] + problem.effects[2] * problem.effects[2],
              1e-13 * total);
  for (i32 i = 0; i < 3; ++i) {
    EXPECT_GT(problem.R(i, i), 0);
    for (i32 j = i; j < 3; ++j) {
      f64 product = 0;
      for (i32 k = 0; k <= i; ++k) product += problem.R(k, i) * problem.R(k, j);
      f64 wanted = 0;
      for (i32 row = 0; row < 5; ++row)
        wanted += problem.weights[static_cast<std::size_t>(row)] * x(row, i) * x(row, j);
      EXPECT_NEAR(product, wanted, 1e-13 * wanted);
    }
  }
}

// Whole weights repeat a row, a weight of 0 leaves it out with whatever stands in it.
TEST(LeastSquares, WeightsRepeatRows) {
  Problem weighted{5, 1, true, {1, 2, 4, NaN, 9}, {3, 1, 4, Infinity, 5}, {2, 1, 3, 0, 1}};
  Problem repeated{7, 1, true, {1, 1, 2, 4, 4, 4, 9}, {3, 3, 1, 4, 4, 4, 5}};
  weighted.Solve();
  repeated.Solve();
  ASSERT_EQ(weighted.status, 0);
  EXPECT_EQ(weighted.fit.rowsUsed, 4);
  ExpectClose(weighted.coefficients, repeated.coefficients, 1e-14);
  ExpectClose({weighted.totalSS, weighted.residualSS}, {repeated.totalSS, repeated.residualSS}, 1e-14);
}

TEST(LeastSquares, NoMagnitudeLosesDigits) {
  const auto set = Read("Longley");
  Problem problem{set.rows, set.columns, true, set.design, set.response};
  for (i32 j = 0; j < set.columns; ++j) {
    for (i32 i = 0; i < set.rows; ++i)
      problem.design[static_cast<std::size_t>(j * set.rows + i)] *= j % 2 == 0 ? 0x1p900 : 0x1p-900;
  }
  problem.weights.assign(static_cast<std::size_t>(set.rows), 0x1p-1000);
  problem.Solve();
  ASSERT_EQ(problem.status, 0);
  for (i32 j = 0; j < set.columns; ++j)
    problem.coefficients[static_cast<std::size_t>(j + 1)] *= j % 2 == 0 ? 0x1p900 : 0x1p-900;
  EXPECT_GE(LeastLre(problem.coefficients, set.coefficients), 13);
  // A sum of squares beyond the range is told, not delivered.
  for (auto& y : problem.response) y *= 0x1p600;
  problem.weights.clear();
  EXPECT_EQ(problem.Solve().status, 5);
}

TEST(LeastSquares, MoreColumnsThanRows) {
  Problem problem{2, 3, true, {1, 2, 5, 4, 7, 7}, {3, 1}};
  problem.Solve();
  ASSERT_EQ(problem.status, 0);
  EXPECT_EQ(problem.fit.rank, 2);
  EXPECT_NEAR(problem.residualSS, 0, 1e-28);
  EXPECT_NEAR(problem.coefficients[1], -2, 1e-14);
}

TEST(LeastSquares, IllegalArguments) {
  const Problem legal{3, 1, true, {1, 2, 4}, {3, 1, 4}, {1, 1, 1}};
  const auto statusOf = [&](auto change, f64 tolerance = 0) {
    Problem problem = legal;
    change(problem);
    return problem.Solve(tolerance).status;
  };
  const auto nothing = [](Problem&) {};
  EXPECT_EQ(statusOf(nothing), 0);
  for (const f64 tolerance : {-1.0, 1.0, NaN, Infinity}) EXPECT_EQ(statusOf(nothing, tolerance), 1) << tolerance;
  for (const i32 rows : {0, -1, std::numeric_limits<i32>::min()})
    EXPECT_EQ(statusOf([&](Problem& p) { p.rows = rows; }), 1) << rows;
  EXPECT_EQ(statusOf([](Problem& p) { p.columns = 0, p.intercept = false; }), 1);
  for (const f64 bad : {NaN, Infinity, -Infinity}) {
    EXPECT_EQ(statusOf([&](Problem& p) { p.design[1] = bad; }), 2);
    EXPECT_EQ(statusOf([&](Problem& p) { p.response[1] = bad; }), 2);
    EXPECT_EQ(statusOf([&](Problem& p) { p.weights[1] = bad; }), 2);
  }
  EXPECT_EQ(statusOf([](Problem& p) { p.weights[1] = -1; }), 3);
  EXPECT_EQ(statusOf([](Problem& p) { p.weights = {0, 0, 0}; }), 3);

  const std::vector<f64> r{2, 1e-17, 1, 3};
  std::vector<f64> covariance(4);
  const auto covarianceStatus = [&](i32 p, i32 leading, f64 scale, std::vector<f64> triangle) {
    i32 status = 0;
    RCOVARB(p, triangle.data(), leading, scale, covariance.data(), 2, status);
    return status;
  };
  EXPECT_EQ(covarianceStatus(2, 2, 1, r), 0);
  EXPECT_EQ(covarianceStatus(0, 2, 1, r), 1);
  EXPECT_EQ(covarianceStatus(2, 1, 1, r), 1);
  EXPECT_EQ(covarianceStatus(3, 3, 1, r), 1);
  EXPECT_EQ(covarianceStatus(2, 2, NaN, r), 2);
  EXPECT_EQ(covarianceStatus(2, 2, 1, {2, 0.5, 1, 3}), 2);
  EXPECT_EQ(covarianceStatus(2, 2, 1, {2, 0, Infinity, 3}), 2);
  EXPECT_EQ(covarianceStatus(2, 2, 1, {1e-300, 0, 1, 3}), 3);
}

}  // namespace
}  // namespace tellurix
