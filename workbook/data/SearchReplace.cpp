#include "workbook/data/SearchReplace.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "host/Form.h"
#include "numeric/Expression.h"
#include "session/Skeleton.h"
#include "workbook/data/CellSearch.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Search & Replace";
constexpr int RowsBetweenPolls = 65536;

struct FoundCell {
  int row;
  int column;
  Replacement with;
};

// The rectangles that are searched. On the whole sheet a column ends with its last filled cell, so that the empty cells
// below it are no missing data; in marked cells all up to the last row in use count.
std::vector<CellRange> Area(const Workbook& workbook, bool isMarked) {
  std::vector<CellRange> ranges;
  if (isMarked) {
    for (int i = 0; i < workbook.SelectionCount(); ++i) {
      CellRange range = workbook.GetSelection(i);
      range.lastRow = std::min(range.lastRow, workbook.LastRow());
      range.lastColumn = std::min(range.lastColumn, workbook.LastCol());
      ranges.push_back(range);
    }
    return ranges;
  }
  for (int column = 1; column <= workbook.LastCol(); ++column) {
    int last = workbook.LastRow();
    while (last > 0 && workbook.TypeRC(last, column) == EmptyCell) --last;
    ranges.push_back({1, column, last, column});
  }
  return ranges;
}

bool LiesIn(std::span<const CellRange> ranges, int row, int column) {
  return std::ranges::any_of(ranges, [&](const CellRange& range) {
    return row >= range.firstRow && row <= range.lastRow && column >= range.firstColumn && column <= range.lastColumn;
  });
}

// The dialog `Search`.
class SearchForm {
 public:
  explicit SearchForm(Session& session) : session_(session), workbook_(*session.documents.ActiveWorkbook()) {
    const bool hasMarks = session.data.HasRangeSelected();
    form_.helpContext = session.HelpContext;
    form_.AddText("find", "&Search for:", "");
    form_.AddText("replace", "Re&place with:", "");
    form_.AddLabel(
        "hint",
        "Search for a number, a text, {missing data}, or a condition such as x>10. Numbers may be replaced by "
        "an expression in x such as x/10.");
    form_.AddCheck("whole", "Match &entire cells only", true);
    form_.AddRadio("marked", "The &marked cells", "Search in", hasMarks).enabled = hasMarks;
    form_.AddRadio("sheet", "The &whole worksheet", "Search in", !hasMarks);
    form_.AddLabel("found", "");
    form_.AddButton("next", "&Find Next", ButtonRole::Default);
    form_.AddButton("count", "&Count", ButtonRole::None);
    form_.AddButton("all", "Replace &All", ButtonRole::None);
    form_.AddButton("close", "Close", ButtonRole::Cancel);
    form_.onPress = [this](const Control& button) {
      CellSearch search(form_.ValueOf("find"), form_.IsChecked("whole"), session_.options.regional);
      if (search.IsNothing()) return Say("Please enter what to search for.", WarningIcon);
      if (search.IsCondition() && IsGrouped("find")) return;
      if (button.id == "next") return FindNext(search);
      button.id == "count" ? CountAll(search) : ReplaceAll(search);
    };
  }

  void Run() {
    NormalPointer(session_);
    session_.host.RunForm(form_);
  }

 private:
  void Say(std::string_view text, int style = InformationIcon) { ShowMessage(session_, text, style, Caption); }

  // Whether digits are grouped in an expression, after a message.
  bool IsGrouped(const char* id) {
    if (!HasGroupingSymbol(form_.ValueOf(id), session_.options.regional)) return false;
    Say("You must not use digit grouping symbols in the expression", WarningIcon);
    return true;
  }

  std::vector<CellRange> Ranges() const { return Area(workbook_, form_.IsChecked("marked")); }

  // Calls visit(row, column, cell) for each cell found, once; false when cancelled.
  template <typename Visit>
  bool EachFound(CellSearch& search, Visit visit) {
    const std::vector<CellRange> ranges = Ranges();
    BusyPointer(session_);
    bool goesOn = true;
    for (std::size_t i = 0; i < ranges.size() && goesOn; ++i) {
      const auto earlier = std::span(ranges).first(form_.IsChecked("marked") ? i : 0);
      for (int column = ranges[i].firstColumn; column <= ranges[i].lastColumn && goesOn; ++column) {
        for (int row = ranges[i].firstRow; row <= ranges[i].lastRow && goesOn; ++row) {
          if (row % RowsBetweenPolls == 0) {
            goesOn = ShowProgress(session_, "Searching", static_cast<double>(i) / static_cast<double>(ranges.size()));
          }
          const CellView cell = workbook_.ReadRC(row, column);
          if (search.Matches(cell) && !LiesIn(earlier, row, column)) visit(row, column, cell);
        }
      }
    }
    return goesOn;
  }

