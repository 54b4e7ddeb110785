#include "workbook/data/ClearMissing.h"

#include <algorithm>
#include <new>

#include "numeric/Missing.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

// The values close up from the top of the selection on.
void CloseUp(Session& session) {
  auto columns = SelectNumbers(session, "Select data to copy and clear MISSING VALUES", MaxSelectedColumns);
  if (!columns) return;
  BusyPointer(session);
  for (NumberColumn& column : *columns) {
    column.title += " [no gaps]";
    std::erase(column.values, MissingValue);
  }
  const int top = std::ranges::min(*columns, {}, &NumberColumn::firstRow).firstRow;
  for (NumberColumn& column : *columns) column.firstRow = top;
  WriteNewColumns(session, std::move(*columns));
}

}  // namespace

void ClearMissingData(Session& session) {
  try {
    CloseUp(session);
  } catch (const std::bad_alloc&) {
    ShowMessage(session, "Error: not enough memory for this operation.", WarningIcon);
  }
}

}  // namespace tellurix
