// Workbooks from and to files of every kind that the system knows.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "host/Host.h"
#include "numeric/Regional.h"
#include "workbook/Workbook.h"

namespace tellurix {

enum class WorkbookFileType {
  Native,    // tlw
  Excel97,   // xls of version 8
  Excel5,    // xls of versions 5 and 7/95
  Xlsx,      //
  Ods,       // read only
  Gnumeric,  // read only
  TabText,   // both tabbed texts hold the results of formulas and unrounded numbers
  TabValues,
  Csv,
  Html,     // write only: tables with their looks, of all sheets
  HtmlData  // write only: bare tables
};

// What ReadWorkbookFile and WriteWorkbookFile say where they would need a program that is not installed.
inline constexpr std::string_view NoOffice = "LibreOffice, which could convert the file, is not installed.";
inline constexpr std::string_view NoOfficeForXls =
    "Files of this kind are written by LibreOffice, which is not installed. Save the workbook as .xlsx instead.";

// And of xls 5, for which there is no program.
inline constexpr std::string_view NoExcel5 =
    "Files of this older kind can be read, but no more written. Save the workbook as .xlsx instead.";

// Reads a file by its contents where they tell, else by its extension, in place of all that is in the workbook, which
// counts as saved then. False when nothing was loaded, with the reason in `problem` (empty when `poll` stopped it), and
// the workbook is as it was.
bool ReadWorkbookFile(const std::filesystem::path& path, Workbook& workbook, const Regional& regional, const Poll& poll,
                      std::string& problem);

// The type that an extension stands for (of xls the newer one, of htm the one with looks).
std::optional<WorkbookFileType> WorkbookTypeOf(const std::filesystem::path& path);

// Writes beside the old file, syncs, and puts the new one in its place. The text types hold the active sheet alone,
// with its numbers in the regional form. False with the reason in `problem` and the old file as it was.
bool WriteWorkbookFile(const Workbook& workbook, const std::filesystem::path& path, WorkbookFileType type,
                       std::string& problem, const Regional& regional = {});

}  // namespace tellurix
