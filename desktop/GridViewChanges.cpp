// What changes the cells of the grid by whole ranges: fill, insert, delete, undo, replace.

#include <algorithm>

#include "desktop/GridRanges.h"
#include "desktop/GridView.h"

namespace tellurix {

bool GridView::FillDown() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Fill down");
  for (CellRange range : MarkedRanges()) {
    if (range.firstRow == range.lastRow && range.firstRow > 1) --range.firstRow;  // from the row above
    if (CellCount(range) > MaxBlockCells && !IsWholeRows(range)) {
      return Refuse(tr("The marked range is too large to be filled."));
    }
    workbook_.FillDown(range);
  }
  return true;
}

bool GridView::FillRight() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Fill right");
  for (CellRange range : MarkedRanges()) {
    if (range.firstColumn == range.lastColumn && range.firstColumn > 1) --range.firstColumn;
    if (CellCount(range) > MaxBlockCells && !IsWholeColumns(range)) {
      return Refuse(tr("The marked range is too large to be filled."));
    }
    workbook_.FillRight(range);
  }
  return true;
}

bool GridView::Clear() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Clear");
  for (const CellRange& range : MarkedRanges()) workbook_.ClearRange(range);
  return true;
}

bool GridView::InsertRows() {
  if (!ReadyToChange()) return false;
  const CellRange range = LastRange();
  return workbook_.InsertRows(range.firstRow, range.lastRow - range.firstRow + 1) ||
         Refuse(tr("Rows with contents would be pushed off the sheet."));
}

bool GridView::InsertColumns() {
  if (!ReadyToChange()) return false;
  const CellRange range = LastRange();
  return workbook_.InsertColumns(range.firstColumn, range.lastColumn - range.firstColumn + 1) ||
         Refuse(tr("Columns with contents would be pushed off the sheet."));
}

// Several ranges go from the last one up; what overlaps is taken out once.
bool GridView::DeleteRows() {
  if (!ReadyToChange()) return false;
  std::vector<CellRange> ranges = MarkedRanges();
  std::sort(ranges.begin(), ranges.end(),
            [](const CellRange& a, const CellRange& b) { return a.firstRow > b.firstRow; });
  const GridStep step(workbook_, "Delete rows");
  int before = GridStore::MaxRows + 1;
  for (const CellRange& range : ranges) {
    const int last = std::min(range.lastRow, before - 1);
    if (last < range.firstRow) continue;
    workbook_.DeleteRows(range.firstRow, last - range.firstRow + 1);
    before = range.firstRow;
  }
  return true;
}

bool GridView::DeleteColumns() {
  if (!ReadyToChange()) return false;
  std::vector<CellRange> ranges = MarkedRanges();
  std::sort(ranges.begin(), ranges.end(),
            [](const CellRange& a, const CellRange& b) { return a.firstColumn > b.firstColumn; });
  const GridStep step(workbook_, "Delete columns");
  int before = GridStore::MaxColumns + 1;
  for (const CellRange& range : ranges) {
    const int last = std::min(range.lastColumn, before - 1);
    if (last < range.firstColumn) continue;
    workbook_.DeleteColumns(range.firstColumn, last - range.firstColumn + 1);
    before = range.firstColumn;
  }
  return true;
}

bool GridView::InsertCells(tellurix::Shift shift) {
  if (!ReadyToChange()) return false;
  if (workbook_.SelectionCount() != 1) return Refuse(tr("Mark a single range to insert cells."));
  return workbook_.InsertCells(LastRange(), shift) || Refuse(tr("Cells with contents would be pushed off the sheet."));
}

bool GridView::DeleteCells(tellurix::Shift shift) {
  if (!ReadyToChange()) return false;
  if (workbook_.SelectionCount() != 1) return Refuse(tr("Mark a single range to delete cells."));
  return workbook_.DeleteCells(LastRange(), shift);
}

bool GridView::Undo() {
  if (selecting_) return false;
  CancelEdit();
  const bool done = workbook_.Undo();
  if (done) Refresh();
  return done;
}

bool GridView::Redo() {
  if (selecting_) return false;
  CancelEdit();
  const bool done = workbook_.Redo();
  if (done) Refresh();
  return done;
}

// --- find and replace ---

bool GridView::Find(const QString& text, const FindOptions& options) {
  if (!CommitEdit()) return false;
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  if (!FindNext(workbook_, text.toStdString(), options, regional_, row, column)) return false;
  Select({row, column, row, column});
  return true;
}

bool GridView::Replace(const QString& text, const QString& by, const FindOptions& options) {
  if (!ReadyToChange()) return false;
  const bool replaced = ReplaceOne(workbook_, workbook_.ActiveRow(), workbook_.ActiveColumn(), text.toStdString(),
                                   by.toStdString(), options, regional_);
  Find(text, options);
  return replaced;
}

int GridView::ReplaceEverywhere(const QString& text, const QString& by, const FindOptions& options) {
  if (!ReadyToChange()) return 0;
  return ReplaceAll(workbook_, text.toStdString(), by.toStdString(), options, regional_);
}

}  // namespace tellurix
