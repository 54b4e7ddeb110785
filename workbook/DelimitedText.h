// Comma- and tab-separated text files, read into and written from the active sheet of a workbook.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "host/Host.h"
#include "numeric/Regional.h"
#include "workbook/Workbook.h"

namespace tellurix {

// Reads a file into the active sheet from A1, in place of the cells that are there; every line, the first too, becomes
// a row of cells. The workbook counts as saved afterwards and has no history.
//   - The separator is a tab if the first line holds one outside quotes; else a semicolon if the line has semicolons
//     and no comma, or where the decimal symbol is a comma (unless the line has commas and no semicolon, and is more
//     than a number); else a comma.
//   - A field that starts with a double quote runs to its closing quote, over separators and line breaks; a doubled
//     quote stands for one. Another field loses the quotes at its ends.
//   - A field that reads as a number by the regional rule, quoted or not, becomes one; an empty one an empty cell; any
//     other a text. Where the decimal symbol separates the fields, numbers have a point.
//   - Lines end in CR LF, LF or CR. NUL bytes are dropped. The text is UTF-8, with or without its mark, or UTF-16; a
//     field that is not UTF-8 is read as Windows-1252.
// False when nothing was loaded, with the reason in `error` (empty when `poll` stopped it), and the workbook is as it
// was: the file cannot be read, has more rows or columns than a sheet, a field of more than MaxFieldLength characters,
// or a quote that is never closed. Memory beyond that for the cells stays within a few megabytes.
bool ReadDelimited(const std::filesystem::path& path, Workbook& workbook, const Regional& regional, std::string& error,
                   const Poll& poll = {});

inline constexpr std::size_t MaxFieldLength = 32767;

// Writes the cells of the active sheet from A1 to the last used row and column. Numbers have the fewest digits that
// read back exactly, and the decimal symbol; dates are ISO dates, to the millisecond; logicals are TRUE and FALSE,
// formulas their results; fields are quoted where they need it. Headings are left out. The file is written beside the
// old one and takes its place when it is complete. False when that fails, with the reason in `error`.
bool WriteDelimited(const Workbook& workbook, const std::filesystem::path& path, char separator, std::string& error,
                    const Regional& regional = {});

// The same for ranges of cells, side by side: one line for each row of the longest.
bool WriteDelimited(const Workbook& workbook, std::span<const CellRange> ranges, const std::filesystem::path& path,
                    char separator, const Regional& regional, std::string& error);

// What separates the fields of a csv: a comma, or a semicolon where the comma is the decimal symbol.
char CsvSeparator(const Regional& regional);

}  // namespace tellurix
