// The grid's mouse and keys, marks and edits.

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>

#include "desktop/GridView.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

// What this program itself put on the clipboard: texts are quoted there, so that "007" comes back as a text.
constexpr const char* OwnFormat = "application/x-tellurix-cells";

constexpr qint64 SummaryCells = 100'000;     // at a time
constexpr qint64 LookedAtCells = 1'000'000;  // copied at once with their looks
constexpr std::size_t MostLooks = 20'000;    // pasted at once

// What this program has copied, as it finds it again as long as the clipboard is its own.
class CopiedCells : public QMimeData {
 public:
  const Workbook* workbook = nullptr;
  std::vector<CellRange> block;
  bool wereCut = false;  // formulas move: their references stay
  QString values;        // with the formulas' results
  // In the block, counted from 1; empty: not known.
  std::vector<std::pair<CellRange, CellLook>> looks;
};

// The looks of a single range, as rectangles.
std::vector<std::pair<CellRange, CellLook>> LooksIn(const Workbook& workbook, const CellRange& range) {
  std::vector<std::pair<CellRange, CellLook>> looks;
  std::size_t before = 0;  // those of the column to the left start there
  for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
    const int across = column - range.firstColumn + 1;
    const std::size_t start = looks.size();
    for (int row = range.firstRow; row <= range.lastRow; ++row) {
      const int down = row - range.firstRow + 1;
      CellLook look = workbook.LookAt(row, column);
      if (looks.size() > start && looks.back().second == look) {
        looks.back().first.lastRow = down;
      } else {
        looks.push_back({{down, across, down, across}, std::move(look)});
      }
    }
    // A column like the one to its left makes that one wider.
    const std::size_t count = looks.size() - start;
    bool isAlike = across > 1 && start - before == count;
    for (std::size_t i = 0; isAlike && i < count; ++i) {
      const auto& left = looks[before + i];
      const auto& right = looks[start + i];
      isAlike = left.first.firstRow == right.first.firstRow && left.first.lastRow == right.first.lastRow &&
                left.second == right.second;
    }
    if (isAlike) {
      for (std::size_t i = before; i < start; ++i) looks[i].first.lastColumn = across;
      looks.resize(start);
    } else {
      before = start;
    }
  }
  return looks;
}

LookChange AllOf(const CellLook& look) {
  return {look.number,    look.fontName,   look.fontSize,   look.bold,     look.italic,
          look.underline, look.textColour, look.fillColour, look.alignment};
}

void PasteLooks(Workbook& workbook, const CopiedCells& copied, const CellRange& to) {
  const CellRange& from = copied.block.front();
  const int rows = from.lastRow - from.firstRow + 1;
  const int columns = from.lastColumn - from.firstColumn + 1;
  if (copied.looks.size() == 1) {
    workbook.SetLook(to, AllOf(copied.looks[0].second));
    return;
  }
  const auto repeats = static_cast<std::size_t>((to.lastRow - to.firstRow + 1) / rows) *
                       static_cast<std::size_t>((to.lastColumn - to.firstColumn + 1) / columns);
  if (copied.looks.size() * repeats > MostLooks) return;
  for (int row = to.firstRow - 1; row < to.lastRow; row += rows) {
    for (int column = to.firstColumn - 1; column < to.lastColumn; column += columns) {
      for (const auto& [part, look] : copied.looks) {
        workbook.SetLook({row + part.firstRow, column + part.firstColumn, row + part.lastRow, column + part.lastColumn},
                         AllOf(look));
      }
    }
  }
}

QString FromUtf8(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

CellRange Between(int row, int column, int otherRow, int otherColumn) {
  return {std::min(row, otherRow), std::min(column, otherColumn), std::max(row, otherRow),
          std::max(column, otherColumn)};
}

qint64 CellCount(const CellRange& range) {
  return static_cast<qint64>(range.lastRow - range.firstRow + 1) * (range.lastColumn - range.firstColumn + 1);
}

bool IsWholeColumns(const CellRange& range) { return range.firstRow == 1 && range.lastRow == GridStore::MaxRows; }
bool IsWholeRows(const CellRange& range) { return range.firstColumn == 1 && range.lastColumn == GridStore::MaxColumns; }

}  // namespace

// --- marks ---

std::vector<CellRange> GridView::MarkedRanges() const {
  std::vector<CellRange> ranges;
  for (int i = 0; i < workbook_.SelectionCount(); ++i) ranges.push_back(workbook_.GetSelection(i));
  return ranges;
}

