#include "workbook/DataSelection.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "workbook/CellReading.h"
#include "workbook/Workbook.h"

namespace tellurix {

namespace {

constexpr const char* CategoricalTitle = "Worksheet Categorical Data Selection";

const char* Plural(int count) { return count >= 2 ? "s" : ""; }

bool IsNumericMode(SelectionMode mode) { return mode < ModeCategorical; }

// Numbers categories by first appearance, without regard to case.
class CategoryTable {
 public:
  explicit CategoryTable(ColumnDescriptor& info) : info_(info) {}

  // The number of the category, or MissingValue for the missing one; counts the occurrence.
  double Code(const std::string& text) {
    const auto [place, isNew] = numbers_.try_emplace(FoldCase(text), info_.CategoryName.size());
    if (isNew) {
      info_.CategoryName.push_back(text);
      info_.CategoryFreq.push_back(0);
      ++info_.CategoryCount;
    }
    ++info_.CategoryFreq[place->second];
    return EqualNoCase(text, MissingCategory) ? MissingValue : static_cast<double>(place->second + 1);
  }

 private:
  ColumnDescriptor& info_;
  std::unordered_map<std::string, std::size_t> numbers_;
};

bool IsBlankOrStar(const std::string& text) { return text.empty() || text == "*"; }

// A cell as displayed, trimmed; a text without the way through the display form.
std::string DisplayedText(const GridStore& grid, int row, int column) {
  const CellView cell = grid.ReadRC(row, column);
  if (cell.type == EmptyCell) return {};
  if (cell.type == TextCell) return std::string(Trim(cell.text));
  return std::string(Trim(grid.FormattedTextRC(row, column)));
}

}  // namespace

DataSelection::DataSelection(Host& host, Documents& documents, Options& options, ResultsLog& results,
                             const int& helpContext, std::function<void()> saveSettings)
    : host_(host),
      documents_(documents),
      options_(options),
      results_(results),
      helpContext_(helpContext),
      saveSettings_(std::move(saveSettings)) {}

GridStore* DataSelection::Grid() const { return documents_.ActiveWorkbook(); }

void DataSelection::Warn(std::string text, std::string title) {
  const NormalPointerHere pointer(host_);
  host_.ShowMessage({.text = std::move(text), .title = std::move(title), .style = WarningIcon});
}

void DataSelection::ShowInvalidData() { Warn("Error: invalid data input.", ""); }

// ---------------------------------------------------------------------------------------------------------------------
// The raw selection
// ---------------------------------------------------------------------------------------------------------------------

std::vector<RawColumn> DataSelection::MarkedColumns() const {
  std::vector<RawColumn> columns;
  const GridStore* grid = Grid();
  if (!grid) return columns;
  for (int i = 0; i < grid->SelectionCount(); ++i) {
    CellRange range = grid->GetSelection(i);
    range.lastRow = std::min(range.lastRow, grid->LastRow());
    range.lastColumn = std::min(range.lastColumn, grid->LastCol());
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
      columns.push_back({range.firstRow, column, std::max(0, range.lastRow - range.firstRow + 1)});
    }
  }
  // Single cells count only where there is nothing else.
  for (std::size_t i = columns.size(); i-- > 0 && columns.size() > 1;) {
    if (columns[i].rowCount < 2) columns.erase(columns.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return columns;
}

bool DataSelection::HasRangeSelected() const {
  const GridStore* grid = Grid();
  return grid && grid->Selection().find(':') != std::string::npos;
}

bool DataSelection::SelectRange(int minColumns, int maxColumns, std::string_view prompt,
                                std::vector<RawColumn>& columns) {
  if (marksUsed_ && !host_.LeftoverRangeAnswers()) ClearGridSelection();
  SelectionRequest request{
      .minColumns = minColumns, .maxColumns = maxColumns, .offersGroups = maxColumns >= 2, .helpContext = helpContext_};
  request.prompt = minColumns == maxColumns ? fmt::format("{} ({} column{})", prompt, minColumns, Plural(minColumns))
                                            : fmt::format("{} (Min {}: Max {})", prompt, minColumns, maxColumns);
  for (bool asked = false;; asked = true) {
    columns = MarkedColumns();
    const int count = static_cast<int>(columns.size());
    if (HasRangeSelected()) {
      if (count >= minColumns && count <= maxColumns) {
        if (!asked) host_.RangeTaken(request);
        marksUsed_ = true;
        return true;
      }
      CheckColumnCount(minColumns, maxColumns, count, "Tellurix Data Selection");
    }
    if (!WaitForSelection(request)) {
      host_.SetBusy(false);
      return false;
    }
  }
}

bool DataSelection::WaitForSelection(const SelectionRequest& asked) {
  SelectionRequest request = asked;
  request.useGroupId = options_.UseGroupID;
  request.batch = Batch;
  const NormalPointerHere pointer(host_);
  host_.SetCommandsEnabled(false);
  const SelectionReply reply = host_.WaitForSelection(request);
  host_.SetCommandsEnabled(true);
  Batch = reply.batch;
  if (reply.answer == SelectionReply::Answer::Restart) {
    options_.UseGroupID = !options_.UseGroupID;
    if (saveSettings_) saveSettings_();
    SelectionRestart = true;
    ClearGridSelection();
  }
  return reply.answer == SelectionReply::Answer::Ok;
}

void DataSelection::CheckColumnCount(int min, int max, int selected, std::string_view title) {
  std::string text;
  if (min == max) {
    if (selected == min) return;
    text = fmt::format("Error: you must select {} column{} but you selected {}.", min, Plural(min), selected);
  } else if (selected < min) {
    text = fmt::format("Error: you must select {} column{} or more but you selected {}.", min, Plural(min), selected);
  } else if (selected > max) {
    text = fmt::format("Error: you must select {} column{} or fewer but you selected {}.", max, Plural(max), selected);
  } else {
    return;
  }
  Warn(std::move(text), std::string(title));
}

void DataSelection::ClearGridSelection() {
  GridStore* grid = Grid();
  if (!grid) return;
  const int row = grid->ActiveRow(), column = grid->ActiveColumn();
  grid->SetActiveCell(row, column);
  grid->SetSelection({row, column, row, column});
  marksUsed_ = false;
}

// ---------------------------------------------------------------------------------------------------------------------
// From cells to DataMatrix
// ---------------------------------------------------------------------------------------------------------------------

void DataSelection::FindColumnTitle(RawColumn& raw, ColumnDescriptor& info) const {
  const GridStore& grid = *Grid();
  const auto scanUpward = [&] {
    for (int row = raw.firstRow; row >= std::max(0, raw.firstRow - 2) && info.Title.empty(); --row) {
      if (GetCellNumber(grid, row, raw.column) == MissingValue) info.Title = GetCellLabel(grid, row, raw.column);
    }
  };
  info.Title.clear();
  if (GetCellNumber(grid, raw.firstRow, raw.column) != MissingValue) {
    scanUpward();
  } else if (std::string label = GetCellLabel(grid, raw.firstRow, raw.column); !label.empty()) {
    info.Title = std::move(label);
    ++raw.firstRow;
    raw.rowCount = std::max(0, raw.rowCount - 1);
  } else {
    scanUpward();
  }
  if (info.Title.empty()) info.Title = GetCellLabel(grid, 0, raw.column);
  info.FirstRow = raw.firstRow;
  for (int row = raw.firstRow; row < raw.firstRow + raw.rowCount; ++row) {
    if (GetCellNumber(grid, row, raw.column) != MissingValue) {
      info.FirstRow = row;
      break;
    }
  }
}

bool DataSelection::ReadNumericColumn(SelectionMode mode, RawColumn& raw, std::size_t k) {
  const GridStore& grid = *Grid();
  ColumnDescriptor& info = ColumnInfo[k];
  auto& values = DataMatrix[k];
  FindColumnTitle(raw, info);
  int lastRow = raw.firstRow + raw.rowCount - 1;
  if (mode == ModeNumericRows) {
    while (lastRow >= raw.firstRow && GetCellNumber(grid, lastRow, raw.column) == MissingValue) --lastRow;
  }
  for (int row = raw.firstRow; row <= lastRow; ++row) {
    const double value = GetCellNumber(grid, row, raw.column);
    const bool isMissing = value == MissingValue || value == TextMissingValue;
    if (isMissing && mode == ModeNumericCompact) continue;
    if (!isMissing) {
      values[static_cast<std::size_t>(info.Count)] = value;
      info.Sum += value;
    }
    ++info.Count;
  }
  info.StartRow = mode == ModeNumericRows ? raw.firstRow : info.FirstRow;
  if (mode == ModeNumericCompact && info.Count < 1) {
    Warn("You must select numerical data for this function", SelectionTitle);
    return false;
  }
  return true;
}

bool DataSelection::ReadCategories(SelectionMode mode, const std::vector<RawColumn>& raw) {
  const GridStore& grid = *Grid();
  std::vector<std::vector<std::string>> texts(raw.size());
  for (std::size_t k = 0; k < raw.size(); ++k) {
    texts[k].reserve(static_cast<std::size_t>(raw[k].rowCount));
    for (int row = raw[k].firstRow; row < raw[k].firstRow + raw[k].rowCount; ++row) {
      texts[k].push_back(DisplayedText(grid, row, raw[k].column));
    }
  }

  bool isShort = false, isRepeated = false;
  for (const auto& column : texts) {
    if (column.empty()) continue;
    isShort = isShort || CharacterCount(column.front()) < 3;
    isRepeated = std::any_of(column.begin() + 1, column.end(), [&](const std::string& text) {
      return !text.empty() && EqualNoCase(text, column.front());
    });
    if (isRepeated) break;
  }
  bool hasTitles = !isRepeated;
  if (isShort && !isRepeated) {
    const NormalPointerHere pointer(host_);
    const Reply reply = host_.ShowMessage({.text = "Does the top row of your selection contain titles?",
                                           .title = CategoricalTitle,
                                           .style = YesNoCancel | QuestionIcon});
    if (reply == Reply::Cancel) return false;
    hasTitles = reply == Reply::Yes;
  }
  const std::size_t titleRows = hasTitles ? 1 : 0;

  std::size_t longest = 0;
  for (const auto& column : texts) {
    std::size_t length = column.size();
    if (mode == ModeCategoricalTrimmed) {
      while (length > 0 && IsBlankOrStar(column[length - 1])) --length;
    }
    longest = std::max(longest, length);
  }
  for (std::size_t k = 0; k < texts.size(); ++k) {
    auto& column = texts[k];
    column.resize(std::min(column.size(), longest));
    const auto firstFilled = std::ranges::find_if(column, [](const std::string& text) { return !text.empty(); });
    ColumnInfo[k].FirstRow = raw[k].firstRow + static_cast<int>(firstFilled - column.begin()) + (hasTitles ? 1 : 0);
    ColumnInfo[k].StartRow = raw[k].firstRow + (hasTitles ? 1 : 0);
    for (std::size_t row = titleRows; row < column.size(); ++row) {
      if (IsBlankOrStar(column[row])) column[row] = MissingCategory;
    }
    ColumnInfo[k].Title = hasTitles && !column.empty() ? column.front() : GetCellLabel(grid, 0, raw[k].column);
  }

  if (mode != ModeCategoricalPooled) {
    for (std::size_t k = 0; k < texts.size(); ++k) {
      CategoryTable table(ColumnInfo[k]);
      for (std::size_t row = titleRows; row < texts[k].size(); ++row) {
        DataMatrix[k][row - titleRows] = table.Code(texts[k][row]);
        ++ColumnInfo[k].Count;
      }
    }
    return true;
  }

  ColumnDescriptor pooled = ColumnInfo.front();
  for (std::size_t k = 1; k < texts.size(); ++k) {
    pooled.Title += ", " + ColumnInfo[k].Title;
    pooled.FirstRow = std::min(pooled.FirstRow, ColumnInfo[k].FirstRow);
  }
  std::vector<double> codes;
  CategoryTable table(pooled);
  for (std::size_t row = titleRows; row < longest; ++row) {
    for (const auto& column : texts) {
      if (row < column.size()) codes.push_back(table.Code(column[row]));
    }
  }
  pooled.Count = static_cast<int>(codes.size());
  DataMatrix.assign(1, std::move(codes));
  ColumnInfo.assign(1, std::move(pooled));
  return true;
}

bool DataSelection::SelectWorksheetData(SelectionMode mode, int minColumns, int maxColumns, std::string_view prompt) {
  std::vector<RawColumn> raw;
  if (!SelectRange(minColumns, maxColumns, prompt, raw)) return false;
  host_.SetBusy(true);

  int height = 0;
  for (const RawColumn& column : raw) height = std::max(height, column.rowCount);
  DataMatrix.assign(raw.size(), std::vector<double>(static_cast<std::size_t>(height), MissingValue));
  ColumnInfo.assign(raw.size(), {});

  bool accepted = true;
  if (IsNumericMode(mode)) {
    for (std::size_t k = 0; k < raw.size() && accepted; ++k) accepted = ReadNumericColumn(mode, raw[k], k);
  } else {
    accepted = ReadCategories(mode, raw);
  }
  host_.SetBusy(false);
  UpdateCounts();
  if (accepted) LogSelection(raw);
  return accepted;
}

void DataSelection::UpdateCounts() {
  LastColumn = static_cast<int>(ColumnInfo.size()) - 1;
  MinCount = ColumnInfo.empty() ? 0 : ColumnInfo.front().Count;
  MaxCount = 0;
  for (const ColumnDescriptor& info : ColumnInfo) {
    MinCount = std::min(MinCount, info.Count);
    MaxCount = std::max(MaxCount, info.Count);
  }
}

void DataSelection::LogSelection(const std::vector<RawColumn>& raw) {
  std::string pooledRange;
  for (std::size_t k = 0; k < raw.size(); ++k) {
    const std::string range =
        RangeText({raw[k].firstRow, raw[k].column, std::max(raw[k].firstRow, raw[k].firstRow + raw[k].rowCount - 1),
                   raw[k].column});
    if (ColumnInfo.size() == raw.size()) {
      results_.Current().selection.push_back({ColumnInfo[k].Title, range, ColumnInfo[k].Count});
    } else {
      pooledRange += (k == 0 ? "" : ",") + range;
    }
  }
  if (!pooledRange.empty()) {
    results_.Current().selection.push_back({ColumnInfo.front().Title, pooledRange, ColumnInfo.front().Count});
  }
}

std::size_t DataSelection::LoggedSoFar() { return results_.Current().selection.size(); }

void DataSelection::StartAgain(std::size_t logged) {
  results_.Current().selection.resize(logged);
  ClearGridSelection();
}

bool DataSelection::SelectEqualData(int requiredRows, SelectionMode mode, int minColumns, int maxColumns,
                                    std::string_view prompt) {
  for (const auto logged = LoggedSoFar();; StartAgain(logged)) {
    if (!SelectWorksheetData(mode, minColumns, maxColumns, prompt)) return false;
    const bool allEqual =
        std::ranges::all_of(ColumnInfo, [&](const ColumnDescriptor& info) { return info.Count == MinCount; });
    if (requiredRows > 0) {
      if (allEqual && MinCount == requiredRows) return true;
      std::string text = fmt::format("Error: all columns selected must be {} rows long.", requiredRows);
      if (IsNumericMode(mode)) text += "\n\nThe rows must contain numeric data not text.";
      Warn(std::move(text), SelectionTitle);
      continue;
    }
    if (allEqual) return true;
    const NormalPointerHere pointer(host_);
    const Reply reply = host_.ShowMessage({.text = "Warning: unequal length columns, if you select yes then\n"
                                                   "the jagged ends of columns will be padded with missing data.",
                                           .title = SelectionTitle,
                                           .style = OkCancel | WarningIcon});
    if (reply == Reply::Ok) {
      PadJaggedColumns();
      return true;
    }
  }
}

void DataSelection::PadJaggedColumns() {
  if (ColumnInfo.empty()) return;
  int top = ColumnInfo.front().StartRow, bottom = 0;
  for (const ColumnDescriptor& info : ColumnInfo) top = std::min(top, info.StartRow);
  for (const ColumnDescriptor& info : ColumnInfo) bottom = std::max(bottom, info.StartRow - top + info.Count);
  for (std::size_t k = 0; k < ColumnInfo.size(); ++k) {
    auto& values = DataMatrix[k];
    values.resize(static_cast<std::size_t>(ColumnInfo[k].Count));
    values.insert(values.begin(), static_cast<std::size_t>(ColumnInfo[k].StartRow - top), MissingValue);
    values.resize(static_cast<std::size_t>(bottom), MissingValue);
    ColumnInfo[k].Count = bottom;
    ColumnInfo[k].StartRow = top;
  }
  UpdateCounts();
}

}  // namespace tellurix
