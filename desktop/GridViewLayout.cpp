// Where the cells of the grid lie: sizes, scrolling, frozen panes, and what is under a pixel.

#include <QLineEdit>
#include <QResizeEvent>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "desktop/GridView.h"
#include "desktop/QtText.h"

namespace tellurix {

namespace {

constexpr int WidestRowHeading = 160;

// How many spans from `first` on show whole; at least 1.
int CountWhole(const std::vector<GridSpan>& spans, int first, int room) {
  const auto count = std::count_if(spans.begin(), spans.end(),
                                   [&](const GridSpan& span) { return span.index >= first && span.End() <= room; });
  return std::max(static_cast<int>(count), 1);
}

// The pixels of those that do not scroll.
int FrozenSize(const std::vector<GridSpan>& spans, int frozen) {
  int size = 0;
  for (const GridSpan& span : spans) size += span.index <= frozen ? span.size : 0;
  return size;
}

// The first of an axis with which all from it to the end of `index` have room.
int FirstWithRoom(const GridAxis& axis, int index, qint64 room) {
  const qint64 end = axis.Start(index + 1);
  const int start = axis.At(std::max<qint64>(0, end - room));
  if (end - axis.Start(start) <= room) return start;
  const int next = axis.Next(start, 1);
  return next ? next : start;
}

// Where the scrolled ones have to start for `index` to show whole; where they do if it shows or is none.
int FirstToShow(const GridAxis& axis, int frozen, int first, int index, int room) {
  if (index <= frozen || index < 1) return first;
  if (index < first) return index;
  if (axis.Start(index + 1) - axis.Start(first) <= room) return first;
  return std::min(FirstWithRoom(axis, index, room), index);
}

// Bars count rows and columns. They end with the used part or with what shows now, a page further at most, and always
// leave a step to go until the sheet itself ends.
void SetBar(QScrollBar* bar, const GridAxis& axis, int frozen, int top, int used, int page, int room) {
  if (bar->isSliderDown()) return;
  const int first = frozen + 1;
  const int lastTop = std::max(FirstWithRoom(axis, axis.Count(), room), first);
  const int last = std::clamp(std::max(used, top + page), first, lastTop);
  const QSignalBlocker block(bar);
  bar->setRange(first, std::max(last, top));
  bar->setPageStep(page);
  bar->setSingleStep(1);
  bar->setValue(top);
}

const GridSpan* FindSpan(const std::vector<GridSpan>& spans, int index) {
  const auto [first, end] = SpansWithin(spans, index, index);
  return first < end ? &spans[first] : nullptr;
}

// That of a pixel; the last one behind all.
const GridSpan& SpanAt(const std::vector<GridSpan>& spans, int pixel) {
  const auto found =
      std::partition_point(spans.begin(), spans.end(), [&](const GridSpan& span) { return span.End() <= pixel; });
  return found == spans.end() ? spans.back() : *found;
}

// The row or column whose border is near the pixel, which lies in the span; 0: none. The border belongs to the one
// before it; what is hidden there is dragged out from beyond it.
int BorderAt(const std::vector<GridSpan>& spans, const GridSpan& span, const GridAxis& axis, int pixel) {
  constexpr int Grip = 4;
  if (span.End() - pixel <= Grip && pixel <= span.End() + Grip) return span.index;
  if (pixel - span.start < Grip) {
    if (span.index > 1 && axis.IsHidden(span.index - 1)) return span.index - 1;
    if (&span != spans.data()) return (&span - 1)->index;
  }
  return 0;
}

}  // namespace

void GridView::MeasureFont() {
  const QFontMetricsF metrics(font());
  digitWidth_ = metrics.horizontalAdvance(u'0');
  fullHeadingHeight_ = static_cast<int>(std::ceil(metrics.height())) + 6;
  geometry_.rows.SetDefaultSize(static_cast<int>(std::ceil(metrics.height())) + 4);
}

int GridView::WidthToPixels(double characters) const {
  if (characters <= 0) return 0;
  return static_cast<int>(std::lround(std::min(characters, 1000.0) * digitWidth_)) + 2 * Padding;
}

double GridView::PixelsToWidth(int pixels) const {
  if (pixels <= Padding) return 0;
  return std::max(0.1, std::round((pixels - 2 * Padding) / digitWidth_ * 100) / 100);
}

void GridView::LoadWidths(int firstColumn, int lastColumn) {
  const double usual = workbook_.Settings().columnWidth;
  geometry_.columns.SetDefaultSize(WidthToPixels(usual));
  geometry_.columns.Reset(firstColumn, lastColumn);
  for (int column = std::max(firstColumn, 1); column <= std::min(lastColumn, GridStore::MaxColumns); ++column) {
    const double width = workbook_.ColumnWidth(column);
    if (width != usual) geometry_.columns.SetSize(column, column, WidthToPixels(width));
  }
}

void GridView::LoadGeometry() {
  LoadWidths(1, GridStore::MaxColumns);
  if (looks_) {
    geometry_.rows.Reset();
    geometry_.frozenRows = 0;
    geometry_.frozenColumns = 0;
    looks_->Describe(geometry_);
  }
  UpdateLayout();
  ScheduleUpkeep();
}

void GridView::UpdateLayout() {
  geometry_.topRow = std::max(geometry_.topRow, geometry_.frozenRows + 1);
  geometry_.leftColumn = std::max(geometry_.leftColumn, geometry_.frozenColumns + 1);
  const QSize size = viewport()->size();
  headingHeight_ = geometry_.showsHeadings ? fullHeadingHeight_ : 0;
  rows_ = LayOut(geometry_.rows, geometry_.frozenRows, geometry_.topRow, headingHeight_, size.height());

  const QFontMetrics metrics(font());
  const int digits = rows_.empty() ? 1 : static_cast<int>(QString::number(rows_.back().index).size());
  int width = static_cast<int>(std::ceil(digitWidth_ * std::max(digits, 3))) + 2 * Padding + 4;
  for (const GridSpan& row : rows_) {
    const std::string text = workbook_.RowText(row.index);
    if (!text.empty()) width = std::max(width, metrics.horizontalAdvance(FromUtf8(text)) + 2 * Padding);
  }
  headingWidth_ = geometry_.showsHeadings ? std::min(width, WidestRowHeading) : 0;
  columns_ = LayOut(geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn, headingWidth_, size.width());
  if (editing_) PlaceEditor();
}

QRect GridView::CellsRect() const {
  return QRect(QPoint(headingWidth_, headingHeight_), viewport()->rect().bottomRight());
}

int GridView::PageRows() const { return CountWhole(rows_, geometry_.topRow, viewport()->height()); }
int GridView::PageColumns() const { return CountWhole(columns_, geometry_.leftColumn, viewport()->width()); }

void GridView::UpdateScrollBars() {
  const QRect cells = CellsRect();
  SetBar(verticalScrollBar(), geometry_.rows, geometry_.frozenRows, geometry_.topRow,
         std::max(workbook_.LastRow(), workbook_.ActiveRow()), PageRows(),
         std::max(1, cells.height() - FrozenSize(rows_, geometry_.frozenRows)));
  SetBar(horizontalScrollBar(), geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn,
         std::max(workbook_.LastCol(), workbook_.ActiveColumn()), PageColumns(),
         std::max(1, cells.width() - FrozenSize(columns_, geometry_.frozenColumns)));
}

void GridView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  UpdateLayout();
  UpdateScrollBars();
}