  void CountAll(CellSearch& search) {
    const Calculation calculation(session_);
    std::int64_t count = 0;
    if (!EachFound(search, [&](int, int, const CellView&) { ++count; })) return;
    Say(fmt::format("{} cell{} found.", count, count == 1 ? "" : "s"));
  }

  void FindNext(CellSearch& search) {
    // By rows, behind the active cell and round again to it.
    const std::vector<CellRange> ranges = Ranges();
    const int rows = workbook_.LastRow(), columns = workbook_.LastCol();
    const std::int64_t count = std::int64_t{rows} * columns;
    if (count > 0) {
      const std::int64_t from = std::int64_t{std::min(workbook_.ActiveRow(), rows) - 1} * columns +
                                std::min(workbook_.ActiveColumn(), columns) - 1;
      for (std::int64_t i = 1; i <= count; ++i) {
        const std::int64_t at = (from + i) % count;
        const int row = static_cast<int>(at / columns) + 1, column = static_cast<int>(at % columns) + 1;
        if (!search.Matches(workbook_.ReadRC(row, column)) || !LiesIn(ranges, row, column)) continue;
        return GoTo(row, column);
      }
    }
    form_.Update("found", [](Control& label) { label.caption = "Not found"; });
  }

  // Marked ranges stay, and with them what is searched.
  void GoTo(int row, int column) {
    if (!session_.data.HasRangeSelected()) workbook_.SetSelection({row, column, row, column});
    workbook_.SetActiveCell(row, column);
    for (int i = 0; i < session_.documents.WorkbookCount(); ++i) {
      if (&session_.documents.WorkbookAt(i) == &workbook_) session_.documents.ActivateWorkbook(i);
    }
    const std::string place = RangeText({row, column, row, column});
    form_.Update("found", [&](Control& label) { label.caption = "Found in " + place; });
  }

  void ReplaceAll(CellSearch& search) {
    if (workbook_.SheetLocked()) return Say("The worksheet is locked.", WarningIcon);
    CellReplacement replacement(form_.ValueOf("replace"), search, session_.options.regional);
    if (replacement.IsExpression() && IsGrouped("replace")) return;
    const Calculation calculation(session_);
    std::vector<FoundCell> found;
    std::int64_t formulas = 0, withoutValue = 0;
    const bool done = EachFound(search, [&](int row, int column, const CellView& cell) {
      if (cell.type < 0) {
        ++formulas;
      } else if (auto with = replacement.For(cell)) {
        if (replacement.IsExpression() && !with->number) ++withoutValue;
        found.push_back({row, column, std::move(*with)});
      }
    });
    if (!done) return;
    if (!found.empty() && withoutValue == static_cast<std::int64_t>(found.size())) {
      return Say("The expression has no value for any of the numbers found.", WarningIcon);
    }
    Replace(found);
    std::string text = fmt::format("{} cell{} replaced.", found.size(), found.size() == 1 ? "" : "s");
    if (formulas > 0) text += fmt::format("\n{} found with a formula, which is not replaced.", formulas);
    Say(text);
  }

  void Replace(const std::vector<FoundCell>& found) {
    if (found.empty()) return;
    workbook_.BeginStep(Caption);
    for (const FoundCell& cell : found) {
      if (cell.with.number) {
        workbook_.NumberRC(cell.row, cell.column, *cell.with.number);
      } else {
        workbook_.TextRC(cell.row, cell.column, cell.with.text);
      }
    }
    workbook_.EndStep();
    session_.results.Current().delivered = true;
  }

  Session& session_;
  Workbook& workbook_;
  Form form_{"Search", Caption};
};

}  // namespace

void SearchAndReplace(Session& session) {
  if (!session.documents.ActiveWorkbook()) return;
  SearchForm(session).Run();
  AfterDataCommand(session);
}

}  // namespace tellurix
