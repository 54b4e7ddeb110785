// Workbooks of other programs, read by the libraries of others. To be called in a process that may come to grief.
#pragma once

#include <filesystem>
#include <string>

#include "workbook/Workbook.h"

namespace tellurix {

// xls, xlsx, ods or gnumeric, by the contents. False with the reason in `problem`, and the workbook as it was.
bool ReadForeignWorkbook(const std::filesystem::path& path, Workbook& workbook, std::string& problem);

}  // namespace tellurix
