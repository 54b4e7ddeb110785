#include "workbook/data/CombineSplit.h"

#include <fmt/format.h>

#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/data/Alongside.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

void CombineColumns(Session& session) {
  const auto columns = SelectNumbers(session, "Select columns to COMBINE", MaxSelectedColumns);
  if (!columns) return;

  BusyPointer(session);
  OutputColumn data{.title = "Data"}, groups{.title = "Group ID"};
  std::vector<std::string> names;
  for (const NumberColumn& column : *columns) names.push_back(column.title);
  names = Distinct(std::move(names));
  for (std::size_t k = 0; k < names.size(); ++k) {
    const std::vector<double>& values = (*columns)[k].values;
    data.values.insert(data.values.end(), values.begin(), values.end());
    groups.texts.insert(groups.texts.end(), values.size(), names[k]);
  }
  const OutputColumn block[] = {std::move(data), std::move(groups)};
  WriteColumns(session, block);
}

void SplitColumns(Session& session) {
  DataSelection& data = session.data;
  if (!data.SelectWorksheetData(ModeCategoricalTrimmed, 1, 1, "Select GROUP IDENTIFIERS")) return;
  const ColumnDescriptor identifier = data.ColumnInfo.front();
  const std::vector<double> codes = data.DataMatrix.front();
  std::vector<std::size_t> groups;  // the categories but for the missing one, as codes - 1
  for (std::size_t k = 0; k < identifier.CategoryName.size(); ++k) {
    if (!EqualNoCase(identifier.CategoryName[k], MissingCategory)) groups.push_back(k);
  }
  ShowMessage(session, fmt::format("Number of groups = {}", groups.size()), InformationIcon, "Group Splitter");
  if (groups.empty() || !FitEmptySheet(session.host, groups.size())) return;
  if (!SelectAlongside(session, identifier, ModeNumericRows, MaxSelectedColumns, "Select data to SPLIT BY GROUP")) {
    return;
  }
  if (!FitEmptySheet(session.host, groups.size() * data.ColumnInfo.size())) return;

  BusyPointer(session);
  std::vector<OutputColumn> block;
  for (std::size_t column = 0; column < data.ColumnInfo.size(); ++column) {
    std::vector<OutputColumn> split(identifier.CategoryName.size());
    for (std::size_t row = 0; row < static_cast<std::size_t>(identifier.Count); ++row) {
      if (codes[row] == MissingValue) continue;
      split[static_cast<std::size_t>(codes[row]) - 1].values.push_back(ValueAt(data, column, row));
    }
    for (const std::size_t group : groups) {
      split[group].title = data.ColumnInfo[column].Title + "~" + identifier.CategoryName[group];
      block.push_back(std::move(split[group]));
    }
  }
  WriteColumns(session, block);
}

}  // namespace tellurix
