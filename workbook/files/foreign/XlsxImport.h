// Files of Office Open XML (ECMA-376), ".xlsx".
#pragma once

#include <string>

#include "workbook/Workbook.h"
#include "workbook/files/foreign/Archive.h"

namespace tellurix {

bool IsXlsx(Archive& archive);

// In place of all that is in the workbook: cells, formulas with their results, looks, widths, settings of the sheets.
// False with the reason in `problem`.
bool ReadXlsx(Archive& archive, Workbook& workbook, std::string& problem);

}  // namespace tellurix
