// The functions of the expression language.
#pragma once

#include <span>
#include <string_view>

namespace tellurix {

struct ExpressionFunction {
  std::u32string_view word;
  // False when x is refused. A fault on the way, such as an overflow or the logarithm of 0, answers a result that is
  // not finite.
  bool (*compute)(double x, double& result);
};

// In the order in which an expression is searched for them: a word comes before those that it contains. Some refuse
// more than their mathematics do (ARCCOSH every x above 0, ARCCOS 1); Help/expressions.md lists them.
//
// UZ and IZ take the upper tail itself, so that UZ(20) and IZ(1E-30) keep their digits.
std::span<const ExpressionFunction> ExpressionFunctions();

}  // namespace tellurix
