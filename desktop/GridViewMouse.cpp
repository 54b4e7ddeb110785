// The grid's mouse: marking, dragging of marks and borders, double clicks, where menus are asked for.

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <algorithm>
#include <utility>

#include "desktop/GridRanges.h"
#include "desktop/GridView.h"

namespace tellurix {

void GridView::mousePressEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  if (event->button() == Qt::RightButton) PressRight(HitTest(position), event->globalPosition().toPoint());
  if (event->button() == Qt::LeftButton) PressLeft(HitTest(position), position, event->modifiers());
}

void GridView::PressRight(const Hit& hit, const QPoint& globalPosition) {
  if (selecting_) {
    if (rightButtonConfirms_) emit ConfirmRequested();
    return;
  }
  if (!CommitEdit()) return;
  setFocus(Qt::MouseFocusReason);
  if (!IsMarked(hit)) {
    workbook_.SetSelection(RangeOf(hit));
    MarksChanged();
  }
  emit ContextMenuRequested(globalPosition);
}

// What a click there marks.
CellRange GridView::RangeOf(const Hit& hit) {
  switch (hit.area) {
    case Area::ColumnHeading:
    case Area::ColumnBorder:
      return {1, hit.column, GridStore::MaxRows, hit.column};
    case Area::RowHeading:
    case Area::RowBorder:
      return {hit.row, 1, hit.row, GridStore::MaxColumns};
    case Area::Cells:
      return {hit.row, hit.column, hit.row, hit.column};
    case Area::Corner:
      break;
  }
  return {1, 1, GridStore::MaxRows, GridStore::MaxColumns};
}

void GridView::PressLeft(const Hit& hit, const QPoint& position, Qt::KeyboardModifiers modifiers) {
  FinishHeading(true);
  if (!CommitEdit()) return;
  setFocus(Qt::MouseFocusReason);
  tabColumn_ = 0;
  dragPosition_ = position;
  switch (hit.area) {
    case Area::Corner:
      SelectAll();
      break;
    case Area::ColumnBorder:
      StartResize(Drag::ColumnWidth, hit.column, position.x(), geometry_.columns.Size(hit.column));
      break;
    case Area::RowBorder:
      StartResize(Drag::RowHeight, hit.row, position.y(), geometry_.rows.Size(hit.row));
      break;
    case Area::ColumnHeading:
      StartDrag(Drag::Columns, hit, modifiers);
      break;
    case Area::RowHeading:
      StartDrag(Drag::Rows, hit, modifiers);
      break;
    case Area::Cells:
      StartDrag(Drag::Cells, hit, modifiers);
      break;
  }
}

// --- dragging over cells and headings ---

void GridView::StartDrag(Drag drag, const Hit& hit, Qt::KeyboardModifiers modifiers) {
  drag_ = drag;
  if (modifiers & Qt::ShiftModifier) {
    DragTo(dragPosition_);
    return;
  }
  const CellRange range = RangeOf(hit);
  if (modifiers & Qt::ControlModifier) {
    workbook_.AddSelection(range);
    workbook_.SetActiveCell(range.firstRow, range.firstColumn);
  } else {
    workbook_.SetSelection(range);
  }
  MarksChanged();
}

void GridView::DragTo(const QPoint& position) {
  dragPosition_ = position;
  if (drag_ == Drag::ColumnWidth || drag_ == Drag::RowHeight) {
    ResizeTo(position);
  } else {
    MarkTo(position);
  }
}

void GridView::MarkTo(const QPoint& position) {
  const QRect cells = CellsRect();
  const QPoint inside(std::clamp(position.x(), cells.left(), cells.right()),
                      std::clamp(position.y(), cells.top(), cells.bottom()));
  const Hit hit = HitTest(inside);
  CellRange range = SpanTo(hit.row, hit.column);
  if (drag_ == Drag::Columns) WidenToColumns(range);
  if (drag_ == Drag::Rows) WidenToRows(range);
  ReplaceLastRange(range);
  const bool beyondRows = drag_ != Drag::Columns && position.y() != inside.y();
  const bool beyondColumns = drag_ != Drag::Rows && position.x() != inside.x();
  if (beyondRows || beyondColumns) {
    if (!scrollTimer_.isActive()) scrollTimer_.start(40, this);
  } else {
    scrollTimer_.stop();
  }
}

