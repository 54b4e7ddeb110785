// Workbooks as Office Open XML (ECMA-376), ".xlsx".
#pragma once

#include <filesystem>
#include <string>

#include "workbook/Workbook.h"

namespace tellurix {

// All sheets with their cells, formulas with results, looks, widths, heights and settings; numbers in the fewest digits
// that read back exactly. Headings have no place there, and names of sheets lose the characters that are not allowed.
// A formula that cannot be read is written as a text. False with the reason in `problem`.
bool WriteXlsx(const Workbook& workbook, const std::filesystem::path& path, std::string& problem);

}  // namespace tellurix
