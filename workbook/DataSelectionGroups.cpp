// Selections of several groups: marked column by column, or split by a column of identifiers.
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "workbook/DataSelection.h"

namespace tellurix {

namespace {

constexpr int MaxIdentifierColumns = 20;

// "Select DATA" + " for " + name.
std::string For(std::string_view prompt, std::string_view name) {
  return name.empty() ? std::string(prompt) : fmt::format("{} for {}", prompt, name);
}

}  // namespace

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
