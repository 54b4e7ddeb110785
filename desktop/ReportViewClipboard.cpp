// What a report gives to the clipboard and takes from it.
#include <QBuffer>
#include <QImage>
#include <QMimeData>
#include <algorithm>
#include <optional>

#include "desktop/PictureImages.h"
#include "desktop/ReportView.h"
#include "graphics/ImageExport.h"
#include "report/RtfPicture.h"

namespace tellurix {

namespace {

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

QMimeData* ReportView::createMimeDataFromSelection() const {
  bool endsInMark = false;
  RichText text = SelectedRichText(textCursor(), endsInMark);
  return new SelectionData(std::move(text), endsInMark);
}

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

}  // namespace tellurix
