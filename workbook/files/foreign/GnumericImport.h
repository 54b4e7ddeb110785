// Files of Gnumeric: XML, mostly packed by gzip.
#pragma once

#include <string>
#include <string_view>

#include "workbook/Workbook.h"

namespace tellurix {

bool IsGnumeric(std::string_view xml);

// The unpacked file, in place of all that is in the workbook: cells, formulas (whose results are not in such files),
// looks, widths. False with the reason in `problem`.
bool ReadGnumeric(std::string_view xml, Workbook& workbook, std::string& problem);

}  // namespace tellurix
