#include "workbook/data/SortedColumns.h"

#include <fmt/format.h>

#include "numeric/Missing.h"
#include "numeric/Sorting.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

// The columns to be written in the order of the sorted ones; none when cancelled.
std::vector<NumberColumn> SelectLinked(Session& session) {
  session.data.ClearGridSelection();
  return SelectNumbers(session, "Select data to LINK (Cancel for none)", MaxSelectedColumns)
      .value_or(std::vector<NumberColumn>());
}

// Columns of one length go together place by place, others by worksheet row.
NumberColumn InOrderOf(const NumberColumn& linked, const NumberColumn& sorted,
                       const std::vector<std::uint32_t>& order) {
  const auto length = static_cast<std::int64_t>(linked.values.size());
  const bool byPlace = linked.values.size() == sorted.values.size();
  const std::int64_t lower = byPlace ? 0 : linked.firstRow - sorted.firstRow;
  NumberColumn result{fmt::format("{} (on order of {})", linked.title, sorted.title), sorted.firstRow, {}};
  result.values.reserve(order.size());
  for (const std::uint32_t position : order) {
    const std::int64_t place = position - lower;
    const bool isThere = place >= 0 && place < length;
    result.values.push_back(isThere ? linked.values[static_cast<std::size_t>(place)] : MissingValue);
  }
  return result;
}

NumberColumn Sorted(const NumberColumn& column, const std::vector<std::uint32_t>& order) {
  NumberColumn result{"Sort: " + column.title, column.firstRow, {}};
  result.values.reserve(order.size());
  for (const std::uint32_t position : order) result.values.push_back(column.values[position]);
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
  BusyPointer(session);
  std::vector<NumberColumn> results;
  for (const NumberColumn& column : *columns) {
    const auto order = SortedOrder(column.values, direction);
    results.push_back(Sorted(column, order));
    for (const NumberColumn& other : linked) results.push_back(InOrderOf(other, column, order));
  }
  WriteNewColumns(session, std::move(results));
}

}  // namespace tellurix
