#include "shell/Calculator.h"

#include <array>

#include "host/Form.h"
#include "numeric/Missing.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "report/PlainBlock.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Tellurix Calculator";
constexpr const char* KeyPad = "Keys";
constexpr const char* KeyId = "Key";                      // and the text of the key
constexpr std::string_view KeysAfterNumber = "+-*/\\^!";  // and MOD, which take what stands before them

struct Key {
  const char* text;  // what it puts into the expression
  const char* caption = nullptr;
};

constexpr std::array<std::array<Key, 10>, 5> Keys{{
    {{{"7"}, {"8"}, {"9"}, {"/", "÷"}, {"("}, {")"}, {"SQRT("}, {"ABS("}, {"INT("}, {"LOG!("}}},
    {{{"4"}, {"5"}, {"6"}, {"*", "×"}, {"^"}, {"!"}, {"LN("}, {"EXP("}, {"CLOG("}, {"CEXP("}}},
    {{{"1"}, {"2"}, {"3"}, {"-", "−"}, {"PI"}, {"EE"}, {"SIN("}, {"COS("}, {"TAN("}, {"DEG("}}},
    {{{"0"}, {"."}, {"E"}, {"+"}, {"LR"}, {" MOD "}, {"ARCSIN("}, {"ARCCOS("}, {"ARCTAN("}, {"RAD("}}},
    {{{"<"}, {"="}, {">"}, {"\\"}, {" AND "}, {" OR "}, {"LOGIT("}, {"LZ("}, {"UZ("}, {"IZ("}}},
}};

// The dialog's logic; its form owns it through the callbacks.
class CalculatorDialog {
 public:
  CalculatorDialog(Session& session, Form& form) : session_(session), form_(form) { AddControls(); }

  void Pressed(const Control& control);
  void Activated(const Control& control);
  bool Closing();

 private:
  struct Line {
    std::string expression;
    double value = 0;
  };

  void AddControls();
  void Calculate();
  void Save();
  void Append(std::string_view key);
  void SetExpression(std::string text);
  std::string TextOf(double value) const;
  std::string TextOf(const Line& line) const;
  void ShowHistory();
  bool WriteToReport(const std::string& lines);

  Session& session_;
  Form& form_;
  std::vector<Line> history_;
  std::vector<Line> saved_;
};

void CalculatorDialog::AddControls() {
  form_.AddText("Expression", "&Expression", "");
  form_.AddLabel("Result", "");
  for (const auto& row : Keys) {
    for (const Key& key : row) {
      const std::string text =
          std::string_view(key.text) == "." ? session_.options.regional.decimalSymbol : std::string(key.text);
      const std::string caption = key.caption ? key.caption : ReplaceAll(Trim(text), "(", text.size() > 1 ? "" : "(");
      form_.Add({.kind = ControlKind::Button,
                 .id = KeyId + text,
                 .caption = caption,
                 .group = KeyPad,
                 .startsRow = &key == row.data()});
    }
  }
  form_.AddList("History", "&History", {}, -1);
  form_.AddButton("Calc", "C&alculate", ButtonRole::Default);
  form_.AddButton("Erase", "E&rase", ButtonRole::None);
  form_.AddButton("Save", "&Save", ButtonRole::None).enabled = false;
  form_.AddButton("Copy", "C&opy result", ButtonRole::None).enabled = false;
  form_.AddButton("Close", "&Close", ButtonRole::Cancel);
}

// ---------------------------------------------------------------------------------------------------------------------
// The expression
// ---------------------------------------------------------------------------------------------------------------------

void CalculatorDialog::SetExpression(std::string text) {
  form_.Update("Expression", [&](Control& entry) { entry.value = std::move(text); });
}

// An operator without anything before it goes on from the last result.
void CalculatorDialog::Append(std::string_view key) {
  std::string expression = form_.ValueOf("Expression");
  const bool needsLeft = key == " MOD " || (key.size() == 1 && KeysAfterNumber.find(key) != std::string_view::npos);
  if (needsLeft && expression.empty() && !history_.empty()) expression = "LR";
  SetExpression(expression + std::string(key));
}

void CalculatorDialog::Pressed(const Control& control) {
  if (control.group == KeyPad) return Append(std::string_view(control.id).substr(std::string_view(KeyId).size()));
  if (control.id == "Calc") Calculate();
  if (control.id == "Erase") SetExpression("");
  if (control.id == "Save") Save();
  if (control.id == "Copy") session_.host.SetClipboard(TextOf(history_.back().value));
}

