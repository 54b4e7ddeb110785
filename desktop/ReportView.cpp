#include "desktop/ReportView.h"

#include <QAbstractTextDocumentLayout>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScrollBar>
#include <QTextBlock>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

#include "desktop/ReportFindBar.h"
#include "graphics/ImageExport.h"

namespace tellurix {

namespace {

constexpr double MinZoom = 0.2;
constexpr double MaxZoom = 5;

bool Matches(const QKeyEvent& event, std::initializer_list<QKeySequence::StandardKey> keys) {
  return std::any_of(keys.begin(), keys.end(), [&](auto key) { return event.matches(key); });
}

}  // namespace

int ReportView::ZoomedScreen::metric(PaintDeviceMetric metric) const {
  switch (metric) {
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
      return static_cast<int>(std::lround(dpi));
    case PdmDevicePixelRatio:
      return 1;
    case PdmDevicePixelRatioScaled:
      return static_cast<int>(devicePixelRatioFScale());
    default:
      return QPaintDevice::metric(metric);
  }
}

ReportView::ReportView(QWidget* parent) : QTextEdit(parent) {
  // Paper is white whatever the colours of the desktop.
  QPalette paper = palette();
  paper.setColor(QPalette::Base, Qt::white);
  paper.setColor(QPalette::Text, Qt::black);
  setPalette(paper);
  QFont standard(QStringLiteral("Arial"));
  standard.setPointSizeF(10);
  setFont(standard);
  setAcceptRichText(true);
  setTabChangesFocus(false);
  screen_.dpi = ScreenDpi();
  document()->setDocumentMargin(16);
  document()->documentLayout()->setPaintDevice(&screen_);
  PrepareDocument(*document());
  connect(document(), &QTextDocument::contentsChange, this, [this](int, int removed, int added) {
    if (removed > 0 || added > 0) NoteChange();
  });
  connect(this, &QTextEdit::cursorPositionChanged, this, &ReportView::PutCaretBehindHiddenText);
}

ReportView::~ReportView() {
  ForgetReport();
  // The base class still lays out while it goes; the screen is gone by then.
  document()->documentLayout()->setPaintDevice(nullptr);
}

void ReportView::SetReport(Report& report) {
  ForgetReport();
  report_ = &report;
  report.onAppended = [this] { ShowAppended(); };
  report.insertText = [this](std::string_view text) {
    textCursor().insertText(QString::fromUtf8(text.data(), qsizetype(text.size())));
  };
  Reload();
}

void ReportView::SetStartIndents(int left, int first, int right) {
  if (!document()->isEmpty()) return;
  ParagraphFormat format;
  format.leftIndent = left;
  format.firstIndent = first;
  format.rightIndent = right;
  loading_ = true;
  QTextCursor(document()).setBlockFormat(ToQtFormat(format));
  loading_ = false;
}

void ReportView::ForgetReport() {
  if (report_ == nullptr) return;
  Commit();
  report_->onAppended = {};
  report_->insertText = {};
  report_ = nullptr;
}

void ReportView::Reload() {
  loading_ = true;
  document()->setUndoRedoEnabled(false);
  ResetDocument(*document());
  if (report_ != nullptr) {
    AppendBlocks(*document(), report_->text.blocks);
    known_ = report_->text.blocks.size();
    setReadOnly(report_->document.readOnly);
  }
  document()->setUndoRedoEnabled(true);
  loading_ = false;
  dirty_ = false;
  moveCursor(QTextCursor::Start);
  PutCaretBehindHiddenText();
}

void ReportView::Commit() {
  if (!dirty_ || report_ == nullptr) return;
  report_->text = ToRichText(*document());
  known_ = report_->text.blocks.size();
  dirty_ = false;
}

void ReportView::NoteChange() {
  if (loading_) return;
  dirty_ = true;
  if (report_ != nullptr) report_->document.changed = true;
  emit Edited();
}

void ReportView::ShowAppended() {
  const auto& blocks = report_->text.blocks;
  if (blocks.size() < known_) {
    Reload();
    return;
  }
  if (blocks.size() == known_) return;
  setUpdatesEnabled(false);
  loading_ = true;
  const int start = AppendBlocks(*document(), std::span(blocks).subspan(known_));
  known_ = blocks.size();
  loading_ = false;
  moveCursor(QTextCursor::End);
  ScrollToTop(start);
  setUpdatesEnabled(true);
}

void ReportView::ScrollToTop(int position) {
  const QTextBlock block = document()->findBlock(position);
  if (!block.isValid()) return;
  // Asking for the size lays out everything and so sets the range of the scroll bar.
  document()->documentLayout()->documentSize();
  const double top = document()->documentLayout()->blockBoundingRect(block).top();
  verticalScrollBar()->setValue(static_cast<int>(top) - 4);
}

int ReportView::HelpTopicAtCaret() const {
  int end = textCursor().position();
  for (QTextBlock block = document()->findBlock(end); block.isValid(); block = block.previous()) {
    if (block.text().contains(QChar::ObjectReplacementCharacter)) {
      RichText text;
      text.blocks.emplace_back(ToParagraph(block, end));
      if (const auto topic = LastHelpTag(text, 0)) return *topic;
    }
    end = std::numeric_limits<int>::max();
  }
  return report_ != nullptr ? report_->helpContext : 0;
}

// Pictures

bool ReportView::ReplacePicture(int position, std::shared_ptr<const PictureGroup> picture) {
  if (isReadOnly() || !PictureAt(*document(), position)) return false;
  QTextCursor cursor(document());
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  RichText text;
  text.blocks.emplace_back(Paragraph{{Run{"", ToCharFormat(cursor.charFormat()), std::move(picture)}}, {}});
  InsertRichText(cursor, text, false);
  return true;
}

int ReportView::PicturePositionAt(QPoint point) const {
  const int near = cursorForPosition(point).position();
  for (const int position : {near, near - 1}) {
    if (position < 0 || !PictureAt(*document(), position)) continue;
    QTextCursor cursor(document());
    cursor.setPosition(position);
    const QTextBlock block = cursor.block();
    const int inBlock = position - block.position();
    const QTextLine line = block.layout()->lineForTextPosition(inBlock);
    if (!line.isValid()) continue;
    const QRectF blockPlace = document()->documentLayout()->blockBoundingRect(block);
    const QRectF place(blockPlace.left() + line.cursorToX(inBlock) - horizontalScrollBar()->value(),
                       blockPlace.top() + line.y() - verticalScrollBar()->value(),
                       line.cursorToX(inBlock + 1) - line.cursorToX(inBlock), line.height());
    if (place.adjusted(-1, -1, 1, 1).contains(point)) return position;
  }
  return -1;
}

void ReportView::SelectPicture(int position) {
  QTextCursor cursor(document());
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  setTextCursor(cursor);
}

std::shared_ptr<const PictureGroup> ReportView::ChosenPicture() const {
  RichText text;
  bool endsInMark = false;
  if (textCursor().hasSelection()) text = SelectedRichText(textCursor(), endsInMark);
  auto pictures = PicturesOf(text);
  if (pictures.empty()) pictures = PicturesOf(ToRichText(*document()));
  return pictures.size() == 1 ? pictures.front() : nullptr;
}

// A click on a picture selects it; what a drag has selected stays.
void ReportView::mouseReleaseEvent(QMouseEvent* event) {
  QTextEdit::mouseReleaseEvent(event);
  if (event->button() != Qt::LeftButton || textCursor().hasSelection()) return;
  if (const int picture = PicturePositionAt(event->pos()); picture >= 0) SelectPicture(picture);
}

// Hidden text and the caret

int ReportView::BeforeHiddenText(int position) const {
  while (position > 0 && IsHiddenObject(*document(), position - 1)) --position;
  return position;
}

int ReportView::BehindHiddenText(int position) const {
  while (IsHiddenObject(*document(), position)) ++position;
  return position;
}

void ReportView::PutCaretBehindHiddenText() {
  if (movingCaret_ || loading_) return;
  QTextCursor cursor = textCursor();
  const int behind = BehindHiddenText(cursor.position());
  movingCaret_ = true;
  if (behind != cursor.position()) {
    cursor.setPosition(behind, cursor.hasSelection() ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
    setTextCursor(cursor);
  }
  // What is typed behind a tag looks like the text in front of which it stands.
  if (!cursor.hasSelection() && behind > 0 && !cursor.atBlockEnd() && IsHiddenObject(*document(), behind - 1)) {
    QTextCursor next(cursor);
    next.movePosition(QTextCursor::NextCharacter);
    QTextCharFormat format = next.charFormat();
    if (format.objectType() == QTextFormat::NoObject) setCurrentCharFormat(format);
  }
  movingCaret_ = false;
}

void ReportView::keyPressEvent(QKeyEvent* event) {
  if (ZoomByKey(*event) || GoBehindHiddenText(event) || DeleteByKey(*event)) return;
  QTextEdit::keyPressEvent(event);
}

bool ReportView::ZoomByKey(const QKeyEvent& event) {
  if (!event.modifiers().testFlag(Qt::ControlModifier)) return false;
  switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      ZoomIn();
      return true;
    case Qt::Key_Minus:
      ZoomOut();
      return true;
    case Qt::Key_0:
      ZoomReset();
      return true;
    default:
      return false;
  }
}

// Whether the key goes or erases to the left from behind hidden text: it acts on what stands before that.
bool ReportView::GoBehindHiddenText(QKeyEvent* event) {
  QTextCursor cursor = textCursor();
  const bool erasing = event->key() == Qt::Key_Backspace && !isReadOnly() && !cursor.hasSelection();
  if (!erasing && !Matches(*event, {QKeySequence::MoveToPreviousChar, QKeySequence::SelectPreviousChar,
                                    QKeySequence::MoveToPreviousWord, QKeySequence::SelectPreviousWord})) {
    return false;
  }
  const int before = BeforeHiddenText(cursor.position());
  if (before == cursor.position()) return false;
  if (before == 0) return true;  // nothing stands further left
  movingCaret_ = true;
  const bool keeps = cursor.hasSelection() || event->modifiers().testFlag(Qt::ShiftModifier);
  cursor.setPosition(before, keeps && !erasing ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
  setTextCursor(cursor);
  movingCaret_ = false;
  if (erasing && event->modifiers() == Qt::NoModifier) {
    cursor.deletePreviousChar();
    setTextCursor(cursor);
  } else {
    QTextEdit::keyPressEvent(event);
  }
  PutCaretBehindHiddenText();
  return true;
}

// Whether the key deletes where nothing is selected in a way that the base class would not do right.
bool ReportView::DeleteByKey(const QKeyEvent& event) {
  QTextCursor cursor = textCursor();
  if (isReadOnly() || cursor.hasSelection()) return false;
  if (event.key() == Qt::Key_Backspace && event.modifiers() == Qt::NoModifier) {
    // At the start of an indented paragraph the base class would take away the indent, bit by bit.
    cursor.deletePreviousChar();
  } else if (event.matches(QKeySequence::DeleteStartOfWord)) {
    SelectUpToHiddenText(cursor, QTextCursor::PreviousWord);
    cursor.removeSelectedText();
  } else if (event.matches(QKeySequence::DeleteEndOfWord)) {
    SelectUpToHiddenText(cursor, QTextCursor::NextWord);
    cursor.removeSelectedText();
  } else if (event.matches(QKeySequence::DeleteEndOfLine)) {
    SelectUpToHiddenText(cursor, QTextCursor::EndOfLine);
    cursor.removeSelectedText();
  } else {
    return false;
  }
  setTextCursor(cursor);
  return true;
}

// Selects from the caret as far as the movement goes, but no hidden text.
void ReportView::SelectUpToHiddenText(QTextCursor& cursor, QTextCursor::MoveOperation movement) const {
  const int from = cursor.position();
  cursor.movePosition(movement, QTextCursor::KeepAnchor);
  const int to = cursor.position();
  for (int k = from; k < to; ++k) {
    if (!IsHiddenObject(*document(), k)) continue;
    cursor.setPosition(k, QTextCursor::KeepAnchor);
    return;
  }
  for (int k = from - 1; k >= to; --k) {
    if (!IsHiddenObject(*document(), k)) continue;
    cursor.setPosition(k + 1, QTextCursor::KeepAnchor);
    return;
  }
}

// Zoom

void ReportView::SetZoom(double factor) {
  factor = std::clamp(factor, MinZoom, MaxZoom);
  if (factor == zoom_) return;
  const int top = cursorForPosition({0, 0}).position();
  const bool atTop = verticalScrollBar()->value() == 0;
  zoom_ = factor;
  screen_.dpi = ScreenDpi() * factor;
  setUpdatesEnabled(false);
  loading_ = true;
  document()->markContentsDirty(0, document()->characterCount());
  loading_ = false;
  if (!atTop) ScrollToTop(top);
  setUpdatesEnabled(true);
  emit ZoomChanged(zoom_);
}

void ReportView::ZoomIn() { SetZoom(std::round(zoom_ * 11) / 10); }
void ReportView::ZoomOut() { SetZoom(std::round(zoom_ / 1.1 * 10) / 10); }
void ReportView::ZoomReset() { SetZoom(1); }

void ReportView::wheelEvent(QWheelEvent* event) {
  if (!event->modifiers().testFlag(Qt::ControlModifier)) {
    QTextEdit::wheelEvent(event);
    return;
  }
  if (event->angleDelta().y() > 0) ZoomIn();
  if (event->angleDelta().y() < 0) ZoomOut();
  event->accept();
}

// Find

ReportFindBar& ReportView::FindBar() {
  if (findBar_ == nullptr) {
    findBar_ = new ReportFindBar(*this, this);
    findBar_->hide();
    connect(findBar_, &ReportFindBar::Closed, this, &ReportView::PlaceFindBar);
  }
  return *findBar_;
}

void ReportView::Find() {
  FindBar().Open(false);
  PlaceFindBar();
}

void ReportView::FindAndReplace() {
  FindBar().Open(!isReadOnly());
  PlaceFindBar();
}

void ReportView::FindAgain() { FindBar().FindNext(); }

void ReportView::PlaceFindBar() {
  const bool shown = findBar_ != nullptr && !findBar_->isHidden();
  const int height = shown ? findBar_->sizeHint().height() : 0;
  if (viewportMargins().bottom() != height) setViewportMargins(0, 0, 0, height);
  if (shown) {
    const QRect room = viewport()->geometry();
    findBar_->setGeometry(room.left(), room.bottom() + 1, room.width(), height);
  }
}

void ReportView::resizeEvent(QResizeEvent* event) {
  QTextEdit::resizeEvent(event);
  PlaceFindBar();
}

void ReportView::focusOutEvent(QFocusEvent* event) {
  QTextEdit::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) Commit();
}

void ReportView::contextMenuEvent(QContextMenuEvent* event) {
  const int picture = PicturePositionAt(event->pos());
  if (picture >= 0 && receivers(SIGNAL(PictureMenuRequested(QPoint, int))) > 0) {
    SelectPicture(picture);
    emit PictureMenuRequested(event->globalPos(), picture);
    return;
  }
  if (event->reason() == QContextMenuEvent::Mouse && !textCursor().hasSelection())
    setTextCursor(cursorForPosition(event->pos()));
  QMenu* menu = createStandardContextMenu(event->pos());
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addSeparator();
  menu->addAction(tr("&Help on this result"), this, [this] { emit HelpRequested(HelpTopicAtCaret()); });
  menu->popup(event->globalPos());
}

// Paper

bool ReportView::ExportPdf(const QString& path, QString& error) {
  Commit();
  const QString title = report_ != nullptr ? QString::fromStdString(report_->document.caption) : QString();
  return WritePdf(report_ != nullptr ? report_->text : ToRichText(*document()), page_, title, path, error);
}

void ReportView::PrintTo(QPrinter& printer) {
  PageRange range;
  if (printer.printRange() == QPrinter::PageRange) range = {printer.fromPage(), printer.toPage()};
  Commit();
  PrintRichText(report_ != nullptr ? report_->text : ToRichText(*document()), printer, range);
}

bool ReportView::EditPageSetup() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageLayout(ToPageLayout(page_));
  QPageSetupDialog dialog(&printer, this);
  if (dialog.exec() != QDialog::Accepted) return false;
  page_ = ToPageSetup(printer.pageLayout());
  return true;
}

bool ReportView::Print(const QString& name) {
  QPrinter printer(QPrinter::HighResolution);
  if (!name.isEmpty()) printer.setPrinterName(name);
  printer.setPageLayout(ToPageLayout(page_));
  QPrintDialog dialog(&printer, this);
  dialog.setOption(QAbstractPrintDialog::PrintPageRange);
  if (dialog.exec() != QDialog::Accepted) return false;
  PrintTo(printer);
  return true;
}

void ReportView::PrintPreview() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageLayout(ToPageLayout(page_));
  QPrintPreviewDialog dialog(&printer, this);
  connect(&dialog, &QPrintPreviewDialog::paintRequested, this, [this](QPrinter* target) { PrintTo(*target); });
  dialog.exec();
}

}  // namespace tellurix
