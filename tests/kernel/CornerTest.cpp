// Bad arguments: every function of the kernel is driven over every combination of the corner values below. It must
// return, and a function with an `ifault` (or a status) must not leave NaN behind one that is 0.
//
// A new function gets one row in the table: its name, the number of its arguments, and a call that takes them from `x`
// (Int for an i32) and answers its results. Where a function takes arrays, the corner values are their elements; sizes
// and pointers out of range are in the tests of the function itself, and so are the multiple comparisons.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::kernel {
namespace {

constexpr f64 Infinity = std::numeric_limits<f64>::infinity();
constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();

constexpr std::array<f64, 15> Corners{0,   1,   -1,   0.5,   1e-300, -Infinity, Infinity, NaN,
                                      2.5, 1e5, 1e12, 3e300, -3e300, 1 - 1e-16, 50};

using Arguments = std::vector<f64>;

struct Outcome {
  std::vector<f64> results;
  i32 ifault = 0;
};

struct Function {
  std::string name;
  std::size_t arguments;
  std::function<Outcome(const Arguments&)> call;
  bool hasFault = true;
};

// A function whose result is returned, with an `ifault` or without one.
template <typename Call>
Function Faulting(std::string name, std::size_t arguments, Call call) {
  return {std::move(name), arguments, [call](const Arguments& x) {
            Outcome out;
            out.results = {call(x, out.ifault)};
            return out;
          }};
}

// A function that writes `Results` numbers.
template <std::size_t Results, typename Call>
Function Writing(std::string name, std::size_t arguments, Call call) {
  return {std::move(name), arguments, [call](const Arguments& x) {
            Outcome out;
            std::array<f64, Results> results{};
            results.fill(std::numeric_limits<f64>::quiet_NaN());
            call(x, results, out.ifault);
            out.results.assign(results.begin(), results.end());
            return out;
          }};
}

template <typename Call>
Function Plain(std::string name, std::size_t arguments, Call call) {
  return {std::move(name), arguments, [call](const Arguments& x) { return Outcome{{call(x)}, 0}; }, false};
}

// The nearest i32; NaN becomes the least one.
i32 Int(f64 x) {
  using Limits = std::numeric_limits<i32>;
  if (!(x > Limits::min())) return Limits::min();
  return x >= Limits::max() ? Limits::max() : static_cast<i32>(x);
}

// --- tails and first inverses ---

std::vector<Function> TailFunctions() {
  return {
      Plain("ALNORM", 1, [](const Arguments& x) { return ALNORM(x[0]); }),
      Plain("TFROMP", 2, [](const Arguments& x) { return TFROMP(x[0], x[1]); }),
      Faulting("GAUINV", 1, [](const Arguments& x, i32& ifault) { return GAUINV(x[0], ifault); }),
      Faulting("BETAIN", 3, [](const Arguments& x, i32& ifault) { return BETAIN(x[0], x[1], x[2], ifault); }),
      Faulting("GAMMAD", 2, [](const Arguments& x, i32& ifault) { return GAMMAD(x[0], x[1], ifault); }),
  };
}

// --- distributions and their inverses ---

std::vector<Function> DistributionFunctions() {
  return {
      Plain("ALOGAM", 1, [](const Arguments& x) { return ALOGAM(x[0]); }),
      Plain("DLNREL", 1, [](const Arguments& x) { return DLNREL(x[0]); }),
      Plain("DPMACH", 1, [](const Arguments& x) { return DPMACH(Int(x[0])); }),
      Plain("FFROMP", 3, [](const Arguments& x) { return FFROMP(x[0], x[1], x[2]); }),
      Plain("NCHI2", 3, [](const Arguments& x) { return NCHI2(x[0], x[1], x[2]); }),
      Faulting("PPCHI2", 2, [](const Arguments& x, i32& ifault) { return PPCHI2(x[0], x[1], ifault); }),
      Faulting("PNCT", 3, [](const Arguments& x, i32& ifault) { return PNCT(x[0], x[1], x[2], ifault); }),
      Faulting("TNCT", 3, [](const Arguments& x, i32& ifault) { return TNCT(x[0], x[1], x[2], ifault); }),
      Writing<3>(
          "POISSON", 2,
          [](const Arguments& x, auto& out, i32& ifault) { POISSON(x[0], Int(x[1]), out[0], out[1], out[2], ifault); }),
      Writing<4>("POISSONI", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   POISSONI(x[0], Int(x[1]), Int(x[2]), out[0], out[1], out[2], out[3], ifault);
                 }),
      Writing<3>("BINO", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   BINO(Int(x[0]), x[1], Int(x[2]), out[0], out[1], out[2], ifault);
                 }),
      Writing<2>("BINO2", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   BINO2(Int(x[0]), x[1], Int(x[2]), out[0], out[1], ifault);
                 }),
      Writing<2>("BINOMID", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   BINOMID(Int(x[0]), x[1], Int(x[2]), out[0], out[1], ifault);
                 }),
  };
}

