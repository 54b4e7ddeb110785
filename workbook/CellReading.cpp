#include "workbook/CellReading.h"

#include <cstdlib>

#include "numeric/Missing.h"
#include "numeric/Text.h"

namespace tellurix {

double GetCellNumber(const GridStore& grid, int row, int column) {
  if (row < 1 || column < 1) return MissingValue;
  const CellView cell = grid.ReadRC(row, column);
  switch (std::abs(cell.type)) {
    case NumberCell:
    case LogicalCell:
      return cell.number;
    case TextCell:
      return cell.text == "*" || cell.text == "." || EqualNoCase(cell.text, "MISSING") ? TextMissingValue
                                                                                       : MissingValue;
    default:
      return MissingValue;
  }
}

std::string GetCellLabel(const GridStore& grid, int row, int column) {
  if (row < 0 || column < 0) return {};
  std::string label;
  if (row == 0) {
    label = Trim(grid.ColText(column));
    if (label.empty()) label = ColumnLetters(column);
  } else if (column > 0) {
    label = grid.FormattedTextRC(row, column);
  } else {
    label = Trim(grid.RowText(row));
    if (label.empty()) label = std::to_string(row);
  }
  return std::string(Trim(label));
}

}  // namespace tellurix
