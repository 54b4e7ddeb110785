// The text worksheet of the system's predecessor, Morvane Tabula for DOS: items separated by commas or line breaks,
// text in double quotes. In order: the number of columns, the date, an item without a meaning; the title and the number
// of rows of each column; then the values, column by column.
#pragma once

#include <filesystem>
#include <string>

#include "host/Host.h"
#include "workbook/Workbook.h"

namespace tellurix {

// Whether a file is one: a valid date for its second item, after the number of columns, identifies it. So that a list
// of dated records is not taken for one, the titles and the numbers of rows must follow. False also for a file that
// cannot be read.
bool IsDosWorksheet(const std::filesystem::path& path);

// Reads a file into the active sheet from A1, in place of the cells that are there, each column with its title in the
// first row. The mark 3e300 becomes "*", 3.456789e+33 an empty cell. Text that is not UTF-8 is read in code page 850.
// The workbook counts as saved afterwards and has no history. `poll` is told after each column. False when nothing was
// loaded, with the reason in `problem` (empty when `poll` stopped it), and the workbook is as it was.
bool ReadDosWorksheet(const std::filesystem::path& path, Workbook& workbook, std::string& problem,
                      const Poll& poll = {});

}  // namespace tellurix
