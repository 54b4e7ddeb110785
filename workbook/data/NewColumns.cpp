#include "workbook/data/NewColumns.h"

#include <algorithm>

#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

bool HoldsNumbers(const NumberColumn& column) {
  return std::ranges::any_of(column.values, [](double x) { return x != MissingValue; });
}

}  // namespace

std::optional<std::vector<NumberColumn>> SelectNumbers(Session& session, std::string_view prompt, int maxColumns) {
  DataSelection& data = session.data;
  if (!data.SelectWorksheetData(ModeNumericRows, 1, maxColumns, prompt)) return std::nullopt;
  std::vector<NumberColumn> columns;
  for (std::size_t k = 0; k < data.ColumnInfo.size(); ++k) {
    const ColumnDescriptor& info = data.ColumnInfo[k];
    data.DataMatrix[k].resize(static_cast<std::size_t>(info.Count));
    columns.push_back({info.Title, info.StartRow, std::move(data.DataMatrix[k])});
  }
  if (std::ranges::all_of(columns, HoldsNumbers)) return columns;
  RefuseNonNumericData(session);
  return std::nullopt;
}

bool WriteNewColumns(Session& session, std::vector<NumberColumn> columns) {
  const int top = std::ranges::min(columns, {}, &NumberColumn::firstRow).firstRow;
  std::vector<OutputColumn> block;
  for (NumberColumn& column : columns) {
    column.values.insert(column.values.begin(), static_cast<std::size_t>(column.firstRow - top), MissingValue);
    block.push_back({.title = std::move(column.title), .values = std::move(column.values)});
  }
  return WriteColumns(session, block, {}, top - 1);
}

int ChosenOption(const Session& session, int options) {
  for (int i = 0; i < options; ++i) {
    if (session.prompts.OptionOn(i)) return i;
  }
  return 0;
}

std::string NumberText(const Session& session, double x) { return Localized(GeneralText(x), session.options.regional); }

}  // namespace tellurix
