// The expression language of the calculator and of the commands that take a formula. An expression is text and stays
// text: each step finds an operation, computes it and writes the number back with up to 15 significant digits, until
// only a number is left. What can be seen of that:
//
// - Results are rounded to 15 significant digits at each step. A number is written as GeneralText writes it, with the
//   decimal symbol of the region: "0.5", "1E+15", "1E-05".
// - Variables and LR go in as text without brackets: with -3 for V1, 5-V1^2 is 5--3^2, which is 5+3^2.
// - Only "(" opens a bracket that is worked out; "[" and "{" must be closed but make no number. What stands beside a
//   bracket grows together with its number: 2(3) is 23.
// - In the order of the work: functions, factorials, doubled signs, powers from the left, then * / \ MOD from the left,
//   then + - from the left, relations from the left (true is -1), AND, OR. The sign in front of a number belongs to it,
//   so -3^2 is 9; a sign after a number is an operator, so 5-3^2 is -4.
//
// Words are read in either case. Integers of \ AND OR NOT go to 2^53.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "numeric/Regional.h"

namespace tellurix {

// Evaluates expressions one after the other; the value of each is LR in the next.
class ExpressionEvaluator {
 public:
  // Reads the decimal symbol from `regional` at each call.
  explicit ExpressionEvaluator(const Regional& regional) : regional_(regional) {}

  // The value of an expression; MissingValue when it has none: malformed, refused by a function, or out of range.
  double EvaluateExpression(std::string_view text);

  double LastResult() const { return lastResult_; }  // LR, 0 at first

 private:
  friend class RowExpression;

  const Regional& regional_;
  double lastResult_ = 0;
};

// An expression with variables, evaluated again and again: the value is, bit for bit, that of EvaluateExpression for
// the text in which each name has been replaced by the text of its number, and becomes LR likewise.
class RowExpression {
 public:
  // `names` such as "V1" or "X", in upper case. In the text they are read in either case wherever they are no part of a
  // word of the language (the X of EXP is none). A number at the end of a name is read to its last digit: V10 is not V1
  // and a 0. Of names that fit, the longest counts.
  RowExpression(ExpressionEvaluator& evaluator, std::string_view text, std::vector<std::string> names);
  ~RowExpression();
  RowExpression(const RowExpression&) = delete;
  RowExpression& operator=(const RowExpression&) = delete;

  // One number for each name, none of them MissingValue.
  double Evaluate(std::span<const double> values);

  bool Uses(std::size_t name) const;  // whether the text holds it

 private:
  struct Compiled;

  ExpressionEvaluator& evaluator_;
  std::unique_ptr<Compiled> compiled_;
};

// Whether a grouping symbol of the region stands in the text, which callers refuse. A blank as the symbol counts
// between digits only.
bool HasGroupingSymbol(std::string_view text, const Regional& regional);
std::string WithoutGroupingSymbol(std::string_view text, const Regional& regional);

}  // namespace tellurix
