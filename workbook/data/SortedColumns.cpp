#include "workbook/data/SortedColumns.h"

#include <fmt/format.h>

#include "numeric/Missing.h"
#include "numeric/Sorting.h"
#include "session/Skeleton.h"
#include "workbook/data/Alongside.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

// The columns to be written in the order of the sorted ones, place by place beside them; none when cancelled.
std::vector<NumberColumn> SelectLinked(Session& session) {
  DataSelection& data = session.data;
  std::vector<NumberColumn> linked;
  if (!SelectAlongside(session, data.ColumnInfo.front(), ModeNumericRows, MaxSelectedColumns,
                       "Select data to LINK (Cancel for none)")) {
    return linked;
  }
  for (std::size_t k = 0; k < data.ColumnInfo.size(); ++k) {
    const ColumnDescriptor& info = data.ColumnInfo[k];
    data.DataMatrix[k].resize(static_cast<std::size_t>(info.Count));
    linked.push_back({info.Title, info.StartRow, std::move(data.DataMatrix[k])});
  }
  return linked;
}

// Places behind the end of the column are missing.
NumberColumn InOrder(std::string title, int firstRow, const std::vector<double>& values,
                     const std::vector<std::uint32_t>& order) {
  NumberColumn result{std::move(title), firstRow, {}};
  result.values.reserve(order.size());
  for (const std::uint32_t place : order) result.values.push_back(place < values.size() ? values[place] : MissingValue);
  return result;
}

}  // namespace

void CreateSortedColumns(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for SORTING", MaxSelectedColumns);
  if (!columns) return;
  if (!session.prompts.ShowOptions("^Sort ascending|^Sort descending|Link to other variable", "Select sorting order")) {
    return;
  }
  const SortDirection direction = session.prompts.OptionOn(1) ? SortDirection::Falling : SortDirection::Rising;
  std::vector<NumberColumn> linked;
  if (session.prompts.OptionOn(2)) linked = SelectLinked(session);
  if (session.data.SelectionRestart || !FitEmptySheet(session.host, columns->size() * (1 + linked.size()))) return;
  BusyPointer(session);
  std::vector<NumberColumn> results;
  for (const NumberColumn& column : *columns) {
    const auto order = SortedOrder(column.values, direction);
    results.push_back(InOrder("Sort: " + column.title, column.firstRow, column.values, order));
    for (const NumberColumn& other : linked) {
      const std::string title = fmt::format("{} (on order of {})", other.title, column.title);
      results.push_back(InOrder(title, column.firstRow, other.values, order));
    }
  }
  WriteNewColumns(session, std::move(results));
}

}  // namespace tellurix
