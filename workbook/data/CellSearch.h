// What Search & Replace looks for in cells, and what it puts there.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "numeric/Expression.h"
#include "numeric/Regional.h"
#include "workbook/GridStore.h"

namespace tellurix {

inline constexpr std::string_view MissingData = "{missing data}";

// What is searched for, by its text:
//
//   {missing data}   empty cells and those with "*", "." or "MISSING"
//   a number         numbers that are equal as written with 15 digits, and the same text in text cells
//   a condition      in x, with a relation ("x>10 AND x<=20"): numbers for which it is neither 0 nor missing
//   other text       text cells and logicals that hold it, or hold nothing else, without regard to case
//
// "Text in quotes" is text in any case.
class CellSearch {
 public:
  CellSearch(std::string_view find, bool wholeCells, const Regional& regional);

  bool Matches(const CellView& cell);

  bool IsNothing() const { return kind_ == Kind::Nothing; }
  bool IsForMissing() const { return kind_ == Kind::Missing; }
  bool IsCondition() const { return kind_ == Kind::Condition; }
  bool IsForNumbers() const { return kind_ == Kind::Number || kind_ == Kind::Condition; }
  // The text of a cell with the parts found replaced.
  std::string Replaced(std::string_view text, std::string_view by) const;

 private:
  enum class Kind { Nothing, Missing, Number, Condition, Text };

  bool MatchesText(std::string_view text) const;

  Kind kind_ = Kind::Nothing;
  std::string text_;
  std::string folded_;
  bool wholeCells_;
  double number_ = 0;
  std::string numberText_;
  ExpressionEvaluator evaluator_;
  std::unique_ptr<RowExpression> condition_;
};

// What a cell comes to hold.
struct Replacement {
  std::optional<double> number;
  std::string text;  // without a number; empty empties the cell
};

// What is put in the place of what was found: {missing data} writes "*", a number itself, an expression in x what it
// comes to for the number found, anything else its text, as does "text in quotes".
class CellReplacement {
 public:
  CellReplacement(std::string_view by, const CellSearch& search, const Regional& regional);

  bool IsExpression() const { return expression_ != nullptr; }

  // Nothing for a cell to which an expression does not apply. An expression without a value gives "*".
  std::optional<Replacement> For(const CellView& cell);

 private:
  const CellSearch& search_;
  const Regional& regional_;
  bool isMissing_ = false;
  std::optional<double> number_;
  std::string text_;
  ExpressionEvaluator evaluator_;
  std::unique_ptr<RowExpression> expression_;
};

}  // namespace tellurix
