#include "report/Prompts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "host/Form.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "report/Value.h"

namespace tellurix {

namespace {

constexpr std::array<int, 5> DefaultConfidences{95, 99, 90, 85, 80};  // in the order of the radios

// The session's title of the list of target documents, its label, and its rows.
constexpr std::array<const char*, 7> FileTypes{"Tellurix Workbook",
                                               "Microsoft Excel Workbook",
                                               "Tabbed Text Worksheet",
                                               "Comma Separated Vector Data File",
                                               "Morvane Tabula (DOS) Worksheet",
                                               "Rich Text Report",
                                               "Plain (ASCII) Text Report"};

int DecimalsOfPattern(std::string_view format) {
  const auto point = format.find('.');
  return point == std::string_view::npos ? 0 : static_cast<int>(format.size() - point - 1);
}

std::string ComboId(int combo) { return fmt::format("Combo{}", combo); }
std::string OptionId(std::size_t item) { return fmt::format("Option{}", item); }

void AddButtons(Form& form, const char* okId, const char* okCaption) {
  form.AddButton(okId, okCaption, ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
}

}  // namespace

Prompts::Prompts(Host& host, Documents& documents, Options& options, const int& helpContext,
                 std::function<void()> saveSettings)
    : host_(host),
      documents_(documents),
      options_(options),
      helpContext_(helpContext),
      saveSettings_(std::move(saveSettings)) {}

std::string Prompts::InputValue(std::string_view prompt, std::string_view title, std::string_view defaultText) {
  Form form("InpFrm", std::string(title));
  form.helpContext = helpContext_;
  form.AddLabel("Prompt", ReplaceAll(prompt, "&", "&&"));
  form.AddText("Text", "", std::string(defaultText));
  AddButtons(form, "OK", "&OK");
  const NormalPointerHere pointer(host_);
  return host_.RunForm(form) ? form.ValueOf("Text") : std::string(CancelledInput);
}

std::optional<std::vector<double>> Prompts::EnterFigures(std::string_view title,
                                                         const std::vector<std::string>& labels) {
  Form form("FigForm", std::string(title));
  form.helpContext = helpContext_;
  for (std::size_t i = 0; i < labels.size(); ++i) form.AddText(fmt::format("Figure{}", i), labels[i], "");
  AddButtons(form, "OK", "&OK");
  const NormalPointerHere pointer(host_);
  if (!host_.RunForm(form)) return std::nullopt;
  std::vector<double> figures;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    figures.push_back(ParseReal(form.ValueOf(fmt::format("Figure{}", i)), options_.regional));
  }
  return figures;
}

void Prompts::FillCombo(int combo, std::string_view label, double from, double to, double step, std::string_view format,
                        int index) {
  std::vector<std::string> items;
  const int decimals = DecimalsOfPattern(format);
  const auto count = static_cast<int>(std::floor((to - from) / step + 1e-9)) + 1;
  for (int i = 0; i < count; ++i) items.push_back(Localized(FixedText(from + i * step, decimals), options_.regional));
  FillCombo(combo, label, std::move(items), index);
}

void Prompts::FillCombo(int combo, std::string_view label, std::vector<std::string> items, int index, bool editable) {
  Combo& target = combos_[combo];
  target = {.label = std::string(label), .items = std::move(items), .index = index, .editable = editable, .used = true};
  if (index >= 0 && index < static_cast<int>(target.items.size())) {
    target.text = target.items[static_cast<std::size_t>(index)];
  }
}

void Prompts::FillEntry(int combo, std::string_view label, std::string_view text) {
  FillCombo(combo, label, {}, -1, true);
  combos_[combo].text = text;
}

void Prompts::PresetOption(int item, bool on) {
  std::erase(presets_, item);
  if (on) presets_.push_back(item);
}

bool Prompts::ShowOptions(std::string_view items, std::string_view title, std::string_view radios) {
  Form form("OptForm", std::string(title));
  form.helpContext = helpContext_;
  for (int i = 0; i < 2; ++i) {
    const Combo& combo = combos_[i];
    if (!combo.used) continue;
    Control& control = form.AddCombo(ComboId(i), combo.label, combo.items, combo.index);
    control.editable = combo.editable;
    if (combo.index < 0) control.value = combo.text;
  }
  const auto parts = items.empty() ? std::vector<std::string>() : Split(items, '|');
  bool radioSet = false;
  int firstRadio = -1;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const bool on = std::ranges::find(presets_, static_cast<int>(i)) != presets_.end();
    if (parts[i].starts_with('^')) {
      form.AddRadio(OptionId(i), parts[i].substr(1), std::string(radios), on);
      radioSet = radioSet || on;
      if (firstRadio < 0) firstRadio = static_cast<int>(i);
    } else {
      form.AddCheck(OptionId(i), parts[i], on);
    }
  }
  if (firstRadio >= 0 && !radioSet) {
    form.Update(OptionId(static_cast<std::size_t>(firstRadio)), [](Control& radio) { radio.checked = true; });
  }
  AddButtons(form, "Calc", "&OK");
  presets_.clear();

