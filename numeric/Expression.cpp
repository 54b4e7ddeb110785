#include "numeric/Expression.h"

#include <algorithm>
#include <cmath>

#include "numeric/ExpressionFunctions.h"
#include "numeric/ExpressionProgram.h"
#include "numeric/ExpressionReduction.h"
#include "numeric/Missing.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

using Outcome = ExpressionReduction::Outcome;

std::u32string UpperCasePoints(std::string_view text) { return CodePoints(UpperCase(ToUtf8(text))); }

char32_t Separator(const Regional& regional) {
  const std::u32string symbol = CodePoints(regional.decimalSymbol);
  return symbol.empty() ? U'.' : symbol.front();
}

double ReduceText(const std::u32string& text, double lastResult, char32_t separator) {
  ExpressionReduction reduction(separator, nullptr);
  Quantity result;
  const Outcome outcome = reduction.Evaluate(text, reduction.Written({lastResult, {}}), result);
  return outcome == Outcome::Number ? result.value : MissingValue;
}

bool IsDigit(char32_t c) { return c >= U'0' && c <= U'9'; }

// The length of the word of the language with which the text begins; 0 for none.
std::size_t WordLength(std::u32string_view text) {
  std::size_t longest = 0;
  for (const ExpressionFunction& function : ExpressionFunctions()) {
    if (text.starts_with(function.word)) longest = std::max(longest, function.word.size());
  }
  return longest;
}

}  // namespace

double ExpressionEvaluator::EvaluateExpression(std::string_view text) {
  lastResult_ = ReduceText(UpperCasePoints(text), lastResult_, Separator(regional_));
  return lastResult_;
}

// ---------------------------------------------------------------------------------------------------------------------
// Variables
// ---------------------------------------------------------------------------------------------------------------------

struct RowExpression::Compiled {
  // Text, and the variable that follows it; -1: none.
  struct Piece {
    std::u32string text;
    int variable = -1;
  };

  Compiled(std::u32string_view text, const std::vector<std::u32string>& names, char32_t decimalSeparator);

  double Evaluate(std::span<const double> values, double lastResult);

  template <typename Write>
  std::u32string Text(Write write) const;
  double EvaluateText() const;
  double Record();

  std::vector<Piece> pieces;
  std::vector<bool> isUsed;    // by name, then LR
  std::vector<double> inputs;  // the numbers, then LR, as their texts stand for them
  char32_t separator;
  ExpressionProgram program;
};

namespace {

// The name with which the text begins, -1 for none. A name's number is not cut short.
int NameAt(std::u32string_view text, const std::vector<std::u32string>& names) {
  int longest = -1;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::u32string& name = names[i];
    if (!text.starts_with(name)) continue;
    if (IsDigit(name.back()) && text.size() > name.size() && IsDigit(text[name.size()])) continue;
    if (longest < 0 || name.size() > names[static_cast<std::size_t>(longest)].size()) longest = static_cast<int>(i);
  }
  return longest;
}

}  // namespace

RowExpression::Compiled::Compiled(std::u32string_view text, const std::vector<std::u32string>& names,
                                  char32_t decimalSeparator)
    : pieces(1),
      isUsed(names.size() + 1),
      inputs(names.size() + 1),
      separator(decimalSeparator),
      program(names.size() + 1) {
  isUsed.back() = true;
  while (!text.empty()) {
    const int name = NameAt(text, names);
    std::size_t length = 1;
    if (name >= 0) {
      const auto index = static_cast<std::size_t>(name);
      length = names[index].size();
      isUsed[index] = true;
      pieces.back().variable = name;
      pieces.emplace_back();
    } else {
      length = std::max<std::size_t>(1, WordLength(text));
      pieces.back().text += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
}

template <typename Write>
std::u32string RowExpression::Compiled::Text(Write write) const {
  std::u32string text;
  for (const Piece& piece : pieces) {
    text += piece.text;
    if (piece.variable >= 0) text += write(static_cast<std::size_t>(piece.variable));
  }
  return text;
}

double RowExpression::Compiled::EvaluateText() const {
  ExpressionReduction writer(separator, nullptr);
  return ReduceText(Text([&](std::size_t i) { return writer.Written({inputs[i], {}}); }), inputs.back(), separator);
}

double RowExpression::Compiled::Evaluate(std::span<const double> values, double lastResult) {
  bool allInRange = true;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (!isUsed[i]) continue;
    inputs[i] = FifteenDigits(i < values.size() ? values[i] : lastResult);
    allInRange = allInRange && std::isfinite(inputs[i]);
  }
  if (!allInRange) return MissingValue;  // the largest numbers round up to what is none
  double result = MissingValue;
  switch (program.Run(inputs, result)) {
    case ExpressionProgram::Ending::Number:
      return result;
    case ExpressionProgram::Ending::Missing:
      return MissingValue;
    case ExpressionProgram::Ending::Open:
      return program.HasRoom() ? Record() : EvaluateText();
    case ExpressionProgram::Ending::NotRecordable:
      break;
  }
  return EvaluateText();
}

double RowExpression::Compiled::Record() {
  program.Begin();
  ExpressionReduction reduction(separator, &program);
  const auto written = [&](std::size_t i) {
    return reduction.Written({inputs[i], {.index = static_cast<std::uint32_t>(i)}});
  };
  Quantity result;
  const std::u32string text = Text(written);
  const Outcome outcome = reduction.Evaluate(text, written(inputs.size() - 1), result);
  program.End(outcome, result.operand);
  if (outcome == Outcome::GivenUp) return EvaluateText();
  return outcome == Outcome::Number ? result.value : MissingValue;
}

RowExpression::RowExpression(ExpressionEvaluator& evaluator, std::string_view text, std::vector<std::string> names)
    : evaluator_(evaluator) {
  std::vector<std::u32string> points;
  for (const std::string& name : names) points.push_back(CodePoints(name));
  compiled_ = std::make_unique<Compiled>(UpperCasePoints(text), points, Separator(evaluator.regional_));
}

RowExpression::~RowExpression() = default;

double RowExpression::Evaluate(std::span<const double> values) {
  evaluator_.lastResult_ = compiled_->Evaluate(values, evaluator_.lastResult_);
  return evaluator_.lastResult_;
}

bool RowExpression::Uses(std::size_t name) const { return compiled_->isUsed[name]; }

bool HasGroupingSymbol(std::string_view text, const Regional& regional) {
  const std::string& symbol = regional.groupingSymbol;
  if (symbol.empty()) return false;
  if (symbol != " ") return text.find(symbol) != std::string_view::npos;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {
    if (text[i] == ' ' && isDigit(text[i - 1]) && isDigit(text[i + 1])) return true;
  }
  return false;
}

std::string WithoutGroupingSymbol(std::string_view text, const Regional& regional) {
  return ReplaceAll(text, regional.groupingSymbol, "");
}

}  // namespace tellurix
