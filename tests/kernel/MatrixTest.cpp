// Singular values, inverses of information matrices, the order of risk sets; their errors are in MatrixRegions.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

struct Decomposition {
  i32 m;
  i32 n;
  std::vector<f64> a;
  std::vector<f64> s = {};
  std::vector<f64> u = {};
  std::vector<f64> v = {};
  i32 status = -1;

  std::size_t K() const { return static_cast<std::size_t>(std::min(m, n)); }
  Decomposition& Run() {
    s.assign(K(), NaN);
    u.assign(static_cast<std::size_t>(m) * K(), NaN);
    v.assign(static_cast<std::size_t>(n) * K(), NaN);
    SVD(m, n, a.data(), m, s.data(), u.data(), v.data(), status);
    return *this;
  }
};

Decomposition Filled(i32 m, i32 n, const std::function<f64(i32, i32)>& element) {
  Decomposition matrix{m, n, {}};
  for (i32 j = 0; j < n; ++j) {
    for (i32 i = 0; i < m; ++i) matrix.a.push_back(element(i, j));
  }
  return matrix;
}

// A = U S V', both sets of vectors orthonormal.
void ExpectDecomposes(const Decomposition& x, f64 tolerance) {
  const auto m = static_cast<std::size_t>(x.m);
  const auto n = static_cast<std::size_t>(x.n);
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      f64 sum = 0;
      for (std::size_t k = 0; k < x.K(); ++k) sum += x.u[k * m + i] * x.s[k] * x.v[k * n + j];
      ASSERT_NEAR(sum, x.a[j * m + i], tolerance * x.s[0]);
    }
  }
  const auto orthonormal = [&](const std::vector<f64>& vectors, std::size_t length) {
    for (std::size_t p = 0; p < x.K(); ++p) {
      for (std::size_t q = 0; q <= p; ++q) {
        f64 sum = 0;
        for (std::size_t i = 0; i < length; ++i) sum += vectors[p * length + i] * vectors[q * length + i];
        ASSERT_NEAR(sum, p == q ? 1 : 0, tolerance);
      }
    }
  };
  orthonormal(x.u, m);
  orthonormal(x.v, n);
}

TEST(Svd, ProductOfTheFactorsIsTheMatrix) {
  std::mt19937_64 random(4);
  std::normal_distribution<f64> normal;
  std::vector<Decomposition> matrices{
      Filled(12, 8, [](i32 i, i32 j) { return 1.0 / (i + j + 1); }),
      Filled(30, 9, [&](i32, i32) { return normal(random); }),
      Filled(20, 6, [&](i32, i32 j) { return normal(random) * std::pow(10.0, 3 * j); }),
      Filled(7, 7, [](i32 i, i32 j) { return i == j || i == 0 ? 1.0 : 1e-9 * (i - j); }),
  };
  for (auto& matrix : matrices) {
    matrix.Run();
    ASSERT_EQ(matrix.status, 0);
    ExpectDecomposes(matrix, 3e-14);
  }
}

TEST(Svd, LargerMatricesAndWideOnes) {
  for (const i32 n : {5, 64, 65, 200}) {
    auto matrix = Filled(n, n, [](i32 i, i32 j) { return i == j ? 1.0 : j == i + 1 ? -1.0 : 0.0; });
    matrix.Run();
    ASSERT_EQ(matrix.status, 0);
    ExpectDecomposes(matrix, 1e-13);
  }
  auto wide = Filled(3, 8, [](i32 i, i32 j) { return std::cos(i + 2 * j * j); });
  ExpectDecomposes(wide.Run(), 1e-14);
  auto zero = Filled(3, 2, [](i32, i32) { return 0.0; });
  EXPECT_EQ(zero.Run().status, 0);
  EXPECT_EQ(zero.s, (std::vector<f64>{0, 0}));
}

TEST(Svd, IllegalArguments) {
  for (const f64 bad : {NaN, Infinity, -Infinity}) {
    auto matrix = Filled(2, 2, [&](i32 i, i32 j) { return i == j ? bad : 1; });
    EXPECT_EQ(matrix.Run().status, 2);
  }
  f64 a[4] = {1, 2, 3, 4};
  f64 out[3][4];
  i32 status = 0;
  for (const auto& [m, n, leading] :
       {std::array{0, 2, 2}, std::array{2, 0, 2}, std::array{-1, 2, 2}, std::array{2, 2, 1}}) {
    SVD(m, n, a, leading, out[0], out[1], out[2], status);
    EXPECT_EQ(status, 1);
  }
}