  const NormalPointerHere pointer(host_);
  const bool accepted = host_.RunForm(form);
  optionOn_.clear();
  for (std::size_t i = 0; i < parts.size(); ++i) optionOn_.push_back(form.IsChecked(OptionId(i)));
  for (int i = 0; i < 2; ++i) {
    combos_[i].text = form.ValueOf(ComboId(i));
    combos_[i].index = form.IndexOf(ComboId(i));
    combos_[i].used = false;
  }
  return accepted;
}

std::string Prompts::ComboText(int combo) const { return combos_[combo].text; }
int Prompts::ComboIndex(int combo) const { return combos_[combo].index; }
double Prompts::ComboReal(int combo) const { return ParseReal(combos_[combo].text, options_.regional); }

bool Prompts::OptionOn(int item) const {
  return item >= 0 && item < static_cast<int>(optionOn_.size()) && optionOn_[static_cast<std::size_t>(item)];
}

std::optional<double> Prompts::SelectConfidence() {
  if (options_.DefaultCI > 0) {
    const double confidence = options_.DefaultCI / 100.0;
    return confidence < 1 ? confidence : 0.95;
  }
  FillCombo(0, "Confidence (%)", {"80", "85", "90", "95", "99"}, confidenceIndex_);
  if (!ShowOptions("", "Select confidence interval")) return std::nullopt;
  confidenceIndex_ = ComboIndex(0);
  return ComboReal(0) / 100;
}

bool Prompts::AnalysisOptions() {
  FillCombo(0, "Decimal places for statistics", 2, 12, 1, "0", options_.DecimalPlaces - 2);
  FillCombo(1, "Decimal places for P values", 3, 7, 1, "0", options_.PDecimalPlaces - 3);
  combos_[0].editable = combos_[1].editable = true;
  PresetOption(0, options_.DefaultCI > 0);
  for (std::size_t i = 0; i < DefaultConfidences.size(); ++i) {
    PresetOption(static_cast<int>(i) + 1, options_.DefaultCI == DefaultConfidences[i]);
  }
  PresetOption(6, options_.UseGroupID);
  if (!ShowOptions("Use a default CI|^Default 95% CI|^Default 99% CI|^Default 90% CI|^Default 85% CI|^Default 80% CI|"
                   "Select data by group identifier",
                   "Analysis Options")) {
    return false;
  }
  options_.DefaultCI = 0;
  if (OptionOn(0)) {
    for (std::size_t i = 0; i < DefaultConfidences.size(); ++i) {
      if (OptionOn(static_cast<int>(i) + 1)) options_.DefaultCI = DefaultConfidences[i];
    }
  }
  options_.UseGroupID = OptionOn(6);
  const auto decimals = [&](int combo, int low, int high, int fallback) {
    const int typed = ParseInteger(ComboText(combo), options_.regional);
    if (typed >= low && typed <= high) return typed;
    host_.Beep();
    return fallback;
  };
  options_.DecimalPlaces = decimals(0, 2, 12, 6);
  options_.PDecimalPlaces = decimals(1, 3, 7, 3);
  if (saveSettings_) saveSettings_();
  return true;
}

std::vector<WorksheetRow> Prompts::WorksheetRows() const {
  std::vector<WorksheetRow> rows;
  for (int book = 0; book < documents_.WorkbookCount(); ++book) {
    const int sheets = static_cast<int>(documents_.SheetNames(book).size());
    for (int sheet = 1; sheet <= sheets; ++sheet) rows.push_back({book, sheet});
    rows.push_back({book, 0});
  }
  return rows;
}

int Prompts::PickFromList(std::string_view kind, int chosen) {
  std::vector<std::string> rows;
  std::string title, label = "Output destination:";
  bool lastIsNew = true;
  if (kind == "Report") {
    title = "Select report for output";
    for (int i = 0; i < documents_.ReportCount(); ++i) rows.push_back(documents_.ReportName(i));
    rows.emplace_back("New Report");
  } else if (kind == "Worksheet") {
    title = "Select worksheet for output";
    for (const WorksheetRow& row : WorksheetRows()) {
      const std::string book = documents_.WorkbookName(row.workbook);
      rows.push_back(row.sheet == 0
                         ? "New Sheet in " + book
                         : book + ": " + documents_.SheetNames(row.workbook)[static_cast<std::size_t>(row.sheet - 1)]);
    }
    rows.emplace_back("New Book");
  } else {
    title = "Select file type";
    label = "Valid file formats:";
    rows.assign(FileTypes.begin(), FileTypes.end());
    lastIsNew = false;
  }
  const int last = static_cast<int>(rows.size()) - 1;
  Form form("ListForm", title);
  form.helpContext = helpContext_;
  form.AddLabel("Label", label);
  form.AddList("List", "", Distinct(std::move(rows)), chosen);
  AddButtons(form, "Select", "&Select");
  form.onActivate = [&form](const Control&) { form.Finish(true); };  // a double-click selects
  const NormalPointerHere pointer(host_);
  if (!host_.RunForm(form)) return PickedCancel;
  const int row = form.IndexOf("List");
  return lastIsNew && row == last ? PickedNew : row;
}

}  // namespace tellurix