// A line of the history that is double-clicked comes back for another calculation.
void CalculatorDialog::Activated(const Control& control) {
  if (control.id != "History" || control.index < 0) return;
  SetExpression(history_[static_cast<std::size_t>(control.index)].expression);
}

void CalculatorDialog::Calculate() {
  const std::string expression(Trim(form_.ValueOf("Expression")));
  if (expression.empty()) {
    ShowMessage(session_, " Please enter an expression first", WarningIcon, Caption);
    return;
  }
  if (HasGroupingSymbol(expression, session_.options.regional)) {
    SetExpression(WithoutGroupingSymbol(expression, session_.options.regional));
    ShowMessage(session_, " Digit grouping symbols removed, try again", WarningIcon, Caption);
    return;
  }
  history_.push_back({expression, session_.expressions.EvaluateExpression(expression)});
  const Line& line = history_.back();
  const FieldResult result{.name = "result", .mark = "result", .text = TextOf(line.value), .numbers = {line.value}};
  session_.results.Current().texts.push_back(
      {.text = TextOf(line), .numbers = {line.value}, .name = "TLCalc", .fields = {result}});
  // What is wrong stays to be put right.
  if (line.value != MissingValue) SetExpression("");
  ShowHistory();
}

std::string CalculatorDialog::TextOf(double value) const {
  return value == MissingValue ? "error" : Localized(GeneralText(value), session_.options.regional);
}

std::string CalculatorDialog::TextOf(const Line& line) const { return line.expression + " = " + TextOf(line.value); }

void CalculatorDialog::ShowHistory() {
  form_.Update("Result", [&](Control& label) { label.caption = ReplaceAll(TextOf(history_.back()), "&", "&&"); });
  form_.Update("History", [&](Control& list) {
    list.items.push_back(TextOf(history_.back()));
    list.index = static_cast<int>(list.items.size()) - 1;
    list.value = list.items.back();
  });
  for (const char* button : {"Save", "Copy"}) {
    form_.Update(button, [](Control& control) { control.enabled = true; });
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// What is saved
// ---------------------------------------------------------------------------------------------------------------------

// The line of the history that is chosen, the latest unless another one was.
void CalculatorDialog::Save() {
  const int chosen = form_.IndexOf("History");
  saved_.push_back(chosen < 0 ? history_.back() : history_[static_cast<std::size_t>(chosen)]);
  form_.Update("Result",
               [&](Control& label) { label.caption = ReplaceAll(TextOf(saved_.back()), "&", "&&") + "  (saved)"; });
}

// Asks about what was saved; false, and the window stays, when that is cancelled.
bool CalculatorDialog::Closing() {
  if (saved_.empty()) return true;
  const bool hasReport = session_.documents.ReportCount() > 0;
  const Reply reply =
      ShowMessage(session_, std::string("Copy saved results to ") + (hasReport ? "report" : "clipboard") + "?",
                  YesNoCancel | QuestionIcon, Caption);
  if (reply == Reply::Cancel) return false;
  if (reply == Reply::No) return true;
  std::string lines;
  for (const Line& line : saved_) lines += (lines.empty() ? "" : "\n") + TextOf(line);
  if (hasReport) return WriteToReport(lines);
  session_.host.SetClipboard(lines + "\n");
  return true;
}

bool CalculatorDialog::WriteToReport(const std::string& lines) {
  Report* const report = EnsureReport(session_);
  if (!report) return false;
  report->helpContext = form_.helpContext;
  InsertPlainBlock(*report, lines);
  TextResult result{.text = lines, .numbers = {}, .name = "TLCalc saved", .fields = {}};
  for (const Line& line : saved_) result.numbers.push_back(line.value);
  session_.results.Current().texts.push_back(std::move(result));
  session_.results.Current().delivered = true;
  return true;
}

std::shared_ptr<Form> MakeForm(Session& session) {
  auto form = std::make_shared<Form>("TLCalc", Caption);
  form->helpContext = session.HelpContext;
  const auto dialog = std::make_shared<CalculatorDialog>(session, *form);
  form->onPress = [dialog](const Control& control) { dialog->Pressed(control); };
  form->onActivate = [dialog](const Control& control) { dialog->Activated(control); };
  form->onClose = [dialog] { return dialog->Closing(); };
  return form;
}

}  // namespace

void ShowCalculator(Session& session) {
  std::shared_ptr<Form> form = session.calculator.lock();
  if (!form || !form->IsOpen()) {
    form = MakeForm(session);
    session.calculator = form;
  }
  session.host.ShowForm(form);
}

}  // namespace tellurix
