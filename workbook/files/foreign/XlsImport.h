// Files of the binary xls kinds 5/95 and 97-2003 (BIFF 5 and 8, [MS-XLS]).
#pragma once

#include <string>
#include <string_view>

#include "workbook/Workbook.h"

namespace tellurix {

// The bytes of a whole file, in place of all that is in the workbook: cells, formulas with their results, looks,
// widths, settings of the sheets. False with the reason in `problem`.
bool ReadXls(std::string_view bytes, Workbook& workbook, std::string& problem);

}  // namespace tellurix