CellRange GridView::LastRange() const { return workbook_.GetSelection(workbook_.SelectionCount() - 1); }

bool GridView::IsMarked(int row, int column) const {
  for (const CellRange& range : MarkedRanges()) {
    if (row >= range.firstRow && row <= range.lastRow && column >= range.firstColumn && column <= range.lastColumn) {
      return true;
    }
  }
  return false;
}

bool GridView::ColumnIsTouched(int column, bool& whole) const {
  bool touched = false;
  for (int i = 0; i < workbook_.SelectionCount(); ++i) {
    const CellRange range = workbook_.GetSelection(i);
    if (column < range.firstColumn || column > range.lastColumn) continue;
    touched = true;
    whole = whole || IsWholeColumns(range);
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

void GridView::timerEvent(QTimerEvent* event) {
  if (event->timerId() == summaryTimer_.timerId()) {
    if (!summaryDone_) Summarize(SummaryCells);
    if (summaryDone_) {
      summaryTimer_.stop();
      emit SummaryChanged(summary_);
    } else {
      summaryTimer_.start(0, this);
    }
  } else if (event->timerId() == scrollTimer_.timerId()) {
    // Dragged beyond an edge: the further, the faster.
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
  } else {
    QAbstractScrollArea::timerEvent(event);
  }
}

// --- mouse ---

void GridView::mousePressEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  const Hit hit = HitTest(position);
  if (event->button() == Qt::RightButton) {
    if (selecting_) {
      if (rightButtonConfirms_) emit ConfirmRequested();
      return;
    }
    if (!CommitEdit()) return;
    setFocus(Qt::MouseFocusReason);
    const bool inCells = hit.area == Area::Cells;
    bool marked = IsMarked(hit.row, hit.column);
    const bool onColumn = hit.area == Area::ColumnHeading || hit.area == Area::ColumnBorder;
    const bool onRow = hit.area == Area::RowHeading || hit.area == Area::RowBorder;
    if (onColumn || onRow) {
      marked = false;
      for (const CellRange& range : MarkedRanges()) {
        if (onColumn && IsWholeColumns(range)) {
          marked = marked || (hit.column >= range.firstColumn && hit.column <= range.lastColumn);
        } else if (onRow && IsWholeRows(range)) {
          marked = marked || (hit.row >= range.firstRow && hit.row <= range.lastRow);
        }
      }
    }
    if (!marked) {
      if (onColumn) {
        workbook_.SetSelection({1, hit.column, GridStore::MaxRows, hit.column});
      } else if (onRow) {
        workbook_.SetSelection({hit.row, 1, hit.row, GridStore::MaxColumns});
      } else if (inCells) {
        workbook_.SetSelection({hit.row, hit.column, hit.row, hit.column});
      } else {
        workbook_.SetSelection({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
      }
      MarksChanged();
    }
    emit ContextMenuRequested(event->globalPosition().toPoint());
    return;
  }
  if (event->button() != Qt::LeftButton) return;
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
      drag_ = Drag::ColumnWidth;
      resized_ = hit.column;
      resizeFrom_ = position.x();
      resizeSize_ = geometry_.columns.Size(hit.column);
      break;
    case Area::RowBorder:
      drag_ = Drag::RowHeight;
      resized_ = hit.row;
      resizeFrom_ = position.y();
      resizeSize_ = geometry_.rows.Size(hit.row);
      break;
    case Area::ColumnHeading:
      StartDrag(Drag::Columns, hit, event->modifiers());
      break;
    case Area::RowHeading:
      StartDrag(Drag::Rows, hit, event->modifiers());
      break;
    case Area::Cells:
      StartDrag(Drag::Cells, hit, event->modifiers());
      break;
  }
}

void GridView::StartDrag(Drag drag, const Hit& hit, Qt::KeyboardModifiers modifiers) {
  drag_ = drag;
  const int row = drag == Drag::Columns ? 1 : hit.row;
  const int column = drag == Drag::Rows ? 1 : hit.column;
  if (modifiers & Qt::ShiftModifier) {
    DragTo(dragPosition_);
    return;
  }
  CellRange range{row, column, row, column};
  if (drag == Drag::Columns) range.lastRow = GridStore::MaxRows;
  if (drag == Drag::Rows) range.lastColumn = GridStore::MaxColumns;
  if (modifiers & Qt::ControlModifier) {
    workbook_.AddSelection(range);
    workbook_.SetActiveCell(row, column);
  } else {
    workbook_.SetSelection(range);
  }
  MarksChanged();
}

void GridView::DragTo(const QPoint& position) {
  dragPosition_ = position;
  if (drag_ == Drag::ColumnWidth || drag_ == Drag::RowHeight) {
    const bool wide = drag_ == Drag::ColumnWidth;
    const int size = std::max(0, resizeSize_ + (wide ? position.x() : position.y()) - resizeFrom_);
    (wide ? geometry_.columns : geometry_.rows).SetSize(resized_, resized_, size);
    UpdateLayout();
    viewport()->update();
    return;
  }
  const QRect cells = CellsRect();
  const QPoint inside(std::clamp(position.x(), cells.left(), cells.right()),
                      std::clamp(position.y(), cells.top(), cells.bottom()));
  const Hit hit = HitTest(inside);
  switch (drag_) {
    case Drag::Cells:
      ReplaceLastRange(SpanTo(hit.row, hit.column));
      break;
    case Drag::Columns: {
      CellRange range = SpanTo(1, hit.column);
      range.firstRow = 1;
      range.lastRow = GridStore::MaxRows;
      ReplaceLastRange(range);
      break;
    }
    case Drag::Rows: {
      CellRange range = SpanTo(hit.row, 1);
      range.firstColumn = 1;
      range.lastColumn = GridStore::MaxColumns;
      ReplaceLastRange(range);
      break;
    }
    default:
      break;
  }
  const bool beyondRows = drag_ != Drag::Columns && position.y() != inside.y();
  const bool beyondColumns = drag_ != Drag::Rows && position.x() != inside.x();
  if (beyondRows || beyondColumns) {
    if (!scrollTimer_.isActive()) scrollTimer_.start(40, this);
  } else {
    scrollTimer_.stop();
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
  // A border of one of several marked columns sizes all of them.
  if (ended == Drag::ColumnWidth) {
    const int size = geometry_.columns.Size(resized_);
    if (size == resizeSize_) return;
    const double width = PixelsToWidth(size);
    const GridStep step(workbook_, "Column width");
    bool several = false;
    for (const CellRange& range : MarkedRanges()) {
      if (IsWholeColumns(range) && resized_ >= range.firstColumn && resized_ <= range.lastColumn) several = true;
    }
    if (several) {
      for (const CellRange& range : MarkedRanges()) {
        if (!IsWholeColumns(range)) continue;
        for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
          workbook_.SetColumnWidth(column, width);
        }
      }
    } else {
      workbook_.SetColumnWidth(resized_, width);
    }
  } else if (ended == Drag::RowHeight) {
    const int size = geometry_.rows.Size(resized_);
    if (size == resizeSize_) return;
    const int height = size < 4 ? 0 : size;
    bool several = false;
    for (const CellRange& range : MarkedRanges()) {
      if (IsWholeRows(range) && resized_ >= range.firstRow && resized_ <= range.lastRow) several = true;
    }
    if (several) {
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
}

void GridView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const Hit hit = HitTest(event->position().toPoint());
  switch (hit.area) {
    case Area::ColumnBorder: {
      const CellRange fitted{1, hit.column, std::max(1, workbook_.LastRow()), hit.column};
      bool whole = false;
      ColumnIsTouched(hit.column, whole);
      if (whole) {
        AutoFitColumns();
      } else {
        workbook_.SetColWidthAuto(fitted, true);
      }
      break;
    }
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

void GridView::contextMenuEvent(QContextMenuEvent* event) {
  // That of the mouse was asked for as the button went down.
  if (event->reason() == QContextMenuEvent::Mouse || selecting_) return;
  const QRect cell = CellRect(workbook_.ActiveRow(), workbook_.ActiveColumn());
  emit ContextMenuRequested(viewport()->mapToGlobal(cell.isEmpty() ? QPoint() : cell.bottomLeft()));
}

void GridView::SetSelecting(bool on) {
  if (on) CommitEdit();
  selecting_ = on;
  viewport()->update();
}

// --- keys ---

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
  std::size_t at = ranges.size() - 1;
  for (std::size_t i = ranges.size(); i-- > 0;) {
    const CellRange& range = ranges[i];
    if (row >= range.firstRow && row <= range.lastRow && column >= range.firstColumn && column <= range.lastColumn) {
      at = i;
      break;
    }
  }
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

void GridView::keyPressEvent(QKeyEvent* event) {
  if (editing_) {
    // The edit's cell was scrolled away, or the grid was given the focus amid an edit.
    ScrollTo(editRow_, editColumn_);
    editor_->setFocus(Qt::OtherFocusReason);
    // Not by sendEvent: what the edit has no use for, like Shift alone, would come back here without end.
    if (editor_->isVisible() && !EditorKey(editor_, event)) editor_->event(event);
    return;
  }
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  const bool control = event->modifiers() & Qt::ControlModifier;
  const bool alt = event->modifiers() & Qt::AltModifier;
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  if (shift) MovingEnd(row, column);
  const auto step = [&](const GridAxis& axis, int from, int by) {
    const int next = axis.Next(from, by);
    return next ? next : from;
  };
  const auto downBy = [&](int by) {
    MoveTo(control ? BlockEdge(row, column, by, true) : step(geometry_.rows, row, by), column, shift);
  };
  const auto rightBy = [&](int by) {
    MoveTo(row, control ? BlockEdge(column, row, by, false) : step(geometry_.columns, column, by), shift);
  };
  const auto page = [&](int by) {
    const int rows = PageRows();
    const qint64 start = geometry_.rows.Start(row) + static_cast<qint64>(by) * rows * geometry_.rows.DefaultSize();
    const int to = geometry_.rows.At(std::max<qint64>(0, start));
    ScrollBy(by * rows, 0);
    MoveTo(to, column, shift);
  };
  event->accept();
  switch (event->key()) {
    case Qt::Key_Up:
      return downBy(-1);
    case Qt::Key_Down:
      return downBy(1);
    case Qt::Key_Left:
      return rightBy(-1);
    case Qt::Key_Right:
      return rightBy(1);
    case Qt::Key_PageUp:
      return page(-1);
    case Qt::Key_PageDown:
      return page(1);
    case Qt::Key_Home:
      if (control) return MoveTo(geometry_.frozenRows + 1, geometry_.frozenColumns + 1, shift);
      return MoveTo(row, geometry_.frozenColumns + 1, shift);
    case Qt::Key_End: {
      const int lastColumn = std::max(1, workbook_.LastCol());
      if (control) return MoveTo(std::max(1, workbook_.LastRow()), lastColumn, shift);
      int last = lastColumn;
      while (last > 1 && workbook_.ReadRC(row, last).type == EmptyCell) --last;
      return MoveTo(row, last, shift);
    }
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      if (control) break;
      return MoveOn(false, shift || event->key() == Qt::Key_Backtab);
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (selecting_) {
        emit ConfirmRequested();
        return;
      }
      return MoveOn(true, shift);
    case Qt::Key_Escape:
      if (!selecting_) break;
      emit CancelRequested();
      return;
    case Qt::Key_F2:
      BeginEdit();
      return;
    case Qt::Key_Delete:
      if (!selecting_) Clear();
      return;
    case Qt::Key_Backspace: {
      const QString nothing;
      StartEdit(&nothing, false, false);
      return;
    }
    case Qt::Key_A:
      if (control && !alt) return SelectAll();
      break;
    case Qt::Key_Space:
      if (control || shift) {
        CellRange range = LastRange();
        if (control) {
          range.firstRow = 1;
          range.lastRow = GridStore::MaxRows;
        }
        if (shift) {
          range.firstColumn = 1;
          range.lastColumn = GridStore::MaxColumns;
        }
        // The active cell stays a corner, so that the range can be extended from it.
        workbook_.SetActiveCell(control ? 1 : workbook_.ActiveRow(), shift ? 1 : workbook_.ActiveColumn());
        return ReplaceLastRange(range);
      }
      break;
    default:
      break;
  }
  const QString text = event->text();
  // Both modifiers together stand for AltGr; one alone is a shortcut or an access key.
  const bool types = !text.isEmpty() && text.at(0).isPrint() && control == alt;
  if (types && StartEdit(&text, false, false)) return;
  event->ignore();
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

// --- editing ---

void GridView::SetFormulaLine(QLineEdit* line) {
  line_ = line;
  line->setMaxLength(editor_->maxLength());
  line->installEventFilter(this);
  connect(line, &QLineEdit::textEdited, this, [this](const QString& text) {
    // Copied: a refusal puts the line's own text back.
    const QString typed = text;
    if (!editing_) StartEdit(&typed, true, true);
    if (editing_ && editor_->text() != typed) editor_->setText(typed);
  });
  ShowActiveCell();
}

void GridView::ShowActiveCell() {
  if (!line_ || editing_) return;
  const QString text = FromUtf8(EditableText(workbook_, workbook_.ActiveRow(), workbook_.ActiveColumn(), regional_));
  if (line_->text() != text) line_->setText(text);
  line_->setCursorPosition(0);
}

bool GridView::BeginEdit() { return StartEdit(nullptr, true, false); }

// Without a text the edit starts with the cell's own.
bool GridView::StartEdit(const QString* text, bool caretMoves, bool inLine) {
  if (selecting_) return false;
  FinishHeading(true);
  if (editing_) {
    caretMoves_ = caretMoves_ || caretMoves;
    return true;
  }
  // Into the line beside the grid one may step to read what it shows.
  if (inLine && !text && workbook_.SheetLocked()) return false;
  if (!CanChange()) {
    ShowActiveCell();
    return false;
  }
  editRow_ = workbook_.ActiveRow();
  editColumn_ = workbook_.ActiveColumn();
  editOriginal_ = FromUtf8(EditableText(workbook_, editRow_, editColumn_, regional_));
  // Only another sheet's cell can be out of step here.
  if (workbook_.Sheet() != sheet_) Refresh();
  ScrollTo(editRow_, editColumn_);
  const QString start = text ? *text : editOriginal_;
  editing_ = true;
  caretMoves_ = caretMoves;
  editor_->setFont(font());
  editor_->setText(start);
  if (line_ && line_->text() != start) line_->setText(start);
  PlaceEditor();
  if (!inLine) {
    editor_->setFocus(Qt::OtherFocusReason);
    editor_->end(false);
  }
  viewport()->update();
  emit EditingChanged(true);
  return true;
}

// Over its cell, and as wide as the text needs as far as the window goes.
void GridView::PlaceEditor() {
  const QRect cell = CellRect(editRow_, editColumn_);
  if (!editing_ || cell.isEmpty()) {
    const bool hadFocus = editor_->hasFocus();
    editor_->hide();
    if (hadFocus) setFocus(Qt::OtherFocusReason);
    return;
  }
  QRect place = cell.adjusted(1, 1, -2, -2);
  const int needed = editor_->fontMetrics().horizontalAdvance(editor_->text()) + 16;
  place.setWidth(std::max(place.width(), std::min(needed, viewport()->width() - place.left())));
  if (editor_->geometry() != place) viewport()->update();
  editor_->setGeometry(place);
  editor_->show();
}

void GridView::EndEdit() {
  editing_ = false;
  const bool hadFocus = editor_->hasFocus() || (line_ && line_->hasFocus());
  editor_->hide();
  if (hadFocus) setFocus(Qt::OtherFocusReason);
  ShowActiveCell();
  viewport()->update();
  emit EditingChanged(false);
}

bool GridView::CommitEdit() {
  FinishHeading(true);
  if (!editing_) return true;
  const QString text = editor_->text();
  if (text != editOriginal_) {
    const int shown = workbook_.Sheet();
    workbook_.Sheet(sheet_);
    std::string reason;
    bool taken = false;
    {
      const GridStep step(workbook_, text.isEmpty() ? "Clear" : "Enter");
      taken = CommitText(workbook_, editRow_, editColumn_, text.toStdString(), regional_, reason);
    }
    workbook_.Sheet(shown);
    if (!taken) return Refuse(FromUtf8(reason));
  }
  EndEdit();
  return true;
}

void GridView::CancelEdit() {
  FinishHeading(false);
  if (editing_) EndEdit();
}

// Keys of both lines that end the edit or move on.
bool GridView::EditorKey(QLineEdit* line, QKeyEvent* event) {
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  switch (event->key()) {
    case Qt::Key_Escape:
      if (!editing_) {
        setFocus();
      } else {
        CancelEdit();
      }
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
      const bool down = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
      if (!CommitEdit()) return true;
      setFocus();
      MoveOn(down, shift || event->key() == Qt::Key_Backtab);
      return true;
    }
    case Qt::Key_F2:
      caretMoves_ = !caretMoves_;
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
      if (caretMoves_ || line != editor_) return false;
      break;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      if (caretMoves_) return true;  // nothing to go to in one line
      break;
    default:
      return false;
  }
  if (CommitEdit()) {
    setFocus();
    keyPressEvent(event);
  }
  return true;
}

bool GridView::eventFilter(QObject* watched, QEvent* event) {
  if (watched == headingEditor_) {
    if (event->type() == QEvent::KeyPress) {
      const int key = static_cast<QKeyEvent*>(event)->key();
      const bool takes = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab;
      if (takes || key == Qt::Key_Escape) {
        FinishHeading(takes);
        setFocus();
        return true;
      }
    } else if (event->type() == QEvent::FocusOut) {
      if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) FinishHeading(true);
    }
  } else if (watched == editor_ || watched == line_) {
    auto* line = static_cast<QLineEdit*>(watched);
    if (event->type() == QEvent::KeyPress) return EditorKey(line, static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::FocusIn && line == line_) {
      const auto reason = static_cast<QFocusEvent*>(event)->reason();
      if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) StartEdit(nullptr, true, true);
    }
  }
  return QAbstractScrollArea::eventFilter(watched, event);
}

void GridView::RenameColumn(int column) {
  if (selecting_ || !CommitEdit() || !CanChange()) return;
  if (ColumnHeadingRect(column).isEmpty()) ScrollTo(0, column);
  renamed_ = column;
  headingEditor_->setFont(font());
  headingEditor_->setText(FromUtf8(workbook_.ColText(column)));
  headingEditor_->setPlaceholderText(FromUtf8(ColumnLetters(column)));
  QRect place = ColumnHeadingRect(column).adjusted(0, 1, -1, -1);
  const int needed = std::max(60, headingEditor_->fontMetrics().horizontalAdvance(headingEditor_->text()) + 24);
  place.setWidth(std::max(place.width(), std::min(needed, viewport()->width() - place.left())));
  headingEditor_->setGeometry(place);
  headingEditor_->show();
  headingEditor_->setFocus(Qt::OtherFocusReason);
  headingEditor_->selectAll();
}

void GridView::FinishHeading(bool take) {
  const int column = std::exchange(renamed_, 0);
  if (column == 0) return;
  const QString text = headingEditor_->text().trimmed();
  const bool hadFocus = headingEditor_->hasFocus();
  headingEditor_->hide();
  if (hadFocus) setFocus();
  if (take && text != FromUtf8(workbook_.ColText(column))) {
    const GridStep step(workbook_, "Heading");
    workbook_.ColText(column, text.toStdString());
  }
}

bool GridView::Refuse(const QString& reason) {
  emit Refused(reason);
  return false;
}

bool GridView::CanChange() { return !workbook_.SheetLocked() || Refuse(FromUtf8(LockedText(workbook_))); }

bool GridView::ReadyToChange() { return !selecting_ && CommitEdit() && CanChange(); }

// --- clipboard ---

bool GridView::Copy() {
  if (!CommitEdit()) return false;
  const std::vector<CellRange> block = BlockOf(workbook_);
  if (block.empty()) return Refuse(tr("Ranges that are copied together must have the same rows or the same columns."));
  qint64 cells = 0;
  for (const CellRange& range : block) cells += CellCount(range);
  if (cells > MaxCopiedCells) return Refuse(tr("The marked range is too large to copy."));
  auto* copied = new CopiedCells;
  copied->setText(FromUtf8(BlockText(workbook_, block, regional_, false)));
  copied->workbook = &workbook_;
  copied->block = block;
  if (cells <= MaxOwnCells) {
    copied->setData(OwnFormat, QByteArray::fromStdString(BlockText(workbook_, block, regional_, true, true)));
    copied->values = FromUtf8(BlockText(workbook_, block, regional_, true));
  }
  if (cells <= LookedAtCells && block.size() == 1) copied->looks = LooksIn(workbook_, block[0]);
  if (cells <= MaxHtmlCells) copied->setHtml(FromUtf8(BlockHtml(workbook_, block, regional_)));
  QApplication::clipboard()->setMimeData(copied);
  return true;
}

bool GridView::Cut() {
  if (!ReadyToChange() || !Copy()) return false;
  if (const auto* held = dynamic_cast<const CopiedCells*>(QApplication::clipboard()->mimeData())) {
    const_cast<CopiedCells*>(held)->wereCut = true;
  }
  const GridStep step(workbook_, "Cut");
  for (const CellRange& range : MarkedRanges()) workbook_.ClearRange(range);
  return true;
}

bool GridView::Paste() {
  const QMimeData* held = QApplication::clipboard()->mimeData();
  if (!held) return false;
  if (!held->hasFormat(OwnFormat)) return held->hasText() && PasteText(held->text());
  const QString text = QString::fromUtf8(held->data(OwnFormat));
  const auto* own = dynamic_cast<const CopiedCells*>(held);
  if (!own || own->workbook != &workbook_) return PasteText(text, true);
  const BlockSource source(own->block);
  const GridStep step(workbook_, "Paste");
  std::vector<CellRange> pasted;
  if (!PasteFrom(text, {.quotedAreTexts = true, .source = own->wereCut ? nullptr : &source}, &pasted)) return false;
  if (!own->looks.empty()) {
    for (const CellRange& range : pasted) PasteLooks(workbook_, *own, range);
  }
  return true;
}

bool GridView::PasteSpecial(bool valuesOnly, bool transposed) {
  const QMimeData* held = QApplication::clipboard()->mimeData();
  if (!held || !(held->hasFormat(OwnFormat) || held->hasText())) {
    return Refuse(tr("There are no cells and no text on the clipboard."));
  }
  const auto* own = dynamic_cast<const CopiedCells*>(held);
  const bool isOurs = held->hasFormat(OwnFormat);
  QString text = isOurs ? QString::fromUtf8(held->data(OwnFormat)) : held->text();
  if (valuesOnly && own && !own->values.isEmpty()) text = own->values;
  const BlockSource source(own ? own->block : std::vector<CellRange>{{1, 1, 1, 1}});
  const bool moves = own && own->workbook == &workbook_ && !own->wereCut;
  return PasteFrom(text, {.quotedAreTexts = isOurs,
                          .formulas = !valuesOnly,
                          .transposed = transposed,
                          .source = moves ? &source : nullptr});
}

bool GridView::PasteText(const QString& text, bool quotedAreTexts) {
  return PasteFrom(text, {.quotedAreTexts = quotedAreTexts});
}

bool GridView::PasteFrom(const QString& text, const PasteRules& rules, std::vector<CellRange>* pasted) {
  if (!ReadyToChange()) return false;
  const TextBlock block(text.contains(QChar(0)) ? QString(text).remove(QChar(0)).toStdString() : text.toStdString());
  if (block.Rows() == 0) return false;
  const qint64 rows = rules.transposed ? block.Columns() : block.Rows();
  const qint64 columns = rules.transposed ? block.Rows() : block.Columns();
  if (block.LongestField() > 32767) return Refuse(tr("A cell holds at most 32767 characters."));
  const bool isOne = rows == 1 && columns == 1;
  std::vector<CellRange> targets;
  for (const CellRange& range : MarkedRanges()) {
    // Filled all over by one value or by whole repeats of the block, else the block from the first cell on.
    const qint64 height = range.lastRow - range.firstRow + 1;
    const qint64 width = range.lastColumn - range.firstColumn + 1;
    const bool whole = IsWholeColumns(range) || IsWholeRows(range);
    if (isOne || (!whole && height % rows == 0 && width % columns == 0)) {
      targets.push_back(range);
    } else {
      if (range.firstRow + rows - 1 > GridStore::MaxRows || range.firstColumn + columns - 1 > GridStore::MaxColumns) {
        return Refuse(
            tr("The clipboard holds %1 rows and %2 columns, which do not fit the sheet from %3 on.")
                .arg(rows)
                .arg(columns)
                .arg(FromUtf8(RangeText({range.firstRow, range.firstColumn, range.firstRow, range.firstColumn}))));
      }
      targets.push_back({range.firstRow, range.firstColumn, static_cast<int>(range.firstRow + rows - 1),
                         static_cast<int>(range.firstColumn + columns - 1)});
    }
  }
  qint64 cells = 0;
  for (const CellRange& range : targets) cells += CellCount(range);
  if (cells > MaxBlockCells) return Refuse(tr("The marked range is too large to be filled."));
  {
    const GridStep step(workbook_, "Paste");
    for (const CellRange& range : targets) PasteBlock(workbook_, block, range, regional_, rules);
  }
  if (pasted) *pasted = targets;
  if (targets.size() == 1 && targets[0] != LastRange()) Select(targets[0]);
  return true;
}

// --- other changes ---

bool GridView::FillDown() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Fill down");
  for (CellRange range : MarkedRanges()) {
    if (range.firstRow == range.lastRow && range.firstRow > 1) --range.firstRow;  // from the row above
    if (CellCount(range) > MaxBlockCells && !IsWholeRows(range)) {
      return Refuse(tr("The marked range is too large to be filled."));
    }
    workbook_.FillDown(range);
  }
  return true;
}

bool GridView::FillRight() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Fill right");
  for (CellRange range : MarkedRanges()) {
    if (range.firstColumn == range.lastColumn && range.firstColumn > 1) --range.firstColumn;
    if (CellCount(range) > MaxBlockCells && !IsWholeColumns(range)) {
      return Refuse(tr("The marked range is too large to be filled."));
    }
    workbook_.FillRight(range);
  }
  return true;
}

bool GridView::Clear() {
  if (!ReadyToChange()) return false;
  const GridStep step(workbook_, "Clear");
  for (const CellRange& range : MarkedRanges()) workbook_.ClearRange(range);
  return true;
}

bool GridView::InsertRows() {
  if (!ReadyToChange()) return false;
  const CellRange range = LastRange();
  return workbook_.InsertRows(range.firstRow, range.lastRow - range.firstRow + 1) ||
         Refuse(tr("Rows with contents would be pushed off the sheet."));
}

bool GridView::InsertColumns() {
  if (!ReadyToChange()) return false;
  const CellRange range = LastRange();
  return workbook_.InsertColumns(range.firstColumn, range.lastColumn - range.firstColumn + 1) ||
         Refuse(tr("Columns with contents would be pushed off the sheet."));
}

// Several ranges go from the last one up; what overlaps is taken out once.
bool GridView::DeleteRows() {
  if (!ReadyToChange()) return false;
  std::vector<CellRange> ranges = MarkedRanges();
  std::sort(ranges.begin(), ranges.end(),
            [](const CellRange& a, const CellRange& b) { return a.firstRow > b.firstRow; });
  const GridStep step(workbook_, "Delete rows");
  int before = GridStore::MaxRows + 1;
  for (const CellRange& range : ranges) {
    const int last = std::min(range.lastRow, before - 1);
    if (last < range.firstRow) continue;
    workbook_.DeleteRows(range.firstRow, last - range.firstRow + 1);
    before = range.firstRow;
  }
  return true;
}

bool GridView::DeleteColumns() {
  if (!ReadyToChange()) return false;
  std::vector<CellRange> ranges = MarkedRanges();
  std::sort(ranges.begin(), ranges.end(),
            [](const CellRange& a, const CellRange& b) { return a.firstColumn > b.firstColumn; });
  const GridStep step(workbook_, "Delete columns");
  int before = GridStore::MaxColumns + 1;
  for (const CellRange& range : ranges) {
    const int last = std::min(range.lastColumn, before - 1);
    if (last < range.firstColumn) continue;
    workbook_.DeleteColumns(range.firstColumn, last - range.firstColumn + 1);
    before = range.firstColumn;
  }
  return true;
}

bool GridView::InsertCells(tellurix::Shift shift) {
  if (!ReadyToChange()) return false;
  if (workbook_.SelectionCount() != 1) return Refuse(tr("Mark a single range to insert cells."));
  return workbook_.InsertCells(LastRange(), shift) || Refuse(tr("Cells with contents would be pushed off the sheet."));
}

bool GridView::DeleteCells(tellurix::Shift shift) {
  if (!ReadyToChange()) return false;
  if (workbook_.SelectionCount() != 1) return Refuse(tr("Mark a single range to delete cells."));
  return workbook_.DeleteCells(LastRange(), shift);
}

bool GridView::Undo() {
  if (selecting_) return false;
  CancelEdit();
  const bool done = workbook_.Undo();
  if (done) Refresh();
  return done;
}

bool GridView::Redo() {
  if (selecting_) return false;
  CancelEdit();
  const bool done = workbook_.Redo();
  if (done) Refresh();
  return done;
}

// --- find and replace ---

bool GridView::Find(const QString& text, const FindOptions& options) {
  if (!CommitEdit()) return false;
  int row = workbook_.ActiveRow();
  int column = workbook_.ActiveColumn();
  if (!FindNext(workbook_, text.toStdString(), options, regional_, row, column)) return false;
  Select({row, column, row, column});
  return true;
}

bool GridView::Replace(const QString& text, const QString& by, const FindOptions& options) {
  if (!ReadyToChange()) return false;
  const bool replaced = ReplaceOne(workbook_, workbook_.ActiveRow(), workbook_.ActiveColumn(), text.toStdString(),
                                   by.toStdString(), options, regional_);
  Find(text, options);
  return replaced;
}

int GridView::ReplaceEverywhere(const QString& text, const QString& by, const FindOptions& options) {
  if (!ReadyToChange()) return 0;
  return ReplaceAll(workbook_, text.toStdString(), by.toStdString(), options, regional_);
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
