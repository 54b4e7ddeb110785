// Files of OpenDocument spreadsheets (OASIS ODF 1.2), ".ods".
#pragma once

#include <string>

#include "workbook/Workbook.h"
#include "workbook/files/foreign/Archive.h"

namespace tellurix {

bool IsOds(Archive& archive);

// In place of all that is in the workbook: cells, formulas with their results, looks, widths. False with the reason in
// `problem`.
bool ReadOds(Archive& archive, Workbook& workbook, std::string& problem);

}  // namespace tellurix
