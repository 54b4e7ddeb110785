// The marked ranges of the grid and the figures over them.

#include <algorithm>
#include <cmath>

#include "desktop/GridRanges.h"
#include "desktop/GridView.h"
#include "desktop/QtText.h"

namespace tellurix {

namespace {

constexpr qint64 SummaryCells = 100'000;  // at a time

CellRange Between(int row, int column, int otherRow, int otherColumn) {
  return {std::min(row, otherRow), std::min(column, otherColumn), std::max(row, otherRow),
          std::max(column, otherColumn)};
}

}  // namespace

std::vector<CellRange> GridView::MarkedRanges() const {
  std::vector<CellRange> ranges;
  for (int i = 0; i < workbook_.SelectionCount(); ++i) ranges.push_back(workbook_.GetSelection(i));
  return ranges;
}

CellRange GridView::LastRange() const { return workbook_.GetSelection(workbook_.SelectionCount() - 1); }

bool GridView::IsMarked(const Hit& hit) const {
  const std::vector<CellRange> ranges = MarkedRanges();
  return std::any_of(ranges.begin(), ranges.end(), [&](const CellRange& range) {
    switch (hit.area) {
      case Area::ColumnHeading:
      case Area::ColumnBorder:
        return IsWholeColumns(range) && HasColumn(range, hit.column);
      case Area::RowHeading:
      case Area::RowBorder:
        return IsWholeRows(range) && HasRow(range, hit.row);
      default:
        return HasCell(range, hit.row, hit.column);
    }
  });
}

bool GridView::ColumnIsTouched(int column, bool& whole) const {
  bool touched = false;
  for (int i = 0; i < workbook_.SelectionCount(); ++i) {
    const CellRange range = workbook_.GetSelection(i);
    if (!HasColumn(range, column)) continue;
    touched = true;
    whole = whole || IsWholeColumns(range);
  }
  return touched;
}

bool GridView::RowIsTouched(int row, bool& whole) const {
  bool touched = false;
  for (int i = 0; i < workbook_.SelectionCount(); ++i) {
    const CellRange range = workbook_.GetSelection(i);
    if (!HasRow(range, row)) continue;
    touched = true;
    whole = whole || IsWholeRows(range);
  }
  return touched;
}

// The corner of the last range that moves when it is extended: the one across from the active cell.
void GridView::MovingEnd(int& row, int& column) const {
  const CellRange range = LastRange();
  row = workbook_.ActiveRow() == range.lastRow ? range.firstRow : range.lastRow;
  column = workbook_.ActiveColumn() == range.lastColumn ? range.firstColumn : range.lastColumn;
}

CellRange GridView::SpanTo(int row, int column) const {
  return Between(workbook_.ActiveRow(), workbook_.ActiveColumn(), row, column);
}

void GridView::ReplaceLastRange(const CellRange& range) {
  const int activeRow = workbook_.ActiveRow();
  const int activeColumn = workbook_.ActiveColumn();
  std::vector<CellRange> ranges = MarkedRanges();
  if (ranges.back() == range) return;
  ranges.back() = range;
  workbook_.SetSelection(ranges[0]);
  for (std::size_t i = 1; i < ranges.size(); ++i) workbook_.AddSelection(ranges[i]);
  workbook_.SetActiveCell(activeRow, activeColumn);
  MarksChanged();
}

void GridView::MarksChanged() {
  shownRow_ = workbook_.ActiveRow();
  shownColumn_ = workbook_.ActiveColumn();
  ResetSummary();
  ShowActiveCell();
  viewport()->update();
  emit SelectionChanged(SelectionText());
}

void GridView::Select(const CellRange& range) {
  workbook_.SetSelection(range);
  tabColumn_ = 0;
  ScrollTo(workbook_.ActiveRow(), workbook_.ActiveColumn());
  MarksChanged();
}

void GridView::SelectAll() {
  workbook_.SetSelection({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
  MarksChanged();
}

bool GridView::GoTo(const QString& reference) {
  std::string text = reference.trimmed().toStdString();
  int sheet = workbook_.Sheet();
  if (const auto mark = text.rfind('!'); mark != std::string::npos) {
    std::string name = text.substr(0, mark);
    if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'') name = name.substr(1, name.size() - 2);
    sheet = workbook_.FindSheet(name);
    if (sheet == 0) return false;
    text = text.substr(mark + 1);
  }
  CellRange range;
  if (!ReadRange(text, range) || !CommitEdit()) return false;
  if (sheet != workbook_.Sheet()) {
    workbook_.Sheet(sheet);
    Refresh();
  }
  Select(range);
  return true;
}

QString GridView::SelectionText() const {
  const bool oneCell = workbook_.SelectionCount() == 1 && workbook_.GetSelection(0).IsOneCell();
  if (oneCell) return FromUtf8(ColumnLetters(workbook_.ActiveColumn())) + QString::number(workbook_.ActiveRow());
  QString text;
  for (const CellRange& range : MarkedRanges()) {
    if (!text.isEmpty()) text += u',';
    const auto letters = [](int column) { return FromUtf8(ColumnLetters(column)); };
    if (IsWholeColumns(range)) {
      text += letters(range.firstColumn) + u':' + letters(range.lastColumn);
    } else if (IsWholeRows(range)) {
      text += QString::number(range.firstRow) + u':' + QString::number(range.lastRow);
    } else {
      text += FromUtf8(RangeText(range));
    }
  }
  return text;
}

// --- figures over the marks ---

void GridView::ResetSummary() {
  summary_ = {};
  summaryCarry_ = 0;
  summaryRange_ = 0;
  summaryColumn_ = 0;
  summaryDone_ = false;
  summaryTimer_.start(100, this);
}

// Goes on for about as many cells; a range is run through down its columns. The sum is compensated (Neumaier 1974).
void GridView::Summarize(qint64 cells) {
  const int lastRow = workbook_.LastRow();
  const int lastColumn = workbook_.LastCol();
  while (summaryRange_ < static_cast<std::size_t>(workbook_.SelectionCount())) {
    CellRange range = workbook_.GetSelection(static_cast<int>(summaryRange_));
    range.lastRow = std::min(range.lastRow, lastRow);
    range.lastColumn = std::min(range.lastColumn, lastColumn);
    if (summaryColumn_ == 0) {
      summaryColumn_ = range.firstColumn;
      summaryRow_ = range.firstRow;
    }
    for (; summaryColumn_ <= range.lastColumn; ++summaryColumn_, summaryRow_ = range.firstRow) {
      for (; summaryRow_ <= range.lastRow; ++summaryRow_) {
        if (cells-- <= 0) return;
        const CellView cell = workbook_.ReadRC(summaryRow_, summaryColumn_);
        if (std::abs(cell.type) != NumberCell) continue;
        summary_.areDates = (summary_.areDates || summary_.count == 0) &&
                            workbook_.NumberFormatAt(summaryRow_, summaryColumn_).IsDate();
        ++summary_.count;
        const double sum = summary_.sum + cell.number;
        summaryCarry_ += std::abs(summary_.sum) >= std::abs(cell.number) ? (summary_.sum - sum) + cell.number
                                                                         : (cell.number - sum) + summary_.sum;
        summary_.sum = sum;
      }
    }
    ++summaryRange_;
    summaryColumn_ = 0;
  }
  summary_.sum += summaryCarry_;
  summary_.mean = summary_.count > 0 ? summary_.sum / static_cast<double>(summary_.count) : 0;
  summaryDone_ = true;
}

const SelectionSummary& GridView::Summary() {
  while (!summaryDone_) Summarize(SummaryCells);
  return summary_;
}

void GridView::GoOnSummarizing() {
  if (!summaryDone_) Summarize(SummaryCells);
  if (summaryDone_) {
    summaryTimer_.stop();
    emit SummaryChanged(summary_);
  } else {
    summaryTimer_.start(0, this);
  }
}

}  // namespace tellurix
