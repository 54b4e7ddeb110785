#include "workbook/data/FillSeries.h"

#include <fmt/format.h>

#include <optional>

#include "numeric/Expression.h"
#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Fill Series";
constexpr int MaxSeriesRows = GridStore::MaxRows - 1;  // below a title
constexpr int RowsBetweenPolls = 65536;

struct Series {
  std::string expression;  // in X or VX, the value of the row above
  double start = 1;
  int rows = 100;
};

// What stands behind "series=" or "x=".
std::string_view RightSide(std::string_view formula) {
  for (const std::string_view left : {"series", "vx", "x"}) {
    if (!StartsWithNoCase(formula, left)) continue;
    const std::string_view rest = Trim(formula.substr(left.size()));
    if (rest.starts_with('=')) return Trim(rest.substr(1));
  }
  return formula;
}

std::optional<std::string> AskExpression(Session& session) {
  std::string formula = "x=x+1";
  for (;;) {
    formula = session.prompts.InputValue("Enter the next value of the series as an expression in the last one, x",
                                         Caption, formula);
    if (formula == CancelledInput) return std::nullopt;
    const std::string_view expression = RightSide(Trim(formula));
    if (expression.empty()) {
      ShowMessage(session, "Please enter an expression first", WarningIcon, Caption);
    } else if (HasGroupingSymbol(formula, session.options.regional)) {
      ShowMessage(session, "You must not use digit grouping symbols in the formula", WarningIcon, Caption);
    } else {
      return std::string(expression);
    }
  }
}

std::optional<Series> AskSeries(Session& session) {
  const auto expression = AskExpression(session);
  if (!expression) return std::nullopt;
  Series series{.expression = *expression};
  std::string start = "1", rows = "100";
  for (;;) {
    session.prompts.FillEntry(0, "Start value", start);
    session.prompts.FillEntry(1, fmt::format("How many rows to fill? (Max {})", MaxSeriesRows), rows);
    if (!session.prompts.ShowOptions("", Caption)) return std::nullopt;
    start = session.prompts.ComboText(0);
    rows = session.prompts.ComboText(1);
    const auto first = ReadNumber(start, session.options.regional);
    series.rows = ParseInteger(rows, session.options.regional);
    if (first && series.rows >= 1 && series.rows <= MaxSeriesRows) {
      series.start = *first;
      return series;
    }
    session.data.ShowInvalidData();
  }
}

// The series is missing behind a value that cannot be evaluated. Nothing when the user cancelled.
std::optional<std::vector<double>> Evaluate(Session& session, const Series& series) {
  const Calculation calculation(session);
  RowExpression next(session.expressions, series.expression, {"X", "VX"});
  std::vector<double> values(static_cast<std::size_t>(series.rows), MissingValue);
  double value = series.start;
  for (int row = 0; row < series.rows && value != MissingValue; ++row) {
    if (row > 0 && row % RowsBetweenPolls == 0 &&
        !ShowProgress(session, series.expression, static_cast<double>(row) / series.rows)) {
      return std::nullopt;
    }
    values[static_cast<std::size_t>(row)] = value;
    value = next.Evaluate({{value, value}});
  }
  return values;
}

}  // namespace

void FillSeries(Session& session) {
  const auto series = AskSeries(session);
  if (!series) return;
  BusyPointer(session);
  auto values = Evaluate(session, *series);
  if (!values) return;
  if (values->size() > 1 && (*values)[1] == MissingValue) {
    ShowMessage(session,
                fmt::format("The expression could not be evaluated for x = {}.", NumberText(session, series->start)),
                WarningIcon, Caption);
    return;
  }
  const OutputColumn block[] = {{"series=" + series->expression, std::move(*values), {}}};
  WriteColumns(session, block);
}

}  // namespace tellurix
