// Polynomials, interpolation and integration, walks through ordered pairs, expected normal scores.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "kernel/NormalScores.h"

namespace tellurix {
namespace {

using Exact = boost::multiprecision::cpp_bin_float_50;

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

TEST(Curves, PolynomialNearItsRoot) {
  // (x - 1)^7 near 1, where plain evaluation has no digit right.
  const std::vector<f64> c{-1, 7, -21, 35, -35, 21, -7, 1};
  const f64 x = 1 + 0x1p-5;
  EXPECT_NEAR(POLYFUNC(x, c.data(), 7), std::pow(2.0, -35), 1e-12 * std::pow(2.0, -35));
  EXPECT_EQ(POLYFUNC(3, c.data(), 0), -1);
  EXPECT_EQ(POLYFUNC(1e200, c.data(), 1), 7e200);
  EXPECT_EQ(POLYFUNC(Infinity, c.data(), 2), -Infinity);
  EXPECT_TRUE(std::isnan(POLYFUNC(1, c.data(), -1)));
}

TEST(Curves, NevilleReproducesPolynomials) {
  const std::vector<f64> xa{3, -1, 0.5, 2, 7};
  const auto f = [](f64 x) { return 1 + x * (2 + x * (-3 + x * (0.5 - x))); };
  std::vector<f64> ya;
  for (const f64 x : xa) ya.push_back(f(x));
  for (const f64 x : {-1.0, 0.0, 4.25, 9.0}) {
    f64 y = 0;
    f64 dy = 0;
    i32 status = -1;
    POLINT(xa.data(), ya.data(), 5, x, y, dy, status);
    ASSERT_EQ(status, 0);
    EXPECT_NEAR(y, f(x), 1e-12 * (1 + std::fabs(f(x))));
  }
  f64 y = 0;
  f64 dy = 0;
  i32 status = -1;
  // At 9 the farthest of (-1, 0.5) is -1: the line through one point is the value at 0.5.
  const f64 line[] = {-1, 0.5};
  POLINT(line, std::array{4.0, 1.0}.data(), 2, 9, y, dy, status);
  EXPECT_NEAR(y, -16, 1e-13);
  EXPECT_NEAR(dy, -17, 1e-13);
  POLINT(xa.data(), ya.data(), 0, 1, y, dy, status);
  EXPECT_EQ(status, 1);
  POLINT(std::array{1.0, 2.0, 1.0}.data(), ya.data(), 3, 1.5, y, dy, status);
  EXPECT_EQ(status, 1);
  POLINT(xa.data(), ya.data(), 5, NaN, y, dy, status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(y, 0);
}

// W. Romberg's integration as the callers do it, of exp from 0 to 2.
TEST(Curves, TrapezoidAndNevilleMakeRomberg) {
  std::vector<f64> steps;
  std::vector<f64> sums;
  f64 sum = NaN;
  f64 step = 1;
  for (i32 stage = 1; stage <= 9; ++stage, step /= 4) {
    const i32 count = stage == 1 ? 2 : 1 << (stage - 2);
    std::vector<f64> values;
    for (i32 i = 0; i < count; ++i) values.push_back(std::exp(stage == 1 ? 2.0 * i : (i + 0.5) * 2 / count));
    TRAPZD(0, 2, values.data(), stage, sum, count);
    steps.push_back(step);
    sums.push_back(sum);
  }
  f64 y = 0;
  f64 dy = 0;
  i32 status = -1;
  POLINT(steps.data() + 4, sums.data() + 4, 5, 0, y, dy, status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(y, std::expm1(2.0), 1e-14);
  EXPECT_LT(std::fabs(dy), 1e-12);
  for (const auto& [stage, count] :
       {std::array{0, 2}, std::array{1, 3}, std::array{3, 1}, std::array{33, 2}, std::array{-5, 0}}) {
    sum = 1;
    TRAPZD(0, 2, sums.data(), stage, sum, count);
    EXPECT_TRUE(std::isnan(sum)) << stage;
  }
}

struct Walk {
  explicit Walk(std::size_t rows) : next(rows), heap(rows) { state = {0, 0, 0, next.data(), heap.data()}; }
  std::vector<i32> next;
  std::vector<i32> heap;
  PairWalk state;
};

std::vector<f64> OrderedSample(i32 count, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<f64> normal;
  std::vector<f64> values;
  for (i32 i = 0; i < count; ++i) values.push_back(i % 4 == 0 ? std::round(normal(random)) : normal(random));
  std::sort(values.begin(), values.end());
  return values;
}

TEST(OrderedPairs, AllAveragesInOrder) {
  for (const i32 n : {1, 2, 57}) {
    const auto x = OrderedSample(n, 8);
    std::vector<f64> wanted;
    for (std::size_t i = 0; i < x.size(); ++i) {
      for (std::size_t j = i; j < x.size(); ++j) wanted.push_back((x[i] + x[j]) / 2);
    }
    std::sort(wanted.begin(), wanted.end());
    Walk walk(x.size());
    f64 value = NaN;
    for (const f64 w : wanted) {
      PAIRNEXT(walk.state, value, x.data(), n);
      ASSERT_EQ(walk.state.status, 0);
      ASSERT_EQ(value, w);
    }
    for (int again = 0; again < 2; ++again) {
      PAIRNEXT(walk.state, value, x.data(), n);
      EXPECT_EQ(walk.state.status, 1);
      EXPECT_TRUE(std::isnan(value));
    }
  }
}

TEST(OrderedPairs, AllDifferencesInOrder) {
  for (const auto& [na, nb] : {std::array{1, 1}, std::array{1, 9}, std::array{9, 1}, std::array{31, 44}}) {
    const auto a = OrderedSample(na, 9);
    const auto b = OrderedSample(nb, 10);
    std::vector<f64> wanted;
    for (const f64 x : a) {
      for (const f64 y : b) wanted.push_back(x - y);
    }
    std::sort(wanted.begin(), wanted.end());
    Walk walk(a.size());
    f64 value = NaN;
    for (const f64 w : wanted) {
      FINDNEXT(walk.state, value, a.data(), b.data(), na, nb);
      ASSERT_EQ(walk.state.status, 0);
      ASSERT_EQ(value, w);
    }
    FINDNEXT(walk.state, value, a.data(), b.data(), na, nb);
    EXPECT_EQ(walk.state.status, 1);
  }
}

TEST(OrderedPairs, IllegalArguments) {
  const std::vector<f64> ordered{1, 2, 3};
  const auto statusOf = [&](const std::vector<f64>& data, i32 count) {
    Walk walk(3);
    f64 value = 0;
    PAIRNEXT(walk.state, value, data.data(), count);
    const i32 pairs = walk.state.status;
    Walk other(3);
    FINDNEXT(other.state, value, data.data(), ordered.data(), count, 3);
    EXPECT_EQ(other.state.status, pairs);
    return pairs;
  };
  EXPECT_EQ(statusOf(ordered, 3), 0);
  EXPECT_EQ(statusOf(ordered, 0), 2);
  EXPECT_EQ(statusOf(ordered, -4), 2);
  EXPECT_EQ(statusOf({1, 3, 2}, 3), 2);
  EXPECT_EQ(statusOf({1, 2, NaN}, 3), 2);
  EXPECT_EQ(statusOf({1, 2, Infinity}, 3), 2);
  const f64 huge[] = {1.7e308, 1.7e308};
  Walk walk(2);
  f64 value = 0;
  PAIRNEXT(walk.state, value, huge, 2);
  EXPECT_EQ(value, 1.7e308);
}

Exact ExactScore(i32 n, i32 order) {
  using boost::math::lgamma;
  const Exact constant = lgamma(Exact(n + 1)) - lgamma(Exact(order)) - lgamma(Exact(n - order + 1)) -
                         log(boost::math::constants::two_pi<Exact>()) / 2;
  const auto integrand = [&](const Exact& x) -> Exact {
    const Exact root = sqrt(Exact(2));
    const Exact lower = erfc(-x / root) / 2;
    const Exact upper = erfc(x / root) / 2;
    return x * exp(constant + (order - 1) * log(lower) + (n - order) * log(upper) - x * x / 2);
  };
  // Beyond 40 standard deviations of the statistic there is less than 1e-17, exponential as the tail may be.
  const f64 p = order / (n + 1.0);
  i32 ifault = 0;
  const f64 centre = GAUINV(p, ifault);
  const f64 width = 40 * std::sqrt(p * (1 - p) / (n + 2)) / (std::exp(-centre * centre / 2) / 2.5066282746310002);
  const Exact low = std::max(centre - width, -14.0);
  const Exact high = std::min(centre + width, 14.0);
  Exact sum = 0;
  for (int part = 0; part < 12; ++part)
    sum += boost::math::quadrature::gauss_kronrod<Exact, 61>::integrate(integrand, low + (high - low) * part / 12,
                                                                        low + (high - low) * (part + 1) / 12, 0);
  return sum;
}

TEST(NormalScores, AgainstFiftyDigits) {
  // Closed forms, H. A. David & H. N. Nagaraja (2003), Order Statistics, 3rd edition, 3.2.
  const f64 rootPi = std::sqrt(std::acos(-1.0));
  EXPECT_NEAR(EXPNOS(2, 2), 1 / rootPi, 1e-15);
  EXPECT_NEAR(EXPNOS(3, 1), -1.5 / rootPi, 1e-15);
  for (const auto& [n, order] : {std::array{1, 1}, std::array{2, 1}, std::array{10, 7}, std::array{100, 1},
                                 std::array{500, 499}, std::array{1000, 501}, std::array{10000, 10000},
                                 std::array{10000, 9990}, std::array{10000, 5001}, std::array{9999, 3000}}) {
    const f64 exact = static_cast<f64>(ExactScore(n, order));
    EXPECT_NEAR(EXPNOS(n, order), exact, 1e-13) << n << " " << order;
  }
}

TEST(NormalScores, AllOrdersOfOneSize) {
  constexpr i32 N = 10'000;
  std::vector<f64> scores(N);
  kernel::ExpectedNormalScores(N, scores.data());
  f64 before = -Infinity;
  f64 squares = 0;
  for (i32 i = 0; i < N; ++i) {
    const f64 score = scores[static_cast<std::size_t>(i)];
    EXPECT_GT(score, before);
    EXPECT_EQ(score, -scores[static_cast<std::size_t>(N - 1 - i)]);
    before = score;
    squares += score * score;
  }
  EXPECT_EQ(scores[17], EXPNOS(N, 18));
  EXPECT_LT(squares, N);
  EXPECT_EQ(EXPNOS(11, 6), 0);
  for (const auto& [n, order] :
       {std::array{0, 1}, std::array{-3, 1}, std::array{5, 0}, std::array{5, 6}, std::array{5, -1}})
    EXPECT_TRUE(std::isnan(EXPNOS(n, order)));
  // The largest size there is.
  const i32 most = std::numeric_limits<i32>::max();
  EXPECT_GT(EXPNOS(most, most), 6);
  EXPECT_LT(EXPNOS(most, most), 6.6);
}

}  // namespace
}  // namespace tellurix
