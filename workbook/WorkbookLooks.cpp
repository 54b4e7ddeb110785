// Headings, widths and looks.
#include <algorithm>
#include <cmath>

#include "numeric/Text.h"
#include "workbook/WorkbookData.h"

namespace tellurix {

namespace {

constexpr double NarrowestFit = 8;
constexpr double WidestFit = 60;
constexpr int FirstCellsFitted = 1000;
constexpr int SampledCellsFitted = 1000;

}  // namespace

std::string Workbook::ColText(int column) const { return Active().HeadingAt(ColumnHeadings, column); }
std::string Workbook::RowText(int row) const { return Active().HeadingAt(RowHeadings, row); }

void Workbook::SetHeading(int slot, int at, std::string_view text) {
  if (text.empty() && Active().HeadingAt(slot, at).empty()) return;
  const AutoStep step(*this, "Heading");
  if (text.empty()) {
    ForCell(slot, at).Clear(at, at);
    DropIfEmpty(slot);
  } else {
    const TextRef interned = texts_->Intern(text);
    ForCell(slot, at).Set(at, interned);
  }
  if (slot == RowHeadings) {
    Touch(WorkbookChange::Kind::Headings, at, 0, at, 0);
  } else {
    Touch(WorkbookChange::Kind::Headings, 0, at, 0, at);
  }
}

void Workbook::ColText(int column, std::string_view text) {
  if (Fits(1, column)) SetHeading(ColumnHeadings, column, text);
}

void Workbook::RowText(int row, std::string_view text) {
  if (Fits(row, 1)) SetHeading(RowHeadings, row, text);
}

double Workbook::ColumnWidth(int column) const {
  const CellColumn* widths = Active().Find(Widths);
  if (!widths || column < 1 || widths->Type(column) != NumberCell) return DefaultColumnWidth;
  return widths->Number(column);
}

void Workbook::SetColumnWidth(int column, double width) {
  if (!Fits(1, column)) return;
  const bool toDefault = !std::isfinite(width) || width < 0;
  const CellColumn* widths = Active().Find(Widths);
  if (toDefault && (!widths || widths->Type(column) == EmptyCell)) return;
  const AutoStep step(*this, "Column width");
  if (toDefault) {
    ForCell(Widths, column).Clear(column, column);
    DropIfEmpty(Widths);
  } else {
    ForCell(Widths, column).Set(column, width);
  }
  Touch(WorkbookChange::Kind::Widths, 0, column, 0, column);
}

void Workbook::SetColWidthAuto(const CellRange& range, bool defaults) {
  const CellRange fitted = OnSheet(range);
  const AutoStep step(*this, "Column width");
  const CellColumn* headings = Active().Find(ColumnHeadings);
  const CellColumn* widths = Active().Find(Widths);
  // Beyond all of these there is nothing to fit and nothing to put back.
  const int used = std::max({LastCol(), headings ? headings->LastRow() : 0, widths ? widths->LastRow() : 0});
  for (int column = fitted.firstColumn; column <= std::min(fitted.lastColumn, used); ++column) {
    std::size_t widest = DisplayWidth(ColText(column));
    if (const CellColumn* cells = ColumnAt(1, column)) {
      const auto measure = [&](int row) { widest = std::max(widest, DisplayWidth(Displayed(cells->View(row)))); };
      const int last = std::min(fitted.lastRow, cells->LastRow());
      const int dense = std::min<long long>(last, fitted.firstRow + FirstCellsFitted - 1LL);
      for (int row = fitted.firstRow; row <= dense; ++row) measure(row);
      const int stride = std::max(1, (last - dense) / SampledCellsFitted + 1);
      for (int row = dense + stride; row <= last; row += stride) measure(row);
    }
    if (widest > 0) {
      SetColumnWidth(column, std::clamp(static_cast<double>(widest), NarrowestFit, WidestFit));
    } else if (defaults) {
      SetColumnWidth(column, -1);
    }
  }
}

}  // namespace tellurix