// --- random numbers ---

// The first deviate after a seed.
std::vector<Function> RandomFunctions() {
  return {Faulting("INITMTRND", 1, [](const Arguments& x, i32&) {
    INITMTRND(Int(x[0]));
    return MTRND();
  })};
}

// --- ranks ---

std::vector<Function> RankFunctions() {
  return {
      Faulting("PRHO", 2, [](const Arguments& x, i32& ifault) { return PRHO(Int(x[0]), Int(x[1]), ifault); }),
      Faulting("KSP2", 3, [](const Arguments& x, i32& ifault) { return KSP2(Int(x[0]), Int(x[1]), x[2], ifault); }),
      Writing<2>("WMWPX", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<i32, 3> ranks{Int(x[0]), Int(x[1]), Int(x[2])};
                   out[0] = WMWPX(1, 2, ranks[0], Int(x[3]), out[1], ifault);
                 }),
      // Every element has a rank, NaN too; there is no fault.
      Writing<5>("RANK", 4, [](const Arguments& x, auto& out, i32&) { RANK(x.data(), out.data(), 4, 1, out[4]); }),
      Writing<1>("PAIRNEXT", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   std::array<i32, 3> next{};
                   std::array<i32, 3> heap{};
                   PairWalk walk{0, 0, 0, next.data(), heap.data()};
                   for (int pair = 0; pair < 6 && walk.status == 0; ++pair) PAIRNEXT(walk, out[0], x.data(), 3);
                   ifault = walk.status;
                 }),
      Writing<1>("FINDNEXT", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   std::array<i32, 2> next{};
                   std::array<i32, 2> heap{};
                   PairWalk walk{0, 0, 0, next.data(), heap.data()};
                   for (int pair = 0; pair < 4 && walk.status == 0; ++pair)
                     FINDNEXT(walk, out[0], x.data(), x.data() + 2, 2, 2);
                   ifault = walk.status;
                 }),
      Plain("EXPNOS", 2, [](const Arguments& x) { return EXPNOS(Int(x[0]), Int(x[1])); }),
  };
}

// --- matrices and fits ---

std::vector<Function> MatrixFunctions() {
  return {
      // The coefficients, the sums of squares and the triangle of R.
      Writing<8>("GLSQR", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<f64, 3> design{x[0], x[1], 2};
                   const std::array<f64, 3> response{x[2], 1, 3};
                   const std::array<f64, 3> weights{x[3], 1, 1};
                   const GlsqrData data{3, 1, 1, 1, design.data(), 3, nullptr, response.data(), 3, weights.data()};
                   std::array<f64, 4> r{};
                   std::array<i32, 2> pivot{};
                   GlsqrFit fit{r.data(), 2, &out[0], nullptr, pivot.data(), &out[2], &out[3], &out[4], 0, 0, 0};
                   GLSQR(data, 0, fit, ifault);
                   out[5] = r[0];
                   out[6] = r[2];
                   out[7] = r[3];
                 }),
      Writing<4>("RCOVARB", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<f64, 4> r{x[0], 0, x[1], x[2]};
                   RCOVARB(2, r.data(), 2, x[3], out.data(), 2, ifault);
                 }),
      Writing<10>("SVD", 4,
                  [](const Arguments& x, auto& out, i32& ifault) {
                    SVD(2, 2, x.data(), 2, &out[0], &out[2], &out[6], ifault);
                  }),
      Writing<5>("MXINV", 3,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<f64, 4> a{x[0], x[1], x[1], x[2]};
                   i32 failed = 0;
                   MXINV(2, a.data(), 2, out.data(), 2, out[4], failed, ifault);
                 }),
      Writing<3>("MXSRT", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<i32, 3> stratum{Int(x[3]), 1, Int(x[3])};
                   std::array<i32, 3> order{-1, -1, -1};
                   std::array<i32, 4> first{};
                   i32 strata = 0;
                   MXSRT(3, x.data(), stratum.data(), order.data(), strata, first.data(), ifault);
                   for (std::size_t i = 0; i < 3; ++i) out[i] = order[i] < 0 || order[i] > 2 ? NaN : order[i];
                 }),
  };
}

