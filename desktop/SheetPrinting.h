// Worksheets on paper: printers and the print preview.
#pragma once

#include <QPagedPaintDevice>
#include <optional>

#include "desktop/ReportPrinting.h"
#include "workbook/Workbook.h"

namespace tellurix {

inline constexpr QPageSize::PageSizeId PaperSizes[] = {QPageSize::A3, QPageSize::A4, QPageSize::A5, QPageSize::Letter,
                                                       QPageSize::Legal};

// The page of a sheet. Paper that has no name here is A4.
PageSetup PageOf(const SheetPrinting& printing);

// What prints of the active sheet: its print area, else all that is used; nothing of an empty one.
std::optional<CellRange> PrintedRange(const Workbook& workbook);

// Draws cells of the active sheet page by page, those below first, then those to the right; hidden rows and columns
// are left out. Each page ends with its number and the number of all pages, `total`. At most `mostPages` are drawn
// (0: all). How many were; -1 when the device takes no painting.
int PrintSheet(const Workbook& workbook, const Regional& regional, const CellRange& range, QPagedPaintDevice& device,
               PageRange pages = {}, int mostPages = 0, int* total = nullptr);

}  // namespace tellurix
