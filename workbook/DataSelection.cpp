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

constexpr const char* SelectionTitle = "Worksheet Data Selection";
constexpr const char* CategoricalTitle = "Worksheet Categorical Data Selection";
constexpr int MaxIdentifierColumns = 20;

const char* Plural(int count) { return count >= 2 ? "s" : ""; }

// "Select DATA" + " for " + name.
std::string For(std::string_view prompt, std::string_view name) {
  return name.empty() ? std::string(prompt) : fmt::format("{} for {}", prompt, name);
}

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

// ---------------------------------------------------------------------------------------------------------------------
// Grouped selections
// ---------------------------------------------------------------------------------------------------------------------

bool DataSelection::GroupSizesAgree(const std::vector<int>& sizes, int equalSize) {
  if (equalSize == 0 || sizes.empty()) return true;
  const int wanted = equalSize > 0 ? equalSize : sizes.front();
  if (std::ranges::all_of(sizes, [&](int size) { return size == wanted; })) return true;
  Warn("Error: all groups must be the same size.", "Tellurix Data Selection");
  return false;
}

bool DataSelection::SelectIdentifier(int minGroups, int maxGroups, int equalSize, std::string_view prompt,
                                     Identifier& identifier) {
  const auto logged = LoggedSoFar();
  for (;;) {
    StartAgain(logged);
    if (!SelectWorksheetData(ModeCategoricalPooled, 1, MaxIdentifierColumns, prompt)) return false;
    identifier.info = ColumnInfo.front();
    identifier.codes = DataMatrix.front();
    // The missing category is no group; the codes behind it move up.
    ColumnDescriptor& info = identifier.info;
    const auto missing = std::ranges::find_if(
        info.CategoryName, [](const std::string& category) { return EqualNoCase(category, MissingCategory); });
    if (missing != info.CategoryName.end()) {
      const auto at = missing - info.CategoryName.begin();
      for (double& code : identifier.codes) {
        if (code != MissingValue && code > static_cast<double>(at + 1)) code -= 1;
      }
      info.CategoryName.erase(missing);
      info.CategoryFreq.erase(info.CategoryFreq.begin() + at);
      --info.CategoryCount;
    }
    if (info.CategoryCount < minGroups || info.CategoryCount > maxGroups) {
      CheckColumnCount(minGroups, maxGroups, info.CategoryCount, "Tellurix Data Selection");
      continue;
    }
    if (GroupSizesAgree(info.CategoryFreq, equalSize)) return true;
  }
}

// Rebuilds column 0 of `matrix` into one column a group, in category order.
void DataSelection::SplitByIdentifier(const Identifier& identifier, std::vector<std::vector<double>>& matrix,
                                      std::vector<ColumnDescriptor>& infos) const {
  const auto groups = static_cast<std::size_t>(identifier.info.CategoryCount);
  std::vector<std::vector<double>> split(groups);
  std::vector<ColumnDescriptor> splitInfo(groups);
  const auto& data = matrix.front();
  const auto rows = std::min(identifier.codes.size(), static_cast<std::size_t>(infos.front().Count));
  for (std::size_t row = 0; row < rows; ++row) {
    if (identifier.codes[row] == MissingValue) continue;
    const auto group = static_cast<std::size_t>(identifier.codes[row]) - 1;
    split[group].push_back(data[row]);
    if (data[row] != MissingValue) splitInfo[group].Sum += data[row];
  }
  std::size_t height = 0;
  for (const auto& column : split) height = std::max(height, column.size());
  for (std::size_t group = 0; group < groups; ++group) {
    ColumnDescriptor& info = splitInfo[group];
    info.Count = static_cast<int>(split[group].size());
    split[group].resize(height, MissingValue);
    info.FirstRow = infos.front().FirstRow;
    info.StartRow = infos.front().StartRow;
    info.Title = groups == 1 ? infos.front().Title
                             : fmt::format("{}_{}_{}", infos.front().Title, identifier.info.Title,
                                           identifier.info.CategoryName[group]);
  }
  matrix = std::move(split);
  infos = std::move(splitInfo);
}

void DataSelection::TakeAsCompanion(std::vector<std::vector<double>>& matrix, std::vector<ColumnDescriptor>& infos) {
  CompanionMatrix = std::move(matrix);
  CompanionInfo = std::move(infos);
}

void DataSelection::Restore(std::vector<std::vector<double>> matrix, std::vector<ColumnDescriptor> infos) {
  DataMatrix = std::move(matrix);
  ColumnInfo = std::move(infos);
  UpdateCounts();
}

