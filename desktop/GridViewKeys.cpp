// The grid's keys: from cell to cell, and what else a key does where nothing is edited.

#include <QApplication>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <algorithm>

#include "desktop/GridRanges.h"
#include "desktop/GridView.h"

namespace tellurix {

namespace {

// The last of the ranges that holds the cell; the last one when none does.
std::size_t LastWith(const std::vector<CellRange>& ranges, int row, int column) {
  for (std::size_t i = ranges.size(); i-- > 0;) {
    if (HasCell(ranges[i], row, column)) return i;
  }
  return ranges.size() - 1;
}

}  // namespace

void GridView::keyPressEvent(QKeyEvent* event) {
  if (editing_) {
    BringBackToEdit(event);
    return;
  }
  event->accept();
  if (!MoveByKey(*event) && !ActByKey(*event) && !TypeIntoCell(*event)) event->ignore();
}

// The edit's cell was scrolled away, or the grid was given the focus amid an edit.
void GridView::BringBackToEdit(QKeyEvent* event) {
  ScrollTo(editRow_, editColumn_);
  editor_->setFocus(Qt::OtherFocusReason);
  // Not by sendEvent: what the edit has no use for, like Shift alone, would come back here without end.
  if (editor_->isVisible() && !EditorKey(editor_, event)) editor_->event(event);
}

// Whether the key is one that goes to another cell.
bool GridView::MoveByKey(const QKeyEvent& event) {
  const bool shift = event.modifiers() & Qt::ShiftModifier;
  const bool control = event.modifiers() & Qt::ControlModifier;
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  if (shift) MovingEnd(row, column);
  const auto step = [](const GridAxis& axis, int from, int by) {
    const int next = axis.Next(from, by);
    return next ? next : from;
  };
  const auto downBy = [&](int by) {
    MoveTo(control ? BlockEdge(row, column, by, true) : step(geometry_.rows, row, by), column, shift);
  };
  const auto rightBy = [&](int by) {
    MoveTo(row, control ? BlockEdge(column, row, by, false) : step(geometry_.columns, column, by), shift);
  };
  switch (event.key()) {
    case Qt::Key_Up:
      downBy(-1);
      return true;
    case Qt::Key_Down:
      downBy(1);
      return true;
    case Qt::Key_Left:
      rightBy(-1);
      return true;
    case Qt::Key_Right:
      rightBy(1);
      return true;
    case Qt::Key_PageUp:
      MoveByPage(row, column, -1, shift);
      return true;
    case Qt::Key_PageDown:
      MoveByPage(row, column, 1, shift);
      return true;
    case Qt::Key_Home:
      MoveTo(control ? geometry_.frozenRows + 1 : row, geometry_.frozenColumns + 1, shift);
      return true;
    case Qt::Key_End:
      if (control) {
        MoveTo(std::max(1, workbook_.LastRow()), std::max(1, workbook_.LastCol()), shift);
      } else {
        MoveTo(row, LastFilled(row), shift);
      }
      return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      if (control) return false;
      MoveOn(false, shift || event.key() == Qt::Key_Backtab);
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (selecting_) {
        emit ConfirmRequested();
      } else {
        MoveOn(true, shift);
      }
      return true;
    default:
      return false;
  }
}

// Whether the key is one that does something where the active cell is.
bool GridView::ActByKey(const QKeyEvent& event) {
  const bool shift = event.modifiers() & Qt::ShiftModifier;
  const bool control = event.modifiers() & Qt::ControlModifier;
  const bool alt = event.modifiers() & Qt::AltModifier;
  switch (event.key()) {
    case Qt::Key_Escape:
      if (!selecting_) return false;
      emit CancelRequested();
      return true;
    case Qt::Key_F2:
      BeginEdit();
      return true;
    case Qt::Key_Delete:
      if (!selecting_) Clear();
      return true;
    case Qt::Key_Backspace: {
      const QString nothing;
      StartEdit(&nothing, false, false);
      return true;
    }
    case Qt::Key_A:
      if (!control || alt) return false;
      SelectAll();
      return true;
    case Qt::Key_Space:
      if (!control && !shift) return false;
      WidenMarks(control, shift);
      return true;
    default:
      return false;
  }
}

// Whether the key writes something that can be typed into the active cell.
bool GridView::TypeIntoCell(const QKeyEvent& event) {
  const bool control = event.modifiers() & Qt::ControlModifier;
  const bool alt = event.modifiers() & Qt::AltModifier;
  const QString text = event.text();
  // Both modifiers together stand for AltGr; one alone is a shortcut or an access key.
  const bool types = !text.isEmpty() && text.at(0).isPrint() && control == alt;
  return types && StartEdit(&text, false, false);
}

void GridView::inputMethodEvent(QInputMethodEvent* event) {
  const QString nothing;
  if ((!event->commitString().isEmpty() || !event->preeditString().isEmpty()) && StartEdit(&nothing, false, false)) {
    QApplication::sendEvent(editor_, event);
  }
}

void GridView::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  if (editing_ && editor_->isVisible()) editor_->setFocus(Qt::OtherFocusReason);
  viewport()->update();
}