// Dragged beyond an edge: the further, the faster.
void GridView::ScrollOnByDrag() {
  const QRect cells = CellsRect();
  const auto speed = [](int pixels) {
    return pixels == 0 ? 0 : std::clamp(pixels / 8, -40, 40) + (pixels > 0 ? 1 : -1);
  };
  const auto beyond = [](int at, int first, int last) { return at < first ? at - first : std::max(0, at - last); };
  const int down = drag_ == Drag::Columns ? 0 : speed(beyond(dragPosition_.y(), cells.top(), cells.bottom()));
  const int right = drag_ == Drag::Rows ? 0 : speed(beyond(dragPosition_.x(), cells.left(), cells.right()) / 4);
  if (down == 0 && right == 0) {
    scrollTimer_.stop();
  } else {
    ScrollBy(down, right);
    DragTo(dragPosition_);
  }
}

void GridView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  if (drag_ != Drag::None) {
    DragTo(position);
    return;
  }
  switch (HitTest(position).area) {
    case Area::ColumnBorder:
      viewport()->setCursor(Qt::SplitHCursor);
      break;
    case Area::RowBorder:
      viewport()->setCursor(Qt::SplitVCursor);
      break;
    default:
      viewport()->unsetCursor();
  }
}

void GridView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const Drag ended = std::exchange(drag_, Drag::None);
  scrollTimer_.stop();
  if (ended == Drag::ColumnWidth) EndColumnResize();
  if (ended == Drag::RowHeight) EndRowResize();
}

// --- dragging of borders; that of one of several marked columns or rows sizes all of them ---

void GridView::StartResize(Drag drag, int index, int from, int size) {
  drag_ = drag;
  resized_ = index;
  resizeFrom_ = from;
  resizeSize_ = size;
}

void GridView::ResizeTo(const QPoint& position) {
  const bool wide = drag_ == Drag::ColumnWidth;
  const int size = std::max(0, resizeSize_ + (wide ? position.x() : position.y()) - resizeFrom_);
  (wide ? geometry_.columns : geometry_.rows).SetSize(resized_, resized_, size);
  UpdateLayout();
  viewport()->update();
}

void GridView::EndColumnResize() {
  const int size = geometry_.columns.Size(resized_);
  if (size == resizeSize_) return;
  const double width = PixelsToWidth(size);
  const GridStep step(workbook_, "Column width");
  if (!IsMarked({Area::ColumnBorder, 1, resized_})) {
    workbook_.SetColumnWidth(resized_, width);
    return;
  }
  for (const CellRange& range : MarkedRanges()) {
    if (!IsWholeColumns(range)) continue;
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
      workbook_.SetColumnWidth(column, width);
    }
  }
}

void GridView::EndRowResize() {
  const int size = geometry_.rows.Size(resized_);
  if (size == resizeSize_) return;
  const int height = size < 4 ? 0 : size;
  if (IsMarked({Area::RowBorder, resized_, 1})) {
    SetRowHeight(height);
  } else if (looks_) {
    looks_->SetRowHeight(resized_, resized_, height);
    LoadGeometry();  // also when nothing was set
  } else {
    geometry_.rows.SetSize(resized_, resized_, height);
    UpdateLayout();
  }
  UpdateScrollBars();
  viewport()->update();
}

// --- double clicks and menus ---

void GridView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const Hit hit = HitTest(event->position().toPoint());
  switch (hit.area) {
    case Area::ColumnBorder:
      FitColumn(hit.column);
      break;
    case Area::ColumnHeading:
      if (!selecting_) RenameColumn(hit.column);
      break;
    case Area::Cells:
      if (!(event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier))) BeginEdit();
      break;
    default:
      mousePressEvent(event);
  }
}

// One of the marked columns takes all of them along.
void GridView::FitColumn(int column) {
  if (IsMarked({Area::ColumnBorder, 1, column})) {
    AutoFitColumns();
  } else {
    workbook_.SetColWidthAuto({1, column, std::max(1, workbook_.LastRow()), column}, true);
  }
}

void GridView::contextMenuEvent(QContextMenuEvent* event) {
  // That of the mouse was asked for as the button went down.
  if (event->reason() == QContextMenuEvent::Mouse || selecting_) return;
  const QRect cell = CellRect(workbook_.ActiveRow(), workbook_.ActiveColumn());
  emit ContextMenuRequested(viewport()->mapToGlobal(cell.isEmpty() ? QPoint() : cell.bottomLeft()));
}

}  // namespace tellurix
