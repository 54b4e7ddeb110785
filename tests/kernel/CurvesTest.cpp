// Polynomials, interpolation and integration, walks through ordered pairs, expected normal scores at their edges; their
// values are compared in CurveRegions.cpp.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "kernel/NormalScores.h"

namespace tellurix {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

TEST(Curves, PolynomialAtItsEdges) {
  const std::vector<f64> c{-1, 7, -21, 35, -35, 21, -7, 1};
  EXPECT_EQ(POLYFUNC(3, c.data(), 0), -1);
  EXPECT_EQ(POLYFUNC(1e200, c.data(), 1), 7e200);
  EXPECT_EQ(POLYFUNC(Infinity, c.data(), 2), -Infinity);
  EXPECT_TRUE(std::isnan(POLYFUNC(1, c.data(), -1)));
}

TEST(Curves, NevilleTellsWhatTheFarthestPointChanged) {
  const std::vector<f64> xa{3, -1, 0.5, 2, 7};
  const std::vector<f64> ya(5, 1.0);
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

TEST(Curves, TrapezoidOfAStageOrACountThatIsNone) {
  const f64 values[] = {1, 2, 3};
  for (const auto& [stage, count] :
       {std::array{0, 2}, std::array{1, 3}, std::array{3, 1}, std::array{33, 2}, std::array{-5, 0}}) {
    f64 sum = 1;
    TRAPZD(0, 2, values, stage, sum, count);
    EXPECT_TRUE(std::isnan(sum)) << stage;
  }
}

struct Walk {
  explicit Walk(std::size_t rows) : next(rows), heap(rows) { state = {0, 0, 0, next.data(), heap.data()}; }
  std::vector<i32> next;
  std::vector<i32> heap;
  PairWalk state;
};

// The end stays the end.
TEST(OrderedPairs, NothingFollowsTheLast) {
  Walk walk(1);
  const f64 one = 3;
  f64 value = 0;
  PAIRNEXT(walk.state, value, &one, 1);
  EXPECT_EQ(value, 3);
  for (int again = 0; again < 2; ++again) {
    PAIRNEXT(walk.state, value, &one, 1);
    EXPECT_EQ(walk.state.status, 1);
    EXPECT_TRUE(std::isnan(value));
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

TEST(NormalScores, ClosedForms) {
  // Closed forms, H. A. David & H. N. Nagaraja (2003), Order Statistics, 3rd edition, 3.2.
  const f64 rootPi = std::sqrt(std::acos(-1.0));
  EXPECT_NEAR(EXPNOS(2, 2), 1 / rootPi, 1e-15);
  EXPECT_NEAR(EXPNOS(3, 1), -1.5 / rootPi, 1e-15);
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
