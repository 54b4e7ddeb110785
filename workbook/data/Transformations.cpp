#include "workbook/data/Transformations.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Transformations.h"
#include "session/Skeleton.h"
#include "workbook/data/Alongside.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr std::string_view DataPrompt = "Select data for transformation";

template <typename Function>
std::vector<double> EachOf(const std::vector<double>& values, Function function) {
  std::vector<double> results(values.size());
  std::ranges::transform(values, results.begin(),
                         [&](double x) { return x == MissingValue ? MissingValue : function(x); });
  return results;
}

// ---------------------------------------------------------------------------------------------------------------------
// Positive values
// ---------------------------------------------------------------------------------------------------------------------

double SmallestOf(const std::vector<NumberColumn>& columns) {
  double smallest = MissingValue;
  for (const NumberColumn& column : columns) {
    for (const double x : column.values) {
      if (x != MissingValue && (smallest == MissingValue || x < smallest)) smallest = x;
    }
  }
  return smallest;
}

// The constant to add so that the function named `fn` can be taken of all values; none where it is not needed, or when
// the user would rather skip the impossible ones.
std::optional<double> AskConstant(Session& session, const std::vector<NumberColumn>& columns, std::string_view fn) {
  const double smallest = SmallestOf(columns);
  if (smallest > 0) return std::nullopt;
  const std::string prompt = fmt::format(
      "Enter constant c to make all x+c > 0 for {0} (x+c), or press cancel to skip impossible {0}(x) values.\n"
      "Minimum x in data selected is {1}.",
      fn, NumberText(session, smallest));
  for (;;) {
    const std::string typed = session.prompts.InputValue(prompt, "Transformation where fn(x) needs x >= 0", "");
    if (typed == CancelledInput) return std::nullopt;
    if (const auto c = ReadNumber(typed, session.options.regional)) return c;
    session.data.ShowInvalidData();
  }
}

// "x", or "(x + c)".
std::string TitleWith(const Session& session, const std::string& title, std::optional<double> c) {
  return c ? fmt::format("({} + {})", title, NumberText(session, *c)) : title;
}

void TransformPositive(Session& session, std::string_view fn, std::string_view prefix, double (*function)(double)) {
  const auto columns = SelectNumbers(session, DataPrompt, 1);
  if (!columns) return;
  const auto c = AskConstant(session, *columns, fn);
  BusyPointer(session);
  const NumberColumn& x = columns->front();
  const auto shifted = [&](double value) { return function(value + c.value_or(0)); };
  WriteNewColumns(session,
                  {{std::string(prefix) + TitleWith(session, x.title, c), x.firstRow, EachOf(x.values, shifted)}});
}

// ---------------------------------------------------------------------------------------------------------------------
// Proportions and counts
// ---------------------------------------------------------------------------------------------------------------------

// What each count is out of: a column, or one number for all. Nothing when cancelled.
std::optional<std::vector<double>> AskTotals(Session& session, const NumberColumn& counts, const std::string& caption) {
  DataSelection& data = session.data;
  if (SelectAlongside(session, data.ColumnInfo.front(), ModeNumericRows, 1,
                      "Select TOTALS (Cancel to enter one for all)")) {
    std::vector<double> totals(counts.values.size());
    for (std::size_t i = 0; i < totals.size(); ++i) totals[i] = ValueAt(data, 0, i);
    return totals;
  }
  for (;;) {
    const std::string typed = session.prompts.InputValue("Total number (n) that each count is out of", caption, "");
    if (typed == CancelledInput) return std::nullopt;
    const auto n = ReadNumber(typed, session.options.regional);
    if (n && *n >= 1) return std::vector<double>(counts.values.size(), *n);
    data.ShowInvalidData();
  }
}

void TransformProportion(Session& session, const std::string& name, std::string_view prefix,
                         double (*ofProportion)(double), double (*ofCount)(double, double)) {
  const auto columns = SelectNumbers(session, DataPrompt, 1);
  if (!columns) return;
  const NumberColumn& x = columns->front();
  const std::string caption = name + " transformation";
  if (!session.prompts.ShowOptions("^Descrete data|^Proportions", caption)) return;
  std::vector<double> results;
  if (session.prompts.OptionOn(0)) {
    const auto totals = AskTotals(session, x, caption);
    if (!totals) return;
    BusyPointer(session);
    results.resize(x.values.size());
    std::ranges::transform(x.values, *totals, results.begin(), [&](double r, double n) {
      return r == MissingValue || n == MissingValue ? MissingValue : ofCount(r, n);
    });
  } else {
    BusyPointer(session);
    results = EachOf(x.values, ofProportion);
  }
  WriteNewColumns(session, {{std::string(prefix) + x.title, x.firstRow, std::move(results)}});
}

// ---------------------------------------------------------------------------------------------------------------------
// The ladder of powers
// ---------------------------------------------------------------------------------------------------------------------

constexpr double Logarithm = 0;  // stands between the powers

struct Rung {
  double exponent;
  const char* before;
  const char* after;  // of the title
};

constexpr Rung Rungs[] = {{-2, "", "^-2"},         {-1, "", "^-1"},   {-0.5, "", "^-0.5"},
                          {Logarithm, "ln(", ")"}, {0.5, "", "^0.5"}, {2, "", "^2"}};

constexpr int MaxLadders = 42;  // of six columns each in a worksheet

double OnRung(const Rung& rung, double x) {
  if (rung.exponent == 2) return PowerOf(x, 2);
  if (x < 0 || (x == 0 && rung.exponent <= 0)) return MissingValue;
  return rung.exponent == Logarithm ? NaturalLog(x) : PowerOf(x, rung.exponent);
}

std::string TitleOn(const Rung& rung, const std::string& title, bool hasConstant) {
  // With a constant the title brings the brackets of the logarithm along.
  if (rung.exponent == Logarithm && hasConstant) return "ln" + title;
  return rung.before + title + rung.after;
}

}  // namespace

void TransformToNaturalLog(Session& session) { TransformPositive(session, "ln", "Log(natural): ", NaturalLog); }
void TransformToLog10(Session& session) { TransformPositive(session, "log", "log: ", Log10); }

void TransformToLogit(Session& session) { TransformProportion(session, "Logit", "Logit: ", Logit, EmpiricalLogit); }
void TransformToProbit(Session& session) {
  TransformProportion(session, "Probit", "Probit: ", Probit, EmpiricalProbit);
}
void TransformToAngle(Session& session) { TransformProportion(session, "Angular", "Angle: ", Angle, AngleOfCount); }

void TransformToCumulative(Session& session) {
  const auto columns = SelectNumbers(session, DataPrompt, 1);
  if (!columns) return;
  BusyPointer(session);
  const NumberColumn& x = columns->front();
  WriteNewColumns(session, {{"Cumulate: " + x.title, x.firstRow, RunningSums(x.values)}});
}

void TransformToLadderOfPowers(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for ladder of powers transforations", MaxLadders);
  if (!columns) return;
  const auto c = AskConstant(session, *columns, "power");
  BusyPointer(session);
  std::vector<NumberColumn> ladders;
  for (const NumberColumn& x : *columns) {
    const std::string title = TitleWith(session, x.title, c);
    for (const Rung& rung : Rungs) {
      const auto shifted = [&](double value) { return OnRung(rung, value + c.value_or(0)); };
      ladders.push_back({TitleOn(rung, title, c.has_value()), x.firstRow, EachOf(x.values, shifted)});
    }
  }
  WriteNewColumns(session, std::move(ladders));
}

}  // namespace tellurix