void GridView::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  viewport()->update();
}

// --- from cell to cell ---

void GridView::MoveTo(int row, int column, bool extend) {
  row = std::clamp(row, 1, GridStore::MaxRows);
  column = std::clamp(column, 1, GridStore::MaxColumns);
  if (!extend) {
    Select({row, column, row, column});
    return;
  }
  int oldRow = 0;
  int oldColumn = 0;
  MovingEnd(oldRow, oldColumn);
  ReplaceLastRange(SpanTo(row, column));
  // Along whole columns the view stays at its rows.
  ScrollTo(row == oldRow ? 0 : row, column == oldColumn ? 0 : column);
}

// The next cell among those marked, range after range.
void GridView::MoveWithin(bool down, bool backwards) {
  const std::vector<CellRange> ranges = MarkedRanges();
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  std::size_t at = LastWith(ranges, row, column);
  const int by = backwards ? -1 : 1;
  CellRange range = ranges[at];
  int& inner = down ? row : column;
  int& outer = down ? column : row;
  const auto innerFirst = [&] { return down ? range.firstRow : range.firstColumn; };
  const auto innerLast = [&] { return down ? range.lastRow : range.lastColumn; };
  const auto outerFirst = [&] { return down ? range.firstColumn : range.firstRow; };
  const auto outerLast = [&] { return down ? range.lastColumn : range.lastRow; };
  inner += by;
  if (inner < innerFirst() || inner > innerLast()) {
    outer += by;
    if (outer < outerFirst() || outer > outerLast()) {
      at = (at + ranges.size() + (backwards ? ranges.size() - 1 : 1)) % ranges.size();
      range = ranges[at];
      outer = backwards ? outerLast() : outerFirst();
    }
    inner = backwards ? innerLast() : innerFirst();
  }
  workbook_.SetActiveCell(row, column);
  ScrollTo(row, column);
  MarksChanged();
}

// What Enter (down) and Tab do.
void GridView::MoveOn(bool down, bool backwards) {
  if (workbook_.SelectionCount() > 1 || !workbook_.GetSelection(0).IsOneCell()) {
    MoveWithin(down, backwards);
    return;
  }
  const int by = backwards ? -1 : 1;
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  int began = tabColumn_;
  if (down) {
    if (const int next = geometry_.rows.Next(row, by)) row = next;
    if (began && !backwards) column = began;
    began = 0;
  } else {
    if (!began) began = column;
    if (const int next = geometry_.columns.Next(column, by)) column = next;
  }
  MoveTo(row, column, false);
  tabColumn_ = began;
}

void GridView::MoveByPage(int row, int column, int by, bool extend) {
  const int rows = PageRows();
  const qint64 start = geometry_.rows.Start(row) + static_cast<qint64>(by) * rows * geometry_.rows.DefaultSize();
  const int to = geometry_.rows.At(std::max<qint64>(0, start));
  ScrollBy(by * rows, 0);
  MoveTo(to, column, extend);
}

// The edge of the block of filled cells in a direction: its last cell, or the first cell of the next block, or the end
// of the sheet.
int GridView::BlockEdge(int from, int line, int by, bool rows) const {
  const int count = rows ? GridStore::MaxRows : GridStore::MaxColumns;
  const int used = rows ? workbook_.LastRow() : workbook_.LastCol();
  const auto filled = [&](int index) {
    return (rows ? workbook_.ReadRC(index, line) : workbook_.ReadRC(line, index)).type != EmptyCell;
  };
  const int end = by > 0 ? count : 1;
  if (from == end) return from;
  int at = from + by;
  if (filled(from) && filled(at)) {
    while (at != end && filled(at + by)) at += by;
    return at;
  }
  if (by < 0) at = std::min(at, std::max(used, 1));
  while (at != end && !filled(at)) {
    if (by > 0 && at >= used) return end;
    at += by;
  }
  return at;
}

// The column of the last filled cell of a row, 1 without any.
int GridView::LastFilled(int row) const {
  int last = std::max(1, workbook_.LastCol());
  while (last > 1 && workbook_.ReadRC(row, last).type == EmptyCell) --last;
  return last;
}

void GridView::WidenMarks(bool toColumns, bool toRows) {
  CellRange range = LastRange();
  if (toColumns) WidenToColumns(range);
  if (toRows) WidenToRows(range);
  // The active cell stays a corner, so that the range can be extended from it.
  workbook_.SetActiveCell(toColumns ? 1 : workbook_.ActiveRow(), toRows ? 1 : workbook_.ActiveColumn());
  ReplaceLastRange(range);
}

}  // namespace tellurix
