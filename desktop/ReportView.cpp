#include "desktop/ReportView.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QContextMenuEvent>
#include <QImage>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextTable>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

#include "desktop/PictureImages.h"
#include "desktop/ReportFindBar.h"
#include "graphics/ImageExport.h"
#include "report/RtfPicture.h"

namespace tellurix {

namespace {

constexpr int IndentStep = 720;  // twips
constexpr int ListIndent = 360;
constexpr double MinZoom = 0.2;
constexpr double MaxZoom = 5;

const QStringList& RtfTypes() {
  static const QStringList types{QStringLiteral("text/rtf"), QStringLiteral("application/rtf"),
                                 QStringLiteral("text/richtext")};
  return types;
}

std::string_view WithoutTrailingBlanks(std::string_view bytes) {
  const auto end = bytes.find_last_not_of(std::string_view(" \r\n\t\0", 5));
  return end == std::string_view::npos ? std::string_view() : bytes.substr(0, end + 1);
}

// Whether the last paragraph of a rich text has its mark, so that what follows stands in a paragraph of its own.
bool EndsInParagraphMark(std::string_view rtf) {
  rtf = WithoutTrailingBlanks(rtf);
  while (rtf.ends_with('}')) rtf = WithoutTrailingBlanks(rtf.substr(0, rtf.size() - 1));
  if (!rtf.ends_with("\\par")) return false;
  // After another backslash it is a backslash that is text.
  rtf.remove_suffix(3);
  const auto text = rtf.find_last_not_of('\\');
  return (rtf.size() - (text == std::string_view::npos ? 0 : text + 1)) % 2 == 1;
}

// Rich text whose last paragraph has a mark only if asked for.
std::string SelectionRtf(const RichText& text, bool endsInMark) {
  std::string rtf = WriteRtf(text);
  constexpr std::string_view mark = "\\par\n}";
  if (!endsInMark && rtf.ends_with(mark)) rtf.replace(rtf.size() - mark.size(), mark.size(), "}");
  return rtf;
}

// HTML of unknown origin; nothing is fetched for it.
class ForeignDocument : public QTextDocument {
 protected:
  QVariant loadResource(int, const QUrl&) override { return {}; }
};

RichText FromHtml(const QString& html) {
  ForeignDocument document;
  document.setHtml(html);
  return ToRichText(document);
}

// Empty when it cannot be written.
QByteArray PngOf(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  return !image.isNull() && image.save(&buffer, "PNG") ? bytes : QByteArray();
}

std::shared_ptr<const PictureGroup> FromImage(const QImage& image) {
  const QByteArray bytes = PngOf(image);
  if (bytes.isEmpty()) return nullptr;
  PictureGroup picture;
  picture.kind = "pngblip";
  picture.bytes = bytes.toStdString();
  picture.width = image.width();
  picture.height = image.height();
  picture.goalWidth = image.width() * 15;  // pixels of 1/96 inch
  picture.goalHeight = image.height() * 15;
  return std::make_shared<const PictureGroup>(std::move(picture));
}

// A picture as HTML within the page; a placeholder for one that cannot be drawn.
std::string ImageMarkup(const PictureGroup& picture) {
  const bool isJpeg = picture.kind == "jpegblip";
  QByteArray bytes = QByteArray::fromStdString(picture.bytes);
  if (!isJpeg && picture.kind != "pngblip") {
    bytes = PngOf(ImageForOthers(picture));
    if (bytes.isEmpty()) return {};
  }
  const auto [width, height] = PictureSize(picture);
  return "<img width=\"" + std::to_string(width / 15) + "\" height=\"" + std::to_string(height / 15) +
         "\" src=\"data:image/" + (isJpeg ? "jpeg" : "png") + ";base64," + bytes.toBase64().toStdString() + "\">";
}

// A selection on its way to another program, written in the format that is asked for.
class SelectionData : public QMimeData {
 public:
  SelectionData(RichText text, bool endsInMark) : text_(std::move(text)), endsInMark_(endsInMark) {}

  QStringList formats() const override {
    QStringList all = RtfTypes();
    all << QStringLiteral("text/html") << QStringLiteral("text/plain");
    if (OnlyPicture() != nullptr) all << QStringLiteral("application/x-qt-image");
    return all;
  }
  bool hasFormat(const QString& type) const override { return formats().contains(type); }

