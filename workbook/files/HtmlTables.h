// Workbooks as web pages.
#pragma once

#include <filesystem>
#include <string>

#include "workbook/Workbook.h"

namespace tellurix {

// A table for each sheet that holds anything. With looks: the cells as displayed, in their colours, fonts and widths.
// Without: numbers in the fewest digits that read back exactly (dates as such), and nothing but the tables.
bool WriteHtmlTables(const Workbook& workbook, const std::filesystem::path& path, bool withLooks, std::string& problem);

}  // namespace tellurix
