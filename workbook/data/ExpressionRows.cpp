#include "workbook/data/ExpressionRows.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "numeric/Expression.h"
#include "numeric/Missing.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t RowsBetweenLooks = 4096;  // at the clock
constexpr std::chrono::milliseconds BetweenPolls{250};

// A column that the expression names.
struct Variable {
  std::size_t number = 0;
  const NumberColumn* column = nullptr;

  double InRow(int row) const {
    const auto place = static_cast<std::size_t>(row - column->firstRow);
    return row >= column->firstRow && place < column->values.size() ? column->values[place] : MissingValue;
  }
};

int EndRow(const NumberColumn& column) { return column.firstRow + static_cast<int>(column.values.size()); }

}  // namespace

bool RowValues::AreMissing() const {
  return std::ranges::all_of(values, [](double x) { return x == MissingValue; });
}

std::vector<std::string> VariableList(const std::vector<NumberColumn>& columns) {
  std::vector<std::string> list;
  for (std::size_t k = 0; k < columns.size(); ++k) list.push_back(fmt::format("V{}: {}", k + 1, columns[k].title));
  return list;
}

std::optional<RowValues> EvaluateRows(Session& session, const std::vector<NumberColumn>& columns,
                                      std::string_view expression) {
  std::vector<std::string> names;
  for (std::size_t k = 0; k < columns.size(); ++k) names.push_back(fmt::format("V{}", k + 1));
  RowExpression evaluate(session.expressions, expression, names);
  std::vector<Variable> used;
  for (std::size_t k = 0; k < columns.size(); ++k) {
    if (evaluate.Uses(k)) used.push_back({k, &columns[k]});
  }

  const Calculation calculation(session);
  RowValues result{.firstRow = std::ranges::min(columns, {}, &NumberColumn::firstRow).firstRow, .values = {}};
  const int end = EndRow(std::ranges::max(columns, {}, EndRow));
  result.values.assign(static_cast<std::size_t>(end - result.firstRow), MissingValue);
  std::vector<double> inputs(columns.size());
  auto polled = Clock::now();
  for (std::size_t i = 0; i < result.values.size(); ++i) {
    if (i % RowsBetweenLooks == 0 && Clock::now() - polled > BetweenPolls) {
      const double share = static_cast<double>(i) / static_cast<double>(result.values.size());
      if (!ShowProgress(session, expression, share)) return std::nullopt;
      polled = Clock::now();
    }
    bool isMissing = false;
    for (const Variable& variable : used) {
      inputs[variable.number] = variable.InRow(result.firstRow + static_cast<int>(i));
      isMissing = isMissing || inputs[variable.number] == MissingValue;
    }
    if (!isMissing) result.values[i] = evaluate.Evaluate(inputs);
  }
  return result;
}

}  // namespace tellurix
