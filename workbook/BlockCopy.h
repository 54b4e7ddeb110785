// Cells from one workbook to another.
#pragma once

#include "workbook/Workbook.h"

namespace tellurix {

// Puts values and texts of the active sheet of one workbook into that of another, its A1 at a cell there; cells that
// are empty become so. Formulas come as their results. False, and nothing changed, when they do not fit or the sheet is
// locked.
bool CopyCells(const Workbook& from, Workbook& to, int row, int column);

}  // namespace tellurix
