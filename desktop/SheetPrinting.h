// Worksheets on paper: printers and the print preview.
#pragma once

#include <QPagedPaintDevice>
#include <map>
#include <optional>
#include <string>

#include "desktop/ReportPrinting.h"
#include "workbook/Workbook.h"

namespace tellurix {

// How the sheets of a window print.
struct SheetPrintSetup {
  PageSetup page;
  bool gridlines = true;
  bool headings = true;                    // of columns and rows
  std::map<std::string, CellRange> areas;  // by the name of the sheet; without one all that is used prints
};

// What prints of the active sheet; nothing of an empty one.
std::optional<CellRange> PrintedRange(const Workbook& workbook, const SheetPrintSetup& setup);

// Draws cells of the active sheet page by page, those below first, then those to the right; hidden rows and columns
// are left out. Each page ends with its number and the number of all pages, `total`. At most `mostPages` are drawn
// (0: all). How many were; -1 when the device takes no painting.
int PrintSheet(const Workbook& workbook, const CellRange& range, const SheetPrintSetup& setup,
               QPagedPaintDevice& device, PageRange pages = {}, int mostPages = 0, int* total = nullptr);

}  // namespace tellurix