bool DataSelection::SelectGroups(int equalSize, int minGroups, int maxGroups, std::string_view name) {
  const std::string dataPrompt = For("Select DATA", name);
  if (!options_.UseGroupID) {
    for (const auto logged = LoggedSoFar();; StartAgain(logged)) {
      if (!SelectWorksheetData(ModeNumericRows, 1, maxGroups, dataPrompt)) return false;
      if (LastColumn + 1 < minGroups) {
        CheckColumnCount(minGroups, maxGroups, LastColumn + 1, "Tellurix Data Selection");
        continue;
      }
      std::vector<int> sizes;
      for (const ColumnDescriptor& info : ColumnInfo) sizes.push_back(info.Count);
      if (GroupSizesAgree(sizes, equalSize)) return true;
    }
  }
  Identifier identifier;
  if (!SelectIdentifier(minGroups, maxGroups, equalSize, For("Select GROUP IDENTIFIERS", name), identifier))
    return false;
  ClearGridSelection();
  if (!SelectEqualData(identifier.info.Count, ModeNumericRows, 1, 1, dataPrompt)) return false;
  SplitByIdentifier(identifier, DataMatrix, ColumnInfo);
  UpdateCounts();
  return true;
}

bool DataSelection::SelectCompanions(std::string_view prompt) {
  auto data = std::move(DataMatrix);
  auto infos = std::move(ColumnInfo);
  const int columns = static_cast<int>(infos.size());
  const auto logged = LoggedSoFar();
  for (;;) {
    StartAgain(logged);
    if (!SelectWorksheetData(ModeNumericRows, columns, columns, prompt)) return false;
    const auto differs =
        std::ranges::mismatch(ColumnInfo, infos, {}, &ColumnDescriptor::Count, &ColumnDescriptor::Count);
    if (differs.in1 == ColumnInfo.end()) break;
    Warn(fmt::format("Error: all columns selected must be {} rows long.", differs.in2->Count), SelectionTitle);
  }
  TakeAsCompanion(DataMatrix, ColumnInfo);
  Restore(std::move(data), std::move(infos));
  return true;
}

bool DataSelection::SelectWeightedGroups(int minGroups, int maxGroups, std::string_view name) {
  const std::string dataPrompt = For("Select DATA", name);
  const std::string weightPrompt = For("Select WEIGHTS", name);
  if (!options_.UseGroupID) {
    return SelectGroups(0, minGroups, maxGroups, name) && SelectCompanions(weightPrompt);
  }
  Identifier identifier;
  if (!SelectIdentifier(minGroups, maxGroups, 0, For("Select GROUP IDENTIFIERS", name), identifier)) return false;
  ClearGridSelection();
  if (!SelectEqualData(identifier.info.Count, ModeNumericRows, 1, 1, dataPrompt)) return false;
  SplitByIdentifier(identifier, DataMatrix, ColumnInfo);
  auto data = std::move(DataMatrix);
  auto infos = std::move(ColumnInfo);
  ClearGridSelection();
  if (!SelectEqualData(identifier.info.Count, ModeNumericRows, 1, 1, weightPrompt)) return false;
  SplitByIdentifier(identifier, DataMatrix, ColumnInfo);
  TakeAsCompanion(DataMatrix, ColumnInfo);
  Restore(std::move(data), std::move(infos));
  return true;
}

bool DataSelection::SelectDataAndTwoFactors(std::string_view dataPrompt, std::string_view firstPrompt,
                                            std::string_view secondPrompt) {
  std::vector<std::vector<double>> columns;
  std::vector<ColumnDescriptor> infos;
  const auto keep = [&] {
    columns.push_back(std::move(DataMatrix.front()));
    infos.push_back(std::move(ColumnInfo.front()));
    ClearGridSelection();
  };
  ClearGridSelection();
  if (!SelectWorksheetData(ModeNumericRows, 1, 1, dataPrompt)) return false;
  const int rows = ColumnInfo.front().Count;
  keep();
  if (!SelectEqualData(rows, ModeCategoricalTrimmed, 1, 1, firstPrompt)) return false;
  keep();
  if (!SelectEqualData(rows, ModeCategoricalTrimmed, 1, 1, secondPrompt)) return false;
  keep();
  Restore(std::move(columns), std::move(infos));
  return true;
}

bool DataSelection::SelectGroupSubgroup(std::string_view name) {
  return SelectDataAndTwoFactors(For("Select DATA column", name), For("Select GROUP IDENTIFIER", name),
                                 For("Select SUB-GROUP IDENTIFIER", name));
}

