// Ranges of a sheet as its windows reckon with them.
#pragma once

#include <QtGlobal>

#include "workbook/GridStore.h"

namespace tellurix {

inline bool HasRow(const CellRange& range, int row) { return row >= range.firstRow && row <= range.lastRow; }
inline bool HasColumn(const CellRange& range, int column) {
  return column >= range.firstColumn && column <= range.lastColumn;
}
inline bool HasCell(const CellRange& range, int row, int column) {
  return HasRow(range, row) && HasColumn(range, column);
}

inline bool IsWholeColumns(const CellRange& range) {
  return range.firstRow == 1 && range.lastRow == GridStore::MaxRows;
}
inline bool IsWholeRows(const CellRange& range) {
  return range.firstColumn == 1 && range.lastColumn == GridStore::MaxColumns;
}

inline void WidenToColumns(CellRange& range) {
  range.firstRow = 1;
  range.lastRow = GridStore::MaxRows;
}
inline void WidenToRows(CellRange& range) {
  range.firstColumn = 1;
  range.lastColumn = GridStore::MaxColumns;
}

inline qint64 CellCount(const CellRange& range) {
  return static_cast<qint64>(range.lastRow - range.firstRow + 1) * (range.lastColumn - range.firstColumn + 1);
}

}  // namespace tellurix
