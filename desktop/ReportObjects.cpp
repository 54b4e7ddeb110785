#include "desktop/ReportObjects.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>

#include "report/RtfPicture.h"

namespace tellurix {

namespace {

void DrawPlaceholder(QPainter& target, const QRectF& place, const PictureGroup& picture) {
  target.save();
  target.setPen(QPen(QColor(0x99, 0x99, 0x99), 0));
  target.setBrush(QColor(0xF6, 0xF6, 0xF6));
  target.drawRect(place.adjusted(0, 0, -1, -1));
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(std::clamp(static_cast<int>(place.height() / 10), 1, 400));
  target.setFont(font);
  target.setPen(QColor(0x66, 0x66, 0x66));
  const QString kind = picture.kind.empty() ? QStringLiteral("picture") : QString::fromStdString(picture.kind);
  target.setClipRect(place, Qt::IntersectClip);
  target.drawText(place, Qt::AlignCenter, kind);
  target.restore();
}

}  // namespace

QSizeF InlineObjects::intrinsicSize(QTextDocument* document, int position, const QTextFormat& format) {
  const QPaintDevice* device = document->documentLayout()->paintDevice();
  const double dpi = device != nullptr ? device->logicalDpiY() : ScreenDpi();
  if (format.boolProperty(IsHidden)) {
    // Alone in its paragraph it still leaves the line its height.
    if (document->findBlock(position).length() > 2) return {0, 0};
    const double points = format.toCharFormat().fontPointSize();
    return {0, 0.9 * (points > 0 ? points : 10) * dpi / 72};
  }
  const auto picture = format.property(Picture).value<PicturePointer>();
  if (!picture) return {0, 0};
  const auto [width, height] = PictureSize(*picture);
  QSizeF size(width * dpi / 1440, height * dpi / 1440);
  if (paper.isValid()) {
    const QSizeF room(paper.width(), 0.96 * paper.height());
    if (size.width() > room.width() || size.height() > room.height()) size.scale(room, Qt::KeepAspectRatio);
  }
  return size;
}

void InlineObjects::drawObject(QPainter* target, const QRectF& place, QTextDocument*, int, const QTextFormat& format) {
  if (format.boolProperty(IsHidden)) return;
  const auto picture = format.property(Picture).value<PicturePointer>();
  if (!picture) return;
  target->save();
  const bool drawn = (painter && painter(*target, place, *picture)) || DrawImage(*target, place, picture);
  target->restore();
  if (!drawn) DrawPlaceholder(*target, place, *picture);
}

bool InlineObjects::DrawImage(QPainter& target, const QRectF& place, const PicturePointer& picture) {
  if (picture->kind != "pngblip" && picture->kind != "jpegblip") return false;
  Decoded* decoded = images_.object(picture.get());
  if (decoded == nullptr) {
    decoded = new Decoded{picture, QImage::fromData(reinterpret_cast<const uchar*>(picture->bytes.data()),
                                                    static_cast<int>(picture->bytes.size()))};
    const auto cost = std::clamp<qsizetype>(decoded->image.sizeInBytes() / 1024, 1, images_.maxCost());
    images_.insert(picture.get(), decoded, cost);
  }
  if (decoded->image.isNull()) return false;
  target.setRenderHint(QPainter::SmoothPixmapTransform);
  target.drawImage(place, decoded->image);
  return true;
}

}  // namespace tellurix
