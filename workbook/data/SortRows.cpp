#include "workbook/data/SortRows.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "host/Form.h"
#include "numeric/CategoryOrder.h"
#include "numeric/Missing.h"
#include "numeric/Sorting.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/CellReading.h"
#include "workbook/Workbook.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Sort Worksheet";
constexpr const char* KeyFrames[] = {"Sort by", "Then by", "Last by"};

// The columns need not adjoin, but they have the same rows.
struct Block {
  std::vector<int> columns;  // worksheet columns, rising
  int firstMarked = 1;       // of them, the one to sort by unless another is chosen
  int firstRow = 1;
  int lastRow = 1;
};

struct SortKey {
  int column;  // of the worksheet
  bool isFalling;
};

struct SortPlan {
  std::vector<SortKey> keys;
  bool hasTitles = false;
};

// ---------------------------------------------------------------------------------------------------------------------
// The block
// ---------------------------------------------------------------------------------------------------------------------

std::optional<Block> SelectBlock(Session& session) {
  std::vector<RawColumn> raw;
  if (!session.data.SelectRange(1, GridStore::MaxColumns, "Select rows to SORT", raw)) return std::nullopt;
  Block block{.firstRow = raw.front().firstRow, .lastRow = raw.front().firstRow + raw.front().rowCount - 1};
  for (const RawColumn& column : raw) {
    block.columns.push_back(column.column);
    if (column.firstRow == block.firstRow && column.rowCount == raw.front().rowCount) continue;
    ShowMessage(session, "Error: the columns to sort must have the same rows.", WarningIcon, Caption);
    return std::nullopt;
  }
  std::ranges::sort(block.columns);
  block.columns.erase(std::ranges::unique(block.columns).begin(), block.columns.end());
  block.firstMarked = block.columns.front();
  return block;
}

bool HasData(const GridStore& grid, int column, const Block& block) {
  for (int row = block.firstRow; row <= block.lastRow; ++row) {
    if (grid.TypeRC(row, column) != EmptyCell) return true;
  }
  return false;
}

// The columns that adjoin the block, or stand within it, and hold data in its rows.
std::vector<int> ColumnsBeside(const GridStore& grid, const Block& block) {
  const int first = block.columns.front();
  const int last = block.columns.back();
  std::vector<int> beside;
  for (int column = first - 1; column >= 1 && HasData(grid, column, block); --column) beside.push_back(column);
  for (int column = first; column <= last; ++column) {
    if (!std::ranges::binary_search(block.columns, column) && HasData(grid, column, block)) beside.push_back(column);
  }
  const int end = grid.LastCol();
  for (int column = last + 1; column <= end && HasData(grid, column, block); ++column) beside.push_back(column);
  std::ranges::sort(beside);
  return beside;
}

// Sorting some columns of a table tears its records apart. False when cancelled.
bool TakeColumnsBeside(Session& session, const GridStore& grid, Block& block) {
  constexpr std::size_t MostNamed = 10;
  const std::vector<int> beside = ColumnsBeside(grid, block);
  if (beside.empty()) return true;
  std::vector<std::string> named;
  for (std::size_t k = 0; k < std::min(beside.size(), MostNamed); ++k) named.push_back(ColumnLetters(beside[k]));
  const std::string others = beside.size() > MostNamed ? fmt::format(" and {} more", beside.size() - MostNamed) : "";
  const std::string text = fmt::format(
      "There are data in the same rows beside the selection, in {} {}{}.\n\nSort them too, so that each row stays "
      "together?",
      beside.size() == 1 ? "column" : "columns", fmt::join(named, ", "), others);
  const Reply reply = ShowMessage(session, text, YesNoCancel | QuestionIcon, Caption);
  if (reply == Reply::Cancel) return false;
  if (reply == Reply::Yes) {
    block.columns.insert(block.columns.end(), beside.begin(), beside.end());
    std::ranges::sort(block.columns);
  }
  return true;
}

bool IsWord(const GridStore& grid, int row, int column) {
  return std::abs(grid.TypeRC(row, column)) == TextCell && GetCellNumber(grid, row, column) == MissingValue;
}