 protected:
  QVariant retrieveData(const QString& type, QMetaType) const override {
    if (RtfTypes().contains(type)) return QByteArray::fromStdString(SelectionRtf(text_, endsInMark_));
    if (type == QLatin1String("text/html")) return QString::fromStdString(WriteHtml(text_, "", ImageMarkup));
    if (type == QLatin1String("text/plain")) return ToPlainText(text_, endsInMark_);
    if (const PictureGroup* picture = OnlyPicture();
        picture != nullptr && type.startsWith(QLatin1String("application")))
      return ImageForOthers(*picture);
    return {};
  }

 private:
  // The picture, where the selection is nothing but one that other programs know.
  const PictureGroup* OnlyPicture() const {
    if (text_.blocks.size() != 1) return nullptr;
    const auto* paragraph = std::get_if<Paragraph>(&text_.blocks.front());
    if (paragraph == nullptr || paragraph->runs.size() != 1) return nullptr;
    const PictureGroup* picture = paragraph->runs.front().picture.get();
    const bool known = picture != nullptr && (picture->kind == "pngblip" || picture->kind == "jpegblip" ||
                                              picture->kind.starts_with("wmetafile"));
    return known ? picture : nullptr;
  }

  RichText text_;
  bool endsInMark_;
};

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
  if (event->modifiers().testFlag(Qt::ControlModifier)) {
    if (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal) return ZoomIn();
    if (event->key() == Qt::Key_Minus) return ZoomOut();
    if (event->key() == Qt::Key_0) return ZoomReset();
  }
  const auto matches = [&](std::initializer_list<QKeySequence::StandardKey> keys) {
    return std::any_of(keys.begin(), keys.end(), [&](auto key) { return event->matches(key); });
  };
  QTextCursor cursor = textCursor();
  const bool erasing = event->key() == Qt::Key_Backspace && !isReadOnly() && !cursor.hasSelection();
  const bool goingLeft = matches({QKeySequence::MoveToPreviousChar, QKeySequence::SelectPreviousChar,
                                  QKeySequence::MoveToPreviousWord, QKeySequence::SelectPreviousWord});
  if (erasing || goingLeft) {
    const int before = BeforeHiddenText(cursor.position());
    if (before != cursor.position()) {
      if (before == 0) return;  // nothing stands further left
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
      return;
    }
  }
  // At the start of an indented paragraph the base class would take away the indent, bit by bit.
  if (erasing && event->modifiers() == Qt::NoModifier) {
    cursor.deletePreviousChar();
    setTextCursor(cursor);
    return;
  }
  if (matches({QKeySequence::DeleteEndOfWord, QKeySequence::DeleteEndOfLine, QKeySequence::DeleteStartOfWord}) &&
      !isReadOnly() && !cursor.hasSelection()) {
    const int from = cursor.position();
    if (event->matches(QKeySequence::DeleteStartOfWord)) {
      cursor.movePosition(QTextCursor::PreviousWord, QTextCursor::KeepAnchor);
      for (int k = from - 1; k >= cursor.position(); --k) {
        if (IsHiddenObject(*document(), k)) {
          cursor.setPosition(k + 1, QTextCursor::KeepAnchor);
          break;
        }
      }
    } else {
      cursor.movePosition(
          event->matches(QKeySequence::DeleteEndOfWord) ? QTextCursor::NextWord : QTextCursor::EndOfLine,
          QTextCursor::KeepAnchor);
      for (int k = from; k < cursor.position(); ++k) {
        if (IsHiddenObject(*document(), k)) {
          cursor.setPosition(k, QTextCursor::KeepAnchor);
          break;
        }
      }
    }
    cursor.removeSelectedText();
    setTextCursor(cursor);
    return;
  }
  QTextEdit::keyPressEvent(event);
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

// Clipboard

QMimeData* ReportView::createMimeDataFromSelection() const {
  bool endsInMark = false;
  RichText text = SelectedRichText(textCursor(), endsInMark);
  return new SelectionData(std::move(text), endsInMark);
}

namespace {

struct PastedText {
  RichText text;
  bool endsInMark = false;
};

// What was cut short is better read as plain words, if there are any: then nothing.
std::optional<PastedText> PastedRtf(const QMimeData& source) {
  for (const QString& type : RtfTypes()) {
    if (!source.hasFormat(type)) continue;
    const std::string bytes = source.data(type).toStdString();
    const bool whole = WithoutTrailingBlanks(bytes).ends_with('}');
    auto text = ReadRtf(bytes);
    if (!text || text->blocks.empty()) continue;
    const bool isPoor = !whole || (text->IsEmpty() && !source.text().trimmed().isEmpty());
    if (source.hasText() && isPoor) return std::nullopt;
    return PastedText{std::move(*text), EndsInParagraphMark(bytes)};
  }
  return std::nullopt;
}

std::optional<PastedText> PastedHtml(const QMimeData& source) {
  if (!source.hasHtml()) return std::nullopt;
  PastedText pasted{FromHtml(source.html())};
  if (pasted.text.IsEmpty()) return std::nullopt;
  return pasted;
}

std::optional<PastedText> PastedPicture(const QMimeData& source) {
  auto picture = source.hasImage() ? FromImage(qvariant_cast<QImage>(source.imageData())) : nullptr;
  if (!picture) return std::nullopt;
  PastedText pasted;
  pasted.text.blocks.emplace_back(Paragraph{{Run{"", {}, std::move(picture)}}, {}});
  return pasted;
}

QString PastedWords(const QMimeData& source) {
  QString plain = source.text();
  for (const char16_t mark : {char16_t(QChar::ObjectReplacementCharacter), u'\uFDD0', u'\uFDD1', u'\0'}) {
    plain.remove(QChar(mark));
  }
  return plain;
}

}  // namespace

bool ReportView::canInsertFromMimeData(const QMimeData* source) const {
  const auto has = [&](const QString& type) { return source->hasFormat(type); };
  return std::any_of(RtfTypes().begin(), RtfTypes().end(), has) || source->hasHtml() || source->hasText() ||
         source->hasImage();
}

std::vector<PasteForm> ReportView::PasteForms(const QMimeData& source) {
  std::vector<PasteForm> forms;
  if (PastedRtf(source)) forms.push_back(PasteForm::RichText);
  if (PastedHtml(source)) forms.push_back(PasteForm::Html);
  if (PastedPicture(source)) forms.push_back(PasteForm::Picture);
  if (source.hasText()) forms.push_back(PasteForm::PlainText);
  return forms;
}

bool ReportView::PasteAs(PasteForm form, const QMimeData& source) {
  if (isReadOnly()) return false;
  QTextCursor cursor = textCursor();
  if (form == PasteForm::PlainText) {
    if (!source.hasText()) return false;
    cursor.insertText(PastedWords(source));
  } else {
    const auto pasted = form == PasteForm::RichText ? PastedRtf(source)
                        : form == PasteForm::Html   ? PastedHtml(source)
                                                    : PastedPicture(source);
    if (!pasted) return false;
    InsertRichText(cursor, pasted->text, pasted->endsInMark);
  }
  setTextCursor(cursor);
  ensureCursorVisible();
  return true;
}

void ReportView::insertFromMimeData(const QMimeData* source) {
  for (const PasteForm form : {PasteForm::RichText, PasteForm::Html, PasteForm::Picture, PasteForm::PlainText}) {
    if (PasteAs(form, *source)) return;
  }
}

// Formats

void ReportView::MergeCharFormat(const QTextCharFormat& format) {
  if (!isReadOnly()) mergeCurrentCharFormat(format);
}

void ReportView::SetFamily(const QString& family) {
  QTextCharFormat format;
  format.setFontFamilies({family});
  MergeCharFormat(format);
}

void ReportView::SetPointSize(double points) {
  QTextCharFormat format;
  format.setFontPointSize(std::clamp(std::round(2 * points) / 2, 1.0, 1638.0));
  MergeCharFormat(format);
}

void ReportView::SetBold(bool on) {
  QTextCharFormat format;
  format.setFontWeight(on ? QFont::Bold : QFont::Normal);
  MergeCharFormat(format);
}

void ReportView::SetItalic(bool on) {
  QTextCharFormat format;
  format.setFontItalic(on);
  MergeCharFormat(format);
}

void ReportView::SetUnderline(bool on) {
  QTextCharFormat format;
  format.setFontUnderline(on);
  MergeCharFormat(format);
}

void ReportView::SetStrike(bool on) {
  QTextCharFormat format;
  format.setFontStrikeOut(on);
  MergeCharFormat(format);
}

void ReportView::SetSubscript(bool on) {
  QTextCharFormat format;
  format.setVerticalAlignment(on ? QTextCharFormat::AlignSubScript : QTextCharFormat::AlignNormal);
  MergeCharFormat(format);
}

void ReportView::SetSuperscript(bool on) {
  QTextCharFormat format;
  format.setVerticalAlignment(on ? QTextCharFormat::AlignSuperScript : QTextCharFormat::AlignNormal);
  MergeCharFormat(format);
}

void ReportView::SetColour(const QColor& colour) {
  QTextCharFormat format;
  format.setForeground(colour);
  MergeCharFormat(format);
}

void ReportView::SetParagraphAlignment(Alignment alignment) {
  if (isReadOnly()) return;
  static constexpr Qt::AlignmentFlag flags[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight, Qt::AlignJustify};
  QTextBlockFormat format;
  format.setAlignment(flags[static_cast<int>(alignment)]);
  QTextCursor cursor = textCursor();
  cursor.mergeBlockFormat(format);
}

std::vector<QTextBlock> ReportView::SelectedBlocks() const {
  std::vector<QTextBlock> blocks;
  const QTextCursor cursor = textCursor();
  const int end = cursor.selectionEnd();
  for (QTextBlock block = document()->findBlock(cursor.selectionStart()); block.isValid() && block.position() <= end;
       block = block.next()) {
    // The paragraph behind a mark that is selected is not meant.
    if (!blocks.empty() && block.position() == end) break;
    blocks.push_back(block);
  }
  return blocks;
}

void ReportView::ToggleBullets() { ToggleList(false); }
void ReportView::ToggleNumbers() { ToggleList(true); }

void ReportView::ToggleList(bool numbers) {
  if (isReadOnly()) return;
  static const QRegularExpression anyMark(QStringLiteral("^\uFFFC*((?:•|\\d+\\.)\\t)"));
  static const QRegularExpression number(QStringLiteral("^\uFFFC*\\d+\\."));
  const std::vector<QTextBlock> blocks = SelectedBlocks();
  const auto isList = [](const QTextBlock& block) {
    return block.blockFormat().textIndent() < 0 && anyMark.match(block.text()).hasMatch();
  };
  const bool off = std::all_of(blocks.begin(), blocks.end(), [&](const QTextBlock& block) {
    return isList(block) && number.match(block.text()).hasMatch() == numbers;
  });
  QTextCursor step = textCursor();
  step.beginEditBlock();
  int count = 0;
  for (const QTextBlock& block : blocks) {
    QTextCursor cursor(block);
    ParagraphFormat format = ToParagraphFormat(block);
    if (isList(block)) {
      const QRegularExpressionMatch mark = anyMark.match(block.text());
      cursor.setPosition(block.position() + static_cast<int>(mark.capturedStart(1)));
      cursor.setPosition(block.position() + static_cast<int>(mark.capturedEnd(1)), QTextCursor::KeepAnchor);
      cursor.removeSelectedText();
      format.leftIndent = std::max(format.leftIndent - ListIndent, 0);
      format.firstIndent = 0;
      format.tabs.clear();
    }
    if (!off) {
      cursor.setPosition(BehindHiddenText(block.position()));
      QTextCursor next(cursor);
      if (!next.atBlockEnd()) next.movePosition(QTextCursor::NextCharacter);
      QTextCharFormat looks = next.charFormat();
      if (looks.objectType() != QTextFormat::NoObject) looks = ToQtFormat(CharFormat{});
      cursor.insertText(numbers ? QStringLiteral("%1.\t").arg(++count) : QStringLiteral("•\t"), looks);
      format.leftIndent += ListIndent;
      format.firstIndent = -ListIndent;
      format.tabs.assign(1, TabStop{format.leftIndent});
    }
    cursor.setBlockFormat(ToQtFormat(format));
  }
  step.endEditBlock();
}

void ReportView::IndentMore() { Indent(1); }
void ReportView::IndentLess() { Indent(-1); }

void ReportView::Indent(int steps) {
  if (isReadOnly()) return;
  QTextCursor step = textCursor();
  step.beginEditBlock();
  for (const QTextBlock& block : SelectedBlocks()) {
    ParagraphFormat format = ToParagraphFormat(block);
    const int indent = std::max({0, -format.firstIndent, format.leftIndent + steps * IndentStep});
    // The tab behind a list's mark goes along.
    for (TabStop& tab : format.tabs) {
      if (format.firstIndent < 0 && tab.position == format.leftIndent) tab.position = indent;
    }
    format.leftIndent = indent;
    QTextCursor(block).setBlockFormat(ToQtFormat(format));
  }
  step.endEditBlock();
}

std::vector<TabStop> ReportView::TabStops() const { return ToParagraph(textCursor().block(), 0).format.tabs; }

void ReportView::SetTabStops(const std::vector<TabStop>& tabs) {
  if (isReadOnly()) return;
  QTextBlockFormat format;
  format.setTabPositions(ToQtTabs(tabs));
  QTextCursor cursor = textCursor();
  cursor.mergeBlockFormat(format);
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
