// The modal prompts through which an analysis asks for options. Each has its own way of reporting a cancel.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Documents.h"
#include "host/Host.h"
#include "report/Options.h"

namespace tellurix {

// What InputValue answers when it was cancelled. Typing it counts as a cancel too; an empty answer is valid.
inline constexpr std::string_view CancelledInput = "~~Cancel";

// The answers of PickFromList besides a row's number from 0.
inline constexpr int PickedNew = -1;
inline constexpr int PickedCancel = -2;

// A row of the list of target worksheets: a sheet of an open workbook, or (sheet 0) a new sheet in it.
struct WorksheetRow {
  int workbook = 0;  // 0-based
  int sheet = 0;     // 1-based
};

class Prompts {
 public:
  // `helpContext` is the help number in force, read at every prompt; `saveSettings` stores the options.
  Prompts(Host& host, Documents& documents, Options& options, const int& helpContext,
          std::function<void()> saveSettings);

  // The text typed, or CancelledInput.
  std::string InputValue(std::string_view prompt, std::string_view title, std::string_view defaultText);

  // One number for each label, typed into a form of its own; 0 for what is not numeric. Nothing when cancelled.
  std::optional<std::vector<double>> EnterFigures(std::string_view title, const std::vector<std::string>& labels);

  // --- the options dialog: combos first (two at most), then ShowOptions, then the values are read ---

  // Combo number `combo` (0 or 1) with the numbers from `from` to `to`; `format` is "0" or "0.0" and so on; `index` is
  // the row chosen at first.
  void FillCombo(int combo, std::string_view label, double from, double to, double step, std::string_view format,
                 int index);
  void FillCombo(int combo, std::string_view label, std::vector<std::string> items, int index, bool editable = false);
  // A combo without items, to be typed in.
  void FillEntry(int combo, std::string_view label, std::string_view text);

  // `items`: controls separated by "|", numbered from 0 in one sequence; "^" starts a radio, the others are check
  // boxes. False when cancelled. The values stay readable until the next ShowOptions.
  // `radios` names the frame of the radios.
  bool ShowOptions(std::string_view items, std::string_view title, std::string_view radios = "Options");
  void PresetOption(int item, bool on);  // before ShowOptions

  std::string ComboText(int combo) const;
  int ComboIndex(int combo) const;
  double ComboReal(int combo) const;  // by the regional rule, 0 when not numeric
  bool OptionOn(int item) const;

  // The confidence as a fraction: the default one without a question, else asked for. Nothing when cancelled.
  std::optional<double> SelectConfidence();

  // Edits the options. False when cancelled.
  bool AnalysisOptions();

  // Kind "Report", "Worksheet" or "File". The row's number from 0, PickedNew for the last row of the first two kinds,
  // PickedCancel. Rows that would read alike are numbered: "a.csv: Sheet1", "a.csv: Sheet1 (2)". Row `chosen` is the
  // one that is marked at first.
  int PickFromList(std::string_view kind, int chosen = 0);

  // What the rows of PickFromList("Worksheet") but the last stand for.
  std::vector<WorksheetRow> WorksheetRows() const;

 private:
  struct Combo {
    std::string label;
    std::vector<std::string> items;
    std::string text;
    int index = -1;
    bool editable = false;
    bool used = false;
  };

  Host& host_;
  Documents& documents_;
  Options& options_;
  const int& helpContext_;
  std::function<void()> saveSettings_;

  Combo combos_[2];
  std::vector<bool> optionOn_;
  std::vector<int> presets_;  // items on at the start
  int confidenceIndex_ = 3;   // the last choice of the session
};

}  // namespace tellurix