struct Inverse {
  std::vector<f64> a;
  std::vector<f64> inverse = {};
  f64 logDeterminant = NaN;
  i32 failed = -1;
  i32 status = -1;

  Inverse& Run() {
    const i32 n = static_cast<i32>(std::lround(std::sqrt(static_cast<f64>(a.size()))));
    inverse.assign(a.size(), NaN);
    MXINV(n, a.data(), n, inverse.data(), n, logDeterminant, failed, status);
    return *this;
  }
};

TEST(Information, InverseOfAKnownMatrix) {
  // Pascal's matrix has determinant 1 and an inverse of whole numbers.
  Inverse pascal{{1, 1, 1, 1, 1, 2, 3, 4, 1, 3, 6, 10, 1, 4, 10, 20}};
  pascal.Run();
  ASSERT_EQ(pascal.status, 0);
  const std::vector<f64> wanted{4, -6, 4, -1, -6, 14, -11, 3, 4, -11, 10, -3, -1, 3, -3, 1};
  for (std::size_t i = 0; i < wanted.size(); ++i) EXPECT_NEAR(pascal.inverse[i], wanted[i], 1e-11);
  EXPECT_NEAR(pascal.logDeterminant, 0, 1e-12);
  // Units of the predictors do not matter.
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) pascal.a[i * 4 + j] *= (i == 2 ? 0x1p200 : 1) * (j == 2 ? 0x1p200 : 1);
  }
  pascal.Run();
  ASSERT_EQ(pascal.status, 0);
  EXPECT_NEAR(pascal.inverse[1], -6, 1e-11);
}

TEST(Information, TellsThePredictorThatFails) {
  // The third predictor is the sum of the first two.
  Inverse matrix{{2, 0, 2, 1, 0, 3, 3, 0, 2, 3, 5, 1, 1, 0, 1, 4}};
  EXPECT_EQ(matrix.Run().status, 3);
  EXPECT_EQ(matrix.failed, 3);
  EXPECT_EQ((Inverse{{1, 2, 2, 1}}.Run().failed), 2);
  EXPECT_EQ((Inverse{{0, 0, 0, 1}}.Run().failed), 1);
  EXPECT_EQ((Inverse{{-3}}.Run().failed), 1);
  EXPECT_EQ((Inverse{{1, NaN, NaN, 1}}.Run().status), 2);
  EXPECT_EQ((Inverse{{}}.Run().status), 1);
  EXPECT_EQ((Inverse{{1e-310}}.Run().status), 5);
}

TEST(RiskSets, ByStratumThenTimeThenPlace) {
  const std::vector<f64> time{5, 2, 2, 9, 1, 2, -1};
  const std::vector<i32> stratum{1, 1, -7, 1, 300, 1, -7};
  std::vector<i32> order(7);
  std::vector<i32> first(8);
  i32 strata = 0;
  i32 status = -1;
  MXSRT(7, time.data(), stratum.data(), order.data(), strata, first.data(), status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(order, (std::vector<i32>{6, 2, 1, 5, 0, 3, 4}));
  EXPECT_EQ(strata, 3);
  EXPECT_EQ((std::vector<i32>(first.begin(), first.begin() + 4)), (std::vector<i32>{0, 2, 6, 7}));
  MXSRT(7, time.data(), nullptr, order.data(), strata, first.data(), status);
  EXPECT_EQ(order, (std::vector<i32>{6, 4, 1, 2, 5, 0, 3}));
  EXPECT_EQ(strata, 1);
  EXPECT_EQ(first[1], 7);
  MXSRT(0, time.data(), nullptr, order.data(), strata, first.data(), status);
  EXPECT_EQ(status, 1);
  MXSRT(1, &NaN, nullptr, order.data(), strata, first.data(), status);
  EXPECT_EQ(status, 2);
}

}  // namespace
}  // namespace tellurix
