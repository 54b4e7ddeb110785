#include "workbook/data/Categorise.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/Form.h"
#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Categorise";
constexpr int EmptyRows = 10;  // of the grid, below the cut points
constexpr int MaxGroups = 1000;
enum Suggestion { EqualWidth, EqualSize };

std::vector<std::vector<std::string>> GridOf(const std::vector<double>& cuts, const Regional& regional) {
  std::vector<std::vector<std::string>> cells;
  for (const double cut : cuts) cells.push_back({Localized(GeneralText(cut), regional)});
  cells.resize(cells.size() + EmptyRows, {""});
  return cells;
}

// Upper bounds of `groups` classes of equal width or of about equal size; the last class has none.
std::vector<double> SuggestedCuts(const std::vector<double>& sorted, int groups, int suggestion) {
  std::vector<double> cuts;
  const double least = sorted.front(), most = sorted.back();
  for (int k = 1; k < groups; ++k) {
    const double share = static_cast<double>(k) / groups;
    const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size())));
    const double cut =
        suggestion == EqualWidth ? least + (most - least) * share : sorted[std::max<std::size_t>(rank, 1) - 1];
    if (cuts.empty() || cut > cuts.back()) cuts.push_back(cut);
  }
  return cuts;
}

// The dialog `Cutfrm`.
class CutForm {
 public:
  CutForm(Session& session, std::string_view title, const std::vector<double>& sorted)
      : session_(session), regional_(session.options.regional), sorted_(sorted) {
    form_.helpContext = session.HelpContext;
    form_.AddLabel("data", ReplaceAll(fmt::format("{}: n = {}, minimum = {}, maximum = {}", title, sorted.size(),
                                                  Text(sorted.front()), Text(sorted.back())),
                                      "&", "&&"));
    form_.AddLabel("rule",
                   "A value falls in the first class whose upper bound it does not exceed. Values above the last bound "
                   "make one more class.");
    form_.AddCombo("suggestion", "Suggest classes of e&qual:", {"width", "size"}, EqualWidth);
    form_.AddText("groups", "&Number of classes:", "4");
    form_.AddButton("suggest", "&Suggest", ButtonRole::None);
    form_.Add({.kind = ControlKind::Grid, .id = "cuts", .items = {"Upper bound"}, .cells = GridOf({}, regional_)});
    form_.AddButton("OK", "&OK", ButtonRole::Default);
    form_.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
    form_.onPress = [this](const Control& button) { button.id == "suggest" ? Suggest() : Accept(); };
    form_.onChange = [this](const Control& control) {
      if (control.id == "cuts" && !control.cells.back().empty() && !Trim(control.cells.back().front()).empty()) {
        form_.Update("cuts", [](Control& grid) { grid.cells.resize(grid.cells.size() + EmptyRows, {""}); });
      }
    };
  }

  // The cut points, ascending; nothing when cancelled.
  std::optional<std::vector<double>> Ask() {
    NormalPointer(session_);
    if (!session_.host.RunForm(form_)) return std::nullopt;
    return cuts_;
  }

 private:
  std::string Text(double x) const { return Localized(GeneralText(x), regional_); }

  void Suggest() {
    const auto groups = ReadNumber(form_.ValueOf("groups"), regional_);
    if (!groups || *groups < 2 || *groups > MaxGroups || *groups != std::floor(*groups)) {
      return session_.data.ShowInvalidData();
    }
    const auto cuts = SuggestedCuts(sorted_, static_cast<int>(*groups), form_.IndexOf("suggestion"));
    form_.Update("cuts", [&](Control& grid) { grid.cells = GridOf(cuts, regional_); });
  }

  void Accept() {
    cuts_.clear();
    for (const auto& row : form_.Find("cuts")->cells) {
      if (row.empty() || Trim(row.front()).empty()) continue;
      const auto cut = ReadNumber(row.front(), regional_);
      if (!cut) return session_.data.ShowInvalidData();
      cuts_.push_back(*cut);
    }
    if (cuts_.empty()) return Refuse("Please enter the upper bound of at least one class.");
    std::ranges::sort(cuts_);
    if (std::ranges::adjacent_find(cuts_) != cuts_.end()) return Refuse("Two classes have the same upper bound.");
    form_.Finish(true);
  }

  void Refuse(std::string_view text) { ShowMessage(session_, text, WarningIcon, Caption); }

  Session& session_;
  const Regional& regional_;
  const std::vector<double>& sorted_;
  std::vector<double> cuts_;
  Form form_{"Cutfrm", Caption};
};

std::vector<double> SortedValues(const std::vector<double>& column) {
  std::vector<double> sorted;
  std::ranges::copy_if(column, std::back_inserter(sorted), [](double x) { return x != MissingValue; });
  std::ranges::sort(sorted);
  return sorted;
}

}  // namespace

void Categorise(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select data to CATEGORISE into groups")) return;
  std::vector<double> classes = session.data.DataMatrix.front();
  const ColumnDescriptor& info = session.data.ColumnInfo.front();
  classes.resize(static_cast<std::size_t>(info.Count));
  const std::vector<double> sorted = SortedValues(classes);
  if (sorted.empty()) return RefuseNonNumericData(session);
  const auto cuts = CutForm(session, info.Title, sorted).Ask();
  if (!cuts) return;

  BusyPointer(session);
  std::vector<double> counts(cuts->size() + 1);
  for (double& x : classes) {
    if (x == MissingValue) continue;
    const auto at = static_cast<std::size_t>(std::ranges::lower_bound(*cuts, x) - cuts->begin());
    ++counts[at];
    x = static_cast<double>(at + 1);
  }
  if (counts.back() == 0) counts.pop_back();  // nothing above the last bound: no such class
  std::vector<double> numbers(counts.size());
  for (std::size_t k = 0; k < numbers.size(); ++k) numbers[k] = static_cast<double>(k + 1);
  const OutputColumn block[] = {{"Categorised: " + info.Title, std::move(classes), {}},
                                {"category", std::move(numbers), {}},
                                {"count", std::move(counts), {}}};
  WriteColumns(session, block, {}, info.StartRow - 1);
}

}  // namespace tellurix
