// Bad arguments: every function of the kernel is driven over every combination of the corner values below. It must
// return, and a function with an `ifault` must not leave NaN behind one that is 0.
//
// A new function gets one row in the table: its name, the number of its arguments, and a call that takes them from `x`
// (Int for an i32) and answers its results.

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

TEST(Corner, Distributions) {
  for (const Function& function : DistributionFunctions()) Drive(function);
}

}  // namespace
}  // namespace tellurix::kernel
