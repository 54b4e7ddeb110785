// Cells as the analyses read them.
#pragma once

#include <string>

#include "workbook/GridStore.h"

namespace tellurix {

// The number in a cell; TextMissingValue for an explicit mark ("*", "MISSING", "."); MissingValue for anything else,
// headings and places off the sheet included.
double GetCellNumber(const GridStore& grid, int row, int column);

// A trimmed label: of row 0 the column's heading or letters, of column 0 the row's heading or number, else the cell as
// displayed.
std::string GetCellLabel(const GridStore& grid, int row, int column);

}  // namespace tellurix