void GridView::scrollContentsBy(int, int) {
  const int top = verticalScrollBar()->value();
  const int left = horizontalScrollBar()->value();
  if (top == geometry_.topRow && left == geometry_.leftColumn) return;
  FinishHeading(true);
  // A hidden row is no place to stand on: stepping into hidden ones goes through.
  const auto shown = [](const GridAxis& axis, int wanted, int from) {
    if (!axis.IsHidden(wanted)) return wanted;
    const int next = axis.Next(wanted, wanted < from ? -1 : 1);
    return next ? next : from;
  };
  geometry_.topRow = shown(geometry_.rows, top, geometry_.topRow);
  geometry_.leftColumn = shown(geometry_.columns, left, geometry_.leftColumn);
  UpdateLayout();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::ScrollBy(int rows, int columns) {
  const auto go = [](QScrollBar* bar, int by) {
    if (by == 0) return;
    bar->setValue(bar->value() + by);
  };
  go(verticalScrollBar(), rows);
  go(horizontalScrollBar(), columns);
}

// As much of the marked columns as has room, the active cell above all.
void GridView::ScrollToMarks() {
  ScrollTo(workbook_.ActiveRow(), LastRange().lastColumn);
  ScrollTo(workbook_.ActiveRow(), workbook_.ActiveColumn());
}

int GridView::TopRow() const { return geometry_.topRow; }
int GridView::LeftColumn() const { return geometry_.leftColumn; }

void GridView::ScrollTo(int row, int column) {
  const int top = FirstToShow(geometry_.rows, geometry_.frozenRows, geometry_.topRow, row,
                              CellsRect().height() - FrozenSize(rows_, geometry_.frozenRows));
  const int frozenWidth = FrozenSize(columns_, geometry_.frozenColumns);
  if (top != geometry_.topRow) {
    geometry_.topRow = top;
    UpdateLayout();  // the headings may have become wider
  }
  geometry_.leftColumn = FirstToShow(geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn, column,
                                     CellsRect().width() - frozenWidth);
  UpdateLayout();
  UpdateScrollBars();
  viewport()->update();
}

QRect GridView::CellRect(int row, int column) const {
  const GridSpan* r = FindSpan(rows_, row);
  const GridSpan* c = FindSpan(columns_, column);
  return r && c ? QRect(c->start, r->start, c->size, r->size) : QRect();
}

QRect GridView::ColumnHeadingRect(int column) const {
  const GridSpan* c = FindSpan(columns_, column);
  return c ? QRect(c->start, 0, c->size, headingHeight_) : QRect();
}

QRect GridView::RowHeadingRect(int row) const {
  const GridSpan* r = FindSpan(rows_, row);
  return r ? QRect(0, r->start, headingWidth_, r->size) : QRect();
}

// What shows of a range, and which of its edges do.
QRect GridView::RangeRect(const CellRange& range, bool& left, bool& top, bool& right, bool& bottom) const {
  const auto [firstRow, endRow] = SpansWithin(rows_, range.firstRow, range.lastRow);
  const auto [firstColumn, endColumn] = SpansWithin(columns_, range.firstColumn, range.lastColumn);
  if (firstRow == endRow || firstColumn == endColumn) return {};
  left = columns_[firstColumn].index == geometry_.columns.Next(range.firstColumn - 1, 1);
  top = rows_[firstRow].index == geometry_.rows.Next(range.firstRow - 1, 1);
  right = columns_[endColumn - 1].index == geometry_.columns.Next(range.lastColumn + 1, -1);
  bottom = rows_[endRow - 1].index == geometry_.rows.Next(range.lastRow + 1, -1);
  return {QPoint(columns_[firstColumn].start, rows_[firstRow].start),
          QPoint(columns_[endColumn - 1].End() - 1, rows_[endRow - 1].End() - 1)};
}

GridView::Hit GridView::HitTest(const QPoint& position) const {
  if (rows_.empty() || columns_.empty()) return {Area::Corner, geometry_.topRow, geometry_.leftColumn};
  const GridSpan& row = SpanAt(rows_, position.y());
  const GridSpan& column = SpanAt(columns_, position.x());
  const bool inHeadings = position.y() < headingHeight_;
  const bool inRowHeadings = position.x() < headingWidth_;
  if (inHeadings && inRowHeadings) return {Area::Corner, row.index, column.index};
  if (inHeadings) {
    if (const int index = BorderAt(columns_, column, geometry_.columns, position.x())) {
      return {Area::ColumnBorder, row.index, index};
    }
    return {Area::ColumnHeading, row.index, column.index};
  }
  if (inRowHeadings) {
    if (const int index = BorderAt(rows_, row, geometry_.rows, position.y())) {
      return {Area::RowBorder, index, column.index};
    }
    return {Area::RowHeading, row.index, column.index};
  }
  return {Area::Cells, row.index, column.index};
}

// --- panes and sizes ---

void GridView::FreezePanes() {
  const int rows = workbook_.ActiveRow() - 1;
  const int columns = workbook_.ActiveColumn() - 1;
  if (looks_) {
    looks_->Freeze(rows, columns);
  } else {
    geometry_.frozenRows = rows;
    geometry_.frozenColumns = columns;
  }
  LoadGeometry();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::UnfreezePanes() {
  if (looks_) {
    looks_->Freeze(0, 0);
  } else {
    geometry_.frozenRows = 0;
    geometry_.frozenColumns = 0;
  }
  LoadGeometry();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::SetRowHeight(int pixels) {
  const GridStep step(workbook_, "Row height");
  for (const CellRange& range : MarkedRanges()) {
    if (looks_) {
      looks_->SetRowHeight(range.firstRow, range.lastRow, pixels);
    } else if (pixels < 0) {
      geometry_.rows.Reset(range.firstRow, range.lastRow);
    } else {
      geometry_.rows.SetSize(range.firstRow, range.lastRow, pixels);
    }
  }
  LoadGeometry();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::HideRows(bool hide) {
  if (hide) return SetRowHeight(0);
  const GridStep step(workbook_, "Unhide rows");
  const GridAxis rows = geometry_.rows;
  for (const CellRange& range : MarkedRanges()) {
    for (int row = range.firstRow; row <= range.lastRow && rows.HasHidden(row, range.lastRow); ++row) {
      if (!rows.IsHidden(row)) continue;
      const int next = rows.Next(row, 1);
      const int last = next ? std::min(next - 1, range.lastRow) : range.lastRow;
      if (looks_) {
        looks_->SetRowHeight(row, last, -1);
      } else {
        geometry_.rows.Reset(row, last);
      }
      row = last;
    }
  }
  UpdateLayout();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::SetColumnWidth(double characters) {
  const GridStep step(workbook_, "Column width");
  for (const CellRange& range : MarkedRanges()) {
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
      workbook_.SetColumnWidth(column, characters);
    }
  }
}

void GridView::HideColumns(bool hide) {
  const GridStep step(workbook_, hide ? "Hide columns" : "Unhide columns");
  for (const CellRange& range : MarkedRanges()) {
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
      if (hide) {
        workbook_.SetColumnWidth(column, 0);
      } else if (workbook_.ColumnWidth(column) == 0) {
        workbook_.SetColumnWidth(column, -1);
      }
    }
  }
}

void GridView::AutoFitColumns() {
  const GridStep step(workbook_, "Column width");
  for (CellRange range : MarkedRanges()) {
    if (range.lastRow == GridStore::MaxRows) range.lastRow = std::max(range.firstRow, workbook_.LastRow());
    workbook_.SetColWidthAuto(range, true);
  }
}

}  // namespace tellurix