// Whether the top row of the block looks like titles: words that do not come again under them.
bool LooksTitled(const GridStore& grid, const Block& block) {
  for (const int column : block.columns) {
    if (!IsWord(grid, block.firstRow, column)) return false;
    const std::string title = FoldCase(grid.TextRC(block.firstRow, column));
    for (int row = block.firstRow + 1; row <= block.lastRow; ++row) {
      const CellView cell = grid.ReadRC(row, column);
      if (cell.type == TextCell && cell.text.size() == title.size() && FoldCase(cell.text) == title) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// The dialog
// ---------------------------------------------------------------------------------------------------------------------

// A column by its title and letters.
std::string NameOf(const GridStore& grid, const Block& block, int column) {
  const std::string letters = ColumnLetters(column);
  std::string title = IsWord(grid, block.firstRow, column) ? GetCellLabel(grid, block.firstRow, column) : "";
  for (int row = block.firstRow - 1; title.empty() && row >= std::max(1, block.firstRow - 2); --row) {
    if (IsWord(grid, row, column)) title = GetCellLabel(grid, row, column);
  }
  if (title.empty()) title = grid.ColText(column);
  return title.empty() ? letters : fmt::format("{} ({})", title, letters);
}

std::optional<SortPlan> AskPlan(Session& session, const GridStore& grid, const Block& block) {
  std::vector<std::string> names;
  for (const int column : block.columns) names.push_back(NameOf(grid, block, column));
  std::vector<std::string> namesOrNone{"<none>"};
  namesOrNone.insert(namesOrNone.end(), names.begin(), names.end());

  Form form("SortForm", Caption);
  form.helpContext = session.HelpContext;
  const auto marked = std::ranges::lower_bound(block.columns, block.firstMarked) - block.columns.begin();
  for (int key = 0; key < 3; ++key) {
    form.AddCombo(fmt::format("Key{}", key), "Column", key == 0 ? names : namesOrNone,
                  key == 0 ? static_cast<int>(marked) : 0)
        .group = KeyFrames[key];
    form.AddCheck(fmt::format("Descending{}", key), "Descending", false).group = KeyFrames[key];
  }
  form.AddCheck("Titles", "The top row holds titles and stays", LooksTitled(grid, block));
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  NormalPointer(session);
  if (!session.host.RunForm(form)) return std::nullopt;

  SortPlan plan{.hasTitles = form.IsChecked("Titles")};
  for (int key = 0; key < 3; ++key) {
    const int place = form.IndexOf(fmt::format("Key{}", key)) - (key == 0 ? 0 : 1);
    if (place < 0) continue;
    plan.keys.push_back(
        {block.columns[static_cast<std::size_t>(place)], form.IsChecked(fmt::format("Descending{}", key))});
  }
  return plan;
}

// ---------------------------------------------------------------------------------------------------------------------
// The order
// ---------------------------------------------------------------------------------------------------------------------

// What a column is sorted by: numbers come first, then texts in alphanumeric order, then logicals; empty cells and
// missing marks come last.
class KeyColumn {
 public:
  KeyColumn(const GridStore& grid, const SortKey& key, int firstRow, int lastRow, const Regional& regional)
      : sign_(key.isFalling ? -1 : 1) {
    for (int row = firstRow; row <= lastRow; ++row) {
      const CellView cell = grid.ReadRC(row, key.column);
      const int type = std::abs(cell.type);
      if (type == NumberCell) {
        Add(0, cell.number);
      } else if (type == LogicalCell) {
        Add(2, cell.number == 0 ? 0 : 1);
      } else if (type == TextCell && GetCellNumber(grid, row, key.column) == MissingValue && !Trim(cell.text).empty()) {
        AddText(cell.text);
      } else {
        kinds_.push_back(MissingValue);
        values_.push_back(MissingValue);
      }
    }
    OrderTexts(regional);
  }

  void AppendTo(std::vector<std::span<const double>>& keys) const {
    keys.emplace_back(kinds_);
    keys.emplace_back(values_);
  }

 private:
  void Add(double kind, double value) {
    kinds_.push_back(sign_ * kind);
    values_.push_back(sign_ * value);
  }

  void AddText(std::string_view text) {
    const auto [known, isNew] = numbers_.try_emplace(FoldCase(text), texts_.size());
    if (isNew) texts_.emplace_back(text);
    textRows_.emplace_back(values_.size(), known->second);
    Add(1, 0);
  }

  void OrderTexts(const Regional& regional) {
    std::vector<double> places(texts_.size());
    double place = 0;
    for (const std::size_t number : CategoryOrder(texts_, regional)) places[number] = place++;
    for (const auto& [row, number] : textRows_) values_[row] = sign_ * places[number];
  }

  double sign_;
  std::vector<double> kinds_;
  std::vector<double> values_;
  std::unordered_map<std::string, std::size_t> numbers_;       // of the different texts
  std::vector<std::string> texts_;                             // by their number
  std::vector<std::pair<std::size_t, std::size_t>> textRows_;  // with the number of their text
};

std::vector<std::uint32_t> OrderOf(const GridStore& grid, const SortPlan& plan, int firstRow, int lastRow,
                                   const Regional& regional) {
  std::vector<KeyColumn> columns;
  for (const SortKey& key : plan.keys) columns.emplace_back(grid, key, firstRow, lastRow, regional);
  std::vector<std::span<const double>> keys;
  for (const KeyColumn& column : columns) column.AppendTo(keys);
  return SortedOrder(keys);
}

void Arrange(Workbook& workbook, const Block& block, int firstRow, const std::vector<std::uint32_t>& order) {
  workbook.BeginStep("Sort");
  for (const int column : block.columns) workbook.ArrangeRows({firstRow, column, block.lastRow, column}, order);
  workbook.EndStep();
}

}  // namespace

void SortRows(Session& session) {
  auto block = SelectBlock(session);
  if (!block) return;
  Workbook& workbook = *session.documents.ActiveWorkbook();
  if (workbook.SheetLocked()) {
    ShowMessage(session, "The worksheet is locked.", WarningIcon, Caption);
    return;
  }
  if (!TakeColumnsBeside(session, workbook, *block)) return;
  const auto plan = AskPlan(session, workbook, *block);
  if (!plan) return;
  BusyPointer(session);
  const int firstRow = block->firstRow + (plan->hasTitles ? 1 : 0);
  if (firstRow < block->lastRow) {
    Arrange(workbook, *block, firstRow, OrderOf(workbook, *plan, firstRow, block->lastRow, session.options.regional));
  }
  session.results.Current().delivered = true;
  AfterDataCommand(session);
}

}  // namespace tellurix