// --- conditional likelihood and tables ---

std::vector<Function> TableFunctions() {
  return {
      // The coefficient, its score and information, the log likelihood.
      Writing<4>("CLMAIN", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<f64, 5> covariates{x[0], x[1], x[2], 1, 2};
                   constexpr std::array<i32, 5> Stratum{1, 1, 1, 2, 2};
                   constexpr std::array<i32, 5> IsCase{1, 0, 0, 0, 1};
                   const ClmainData data{5, 1, covariates.data(), 5, Stratum.data(), IsCase.data()};
                   out[0] = x[3];
                   ClmainFit fit{&out[0], &out[1], &out[2], nullptr, NaN, 0, 0};
                   CLMAIN(data, 1e-9, 20, fit, ifault);
                   out[3] = fit.logLikelihood;
                 }),
      Writing<2>("RCNWA", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   RCNWA(x.data(), 2, 2, {.work = 1e6}, out[0], out[1], ifault);
                 }),
      Writing<3>("GENCMH of counts", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   std::array<i32, 3> df{};
                   GENCMH(x.data(), 2, 2, 1, nullptr, nullptr, out[0], out[1], out[2], df.data(), ifault);
                 }),
      Writing<3>("GENCMH of scores", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   constexpr std::array<f64, 4> Counts{3, 1, 2, 5};
                   std::array<i32, 3> df{};
                   GENCMH(Counts.data(), 2, 2, 1, x.data(), x.data() + 2, out[0], out[1], out[2], df.data(), ifault);
                 }),
  };
}

// --- curves ---

std::vector<Function> CurveFunctions() {
  return {
      Plain("POLYFUNC", 4, [](const Arguments& x) { return POLYFUNC(x[0], x.data() + 1, 2); }),
      Writing<2>("POLINT", 4,
                 [](const Arguments& x, auto& out, i32& ifault) {
                   const std::array<f64, 2> ya{x[2], 1};
                   POLINT(x.data(), ya.data(), 2, x[3], out[0], out[1], ifault);
                 }),
      Plain("TRAPZD", 4,
            [](const Arguments& x) {
              const std::array<f64, 2> values{x[2], 1};
              f64 result = 0;
              TRAPZD(x[0], x[1], values.data(), Int(x[3]), result, 2);
              return result;
            }),
  };
}

// Every combination of the corner values, the last argument running fastest.
void ForEachCombination(std::size_t count, const std::function<void(const Arguments&)>& visit) {
  std::vector<std::size_t> chosen(count, 0);
  Arguments x(count);
  for (;;) {
    for (std::size_t i = 0; i < count; ++i) x[i] = Corners[chosen[i]];
    visit(x);
    std::size_t i = count;
    while (i > 0 && ++chosen[i - 1] == Corners.size()) chosen[--i] = 0;
    if (i == 0) return;
  }
}

std::string Text(const Arguments& x) {
  std::ostringstream text;
  for (const f64 argument : x) text << argument << " ";
  return text.str();
}

void Drive(const Function& function) {
  SCOPED_TRACE(function.name);
  ForEachCombination(function.arguments, [&](const Arguments& x) {
    const Outcome out = function.call(x);
    if (!function.hasFault || out.ifault != 0) return;
    for (const f64 result : out.results) EXPECT_FALSE(std::isnan(result)) << Text(x);
  });
}

TEST(Corner, Tails) {
  for (const Function& function : TailFunctions()) Drive(function);
}

TEST(Corner, Random) {
  for (const Function& function : RandomFunctions()) Drive(function);
}

TEST(Corner, Ranks) {
  for (const Function& function : RankFunctions()) Drive(function);
}

TEST(Corner, Matrices) {
  for (const Function& function : MatrixFunctions()) Drive(function);
}

TEST(Corner, Tables) {
  for (const Function& function : TableFunctions()) Drive(function);
}

TEST(Corner, Curves) {
  for (const Function& function : CurveFunctions()) Drive(function);
}

TEST(Corner, Distributions) {
  for (const Function& function : DistributionFunctions()) Drive(function);
}

}  // namespace
}  // namespace tellurix::kernel
