#include "workbook/data/ApplyFunction.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>

#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/data/ExpressionRows.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Apply function to data";

struct Applied {
  std::string expression;
  RowValues rows;
};

// The expression and its values; one that has no value in any row is asked for again. Nothing when cancelled.
std::optional<Applied> AskExpression(Session& session, const std::vector<NumberColumn>& columns) {
  const std::string prompt =
      fmt::format("Enter an expression using V1 etc.\n\n{}", fmt::join(VariableList(columns), "\n"));
  const auto refuse = [&](const char* text) { ShowMessage(session, text, WarningIcon, Caption); };
  std::string expression;
  for (;;) {
    expression = session.prompts.InputValue(prompt, Caption, expression);
    if (expression == CancelledInput) return std::nullopt;
    if (Trim(expression).empty()) {
      refuse("Please enter an expression first");
    } else if (HasGroupingSymbol(expression, session.options.regional)) {
      refuse("You must not use digit grouping symbols in the expression");
    } else {
      BusyPointer(session);
      auto rows = EvaluateRows(session, columns, expression);
      NormalPointer(session);
      if (!rows) return std::nullopt;
      if (!rows->AreMissing()) return Applied{std::move(expression), std::move(*rows)};
      refuse("The expression could not be evaluated in any row.");
    }
  }
}

}  // namespace

void ApplyFunction(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for FUNCTION", MaxSelectedColumns);
  if (!columns) return;
  auto applied = AskExpression(session, *columns);
  if (!applied) return;
  const std::string name = session.prompts.InputValue("New column name", Caption, applied->expression);
  if (name == CancelledInput) return;
  WriteNewColumns(session, {{name, applied->rows.firstRow, std::move(applied->rows.values)}});
}

}  // namespace tellurix
