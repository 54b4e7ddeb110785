// Editing in a cell, in the line beside the grid and in a heading.

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>
#include <utility>

#include "desktop/GridView.h"
#include "desktop/QtText.h"

namespace tellurix {

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
  if (watched == headingEditor_ && HeadingEditorEvent(event)) return true;
  if (watched == editor_ || watched == line_) {
    auto* line = static_cast<QLineEdit*>(watched);
    if (event->type() == QEvent::KeyPress) return EditorKey(line, static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::FocusIn && line == line_) {
      const auto reason = static_cast<QFocusEvent*>(event)->reason();
      if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) StartEdit(nullptr, true, true);
    }
  }
  return QAbstractScrollArea::eventFilter(watched, event);
}

// --- headings ---

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

// Whether the event goes no further.
bool GridView::HeadingEditorEvent(QEvent* event) {
  if (event->type() == QEvent::FocusOut) {
    if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) FinishHeading(true);
    return false;
  }
  if (event->type() != QEvent::KeyPress) return false;
  const int key = static_cast<QKeyEvent*>(event)->key();
  const bool takes = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab;
  if (!takes && key != Qt::Key_Escape) return false;
  FinishHeading(takes);
  setFocus();
  return true;
}

// --- what may be changed ---

bool GridView::Refuse(const QString& reason) {
  emit Refused(reason);
  return false;
}

bool GridView::CanChange() { return !workbook_.SheetLocked() || Refuse(FromUtf8(LockedText(workbook_))); }

bool GridView::ReadyToChange() { return !selecting_ && CommitEdit() && CanChange(); }

}  // namespace tellurix
