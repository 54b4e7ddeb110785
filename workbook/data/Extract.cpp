#include "workbook/data/Extract.h"

#include <fmt/format.h>

#include <optional>

#include "host/Form.h"
#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/data/ExpressionRows.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Extract variable";

constexpr const char* Invalid = "Invalid expression, you must enter an expression such as v1>0 or v1=1 etc.";

struct Condition {
  std::string expression;
  RowValues holds;         // its value in each row
  std::size_t source = 0;  // the column whose values are taken
  std::string name;        // of the new variable
};

// Whether a relation stands between something and something.
bool HasRelation(std::string_view expression) {
  std::string_view rest = Trim(expression);
  if (rest.starts_with('=')) rest = Trim(rest.substr(1));
  const auto relation = rest.find_first_of("=<>");
  return relation != std::string_view::npos && relation > 0 &&
         rest.find_first_not_of("=<> ", relation) != std::string_view::npos;
}

// The dialog `Extraction`. Nothing when cancelled.
std::optional<Condition> AskCondition(Session& session, const std::vector<NumberColumn>& columns) {
  Form form("Extraction", Caption);
  form.helpContext = session.HelpContext;
  form.AddCombo("Source", "&Take the values of", VariableList(columns), 0);
  form.AddText("Expression", "&where", "v1=");
  form.AddText("Name", "&Name for new variable", "");
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  const Regional& regional = session.options.regional;
  const auto refuse = [&](const char* text) { ShowMessage(session, text, WarningIcon, Caption); };
  std::optional<RowValues> holds;
  form.onPress = [&](const Control&) {
    const std::string expression(Trim(form.ValueOf("Expression")));
    if (expression.empty()) {
      refuse("Please enter an expression first");
    } else if (HasGroupingSymbol(expression, regional)) {
      form.Update("Expression", [&](Control& control) { control.value = WithoutGroupingSymbol(expression, regional); });
      refuse("Digit grouping symbol removed from your expression, try again.");
    } else if (!HasRelation(expression)) {
      refuse(Invalid);
    } else {
      BusyPointer(session);
      holds = EvaluateRows(session, columns, expression);
      NormalPointer(session);
      if (holds && holds->AreMissing()) return refuse(Invalid);
      form.Finish(holds.has_value());
    }
  };
  NormalPointer(session);
  if (!session.host.RunForm(form)) return std::nullopt;
  Condition condition{.expression = std::string(Trim(form.ValueOf("Expression"))),
                      .holds = std::move(*holds),
                      .source = static_cast<std::size_t>(std::max(0, form.IndexOf("Source"))),
                      .name = std::string(Trim(form.ValueOf("Name")))};
  if (condition.name.empty()) {
    condition.name = fmt::format("{} where {}", columns[condition.source].title, condition.expression);
  }
  return condition;
}

}  // namespace

void Extract(Session& session) {
  const auto columns = SelectNumbers(session, "Select DATA from which to extract variables", MaxSelectedColumns);
  if (!columns) return;
  const auto condition = AskCondition(session, *columns);
  if (!condition) return;

  BusyPointer(session);
  const RowValues& holds = condition->holds;
  const NumberColumn& source = (*columns)[condition->source];
  OutputColumn extracted{.title = condition->name, .values = {}, .texts = {}};
  const auto offset = static_cast<std::size_t>(source.firstRow - holds.firstRow);
  for (std::size_t i = 0; i < source.values.size(); ++i) {
    const double truth = holds.values[i + offset];
    if (truth != 0 && truth != MissingValue && source.values[i] != MissingValue) {
      extracted.values.push_back(source.values[i]);
    }
  }
  const std::size_t count = extracted.values.size();
  if (count > 0 && !WriteColumns(session, {&extracted, 1})) return;
  ShowMessage(session, fmt::format("{} data points were extracted into the new variable: {}", count, condition->name),
              InformationIcon, Caption);
}

}  // namespace tellurix
