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
constexpr std::size_t MostLines = 20;  // of a prompt that lists one column a line

std::optional<std::string> AskExpression(Session& session, const std::vector<NumberColumn>& columns) {
  const std::string prompt = fmt::format("Enter an expression using V1 etc.\n\n{}",
                                         fmt::join(VariableList(columns), columns.size() > MostLines ? ";  " : "\n"));
  std::string expression;
  for (;;) {
    expression = session.prompts.InputValue(prompt, Caption, expression);
    if (expression == CancelledInput) return std::nullopt;
    if (Trim(expression).empty()) {
      ShowMessage(session, "Please enter an expression first", WarningIcon, Caption);
    } else if (HasGroupingSymbol(expression, session.options.regional)) {
      ShowMessage(session, "You must not use digit grouping symbols in the expression", WarningIcon, Caption);
    } else {
      return expression;
    }
  }
}

}  // namespace

void ApplyFunction(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for FUNCTION", MaxSelectedColumns);
  if (!columns) return;
  const auto expression = AskExpression(session, *columns);
  if (!expression) return;
  const std::string name = session.prompts.InputValue("New column name", Caption, *expression);
  if (name == CancelledInput) return;

  BusyPointer(session);
  auto rows = EvaluateRows(session, *columns, *expression);
  if (!rows) return;
  WriteNewColumns(session, {{name, rows->firstRow, std::move(rows->values)}});
}

}  // namespace tellurix