bool DataSelection::SelectTwoFactor(std::string_view name) {
  return SelectDataAndTwoFactors(For("Select DATA", name), For("Select FACTOR (TREATMENT) IDENTIFIER", name),
                                 For("Select FACTOR (BLOCK) IDENTIFIER", name));
}

bool DataSelection::SelectXYSeries(int maxSeries) {
  const std::string_view yPrompt = "Select DATA for Y (VERTICAL AXIS)", xPrompt = "Select DATA for X (HORIZONTAL AXIS)";
  Identifier identifier;
  if (options_.UseGroupID) {
    if (!SelectIdentifier(1, maxSeries, 0, "Select GROUP/SERIES IDENTIFIERS", identifier)) return false;
    ClearGridSelection();
    if (!SelectEqualData(identifier.info.Count, ModeNumericRows, 1, 1, yPrompt)) return false;
    SplitByIdentifier(identifier, DataMatrix, ColumnInfo);
  } else if (!SelectWorksheetData(ModeNumericRows, 1, maxSeries, yPrompt)) {
    return false;
  }
  auto data = std::move(DataMatrix);
  auto infos = std::move(ColumnInfo);
  ClearGridSelection();
  if (options_.UseGroupID) {
    if (!SelectEqualData(identifier.info.Count, ModeNumericRows, 1, 1, xPrompt)) return false;
    SplitByIdentifier(identifier, DataMatrix, ColumnInfo);
  } else {
    // One X column serves every series; otherwise there is one for each.
    const int series = static_cast<int>(infos.size());
    for (const auto logged = LoggedSoFar();; StartAgain(logged)) {
      if (!SelectWorksheetData(ModeNumericRows, 1, series, xPrompt)) return false;
      if (LastColumn == 0 || LastColumn + 1 == series) break;
      CheckColumnCount(series, series, LastColumn + 1, "Tellurix Data Selection");
    }
    DataMatrix.resize(infos.size(), DataMatrix.front());
    ColumnInfo.resize(infos.size(), ColumnInfo.front());
  }
  TakeAsCompanion(DataMatrix, ColumnInfo);
  Restore(std::move(data), std::move(infos));
  return true;
}

bool DataSelection::SelectXYReplicates(int maxReplicates) {
  const std::string_view yPrompt = "Select DATA for Y (VERTICAL AXIS) REPLICATES";
  const std::string_view xPrompt = "Select DATA for X (HORIZONTAL AXIS)";
  Identifier levels;  // by identifier: the category of each row is its X level
  if (options_.UseGroupID) {
    if (!SelectIdentifier(1, maxReplicates, 0, "Select GROUP/SERIES IDENTIFIERS", levels)) return false;
    ClearGridSelection();
    if (!SelectEqualData(levels.info.Count, ModeNumericRows, 1, 1, yPrompt)) return false;
    SplitByIdentifier(levels, DataMatrix, ColumnInfo);
    auto data = std::move(DataMatrix);
    auto infos = std::move(ColumnInfo);
    ClearGridSelection();
    if (!SelectEqualData(levels.info.Count, ModeNumericRows, 1, 1, xPrompt)) return false;
    SplitByIdentifier(levels, DataMatrix, ColumnInfo);
    std::vector<double> x;
    for (const auto& column : DataMatrix) {
      const auto known = std::ranges::find_if(column, [](double value) { return value != MissingValue; });
      x.push_back(known == column.end() ? MissingValue : *known);
    }
    CompanionMatrix.assign(1, std::move(x));
    CompanionInfo.assign(1, ColumnInfo.front());
    Restore(std::move(data), std::move(infos));
    return true;
  }
  // By column: every row of the Y columns holds the replicates of that row's X.
  if (!SelectEqualData(0, ModeNumericRows, 1, maxReplicates, yPrompt)) return false;
  const auto data = std::move(DataMatrix);
  const auto rows = static_cast<std::size_t>(MinCount);
  ColumnDescriptor info = ColumnInfo.front();
  ClearGridSelection();
  if (!SelectEqualData(static_cast<int>(rows), ModeNumericRows, 1, 1, xPrompt)) return false;
  TakeAsCompanion(DataMatrix, ColumnInfo);
  std::vector<std::vector<double>> byLevel(rows);
  std::vector<ColumnDescriptor> infos(rows, info);
  for (std::size_t row = 0; row < rows; ++row) {
    infos[row].Sum = 0;
    for (const auto& column : data) {
      byLevel[row].push_back(column[row]);
      if (column[row] != MissingValue) infos[row].Sum += column[row];
    }
    infos[row].Count = static_cast<int>(data.size());
  }
  Restore(std::move(byLevel), std::move(infos));
  return true;
}

}  // namespace tellurix
