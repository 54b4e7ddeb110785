#include "desktop/ReportObjects.h"

#include <QAbstractTextDocumentLayout>
#include <QPaintEngine>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

#include "report/RtfPicture.h"

namespace tellurix {

namespace {

// What stands where a picture cannot be drawn.
void DrawPlaceholder(QPainter& target, const QRectF& place, const PictureGroup& picture) {
  const bool isKnown = picture.kind.starts_with("wmetafile") || picture.kind == "pngblip" || picture.kind == "jpegblip";
  const QString words =
      isKnown ? QStringLiteral("This picture is damaged and cannot be shown.")
              : QStringLiteral("This picture is of a kind that cannot be shown here (%1).")
                    .arg(picture.kind.empty() ? QStringLiteral("unknown") : QString::fromStdString(picture.kind));
  target.save();
  target.setPen(QPen(QColor(0x99, 0x99, 0x99), 0));
  target.setBrush(QColor(0xF6, 0xF6, 0xF6));
  target.drawRect(place.adjusted(0, 0, -1, -1));
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(std::clamp(static_cast<int>(std::min(place.height() / 6, place.width() / 24)), 1, 400));
  target.setFont(font);
  target.setPen(QColor(0x66, 0x66, 0x66));
  target.setClipRect(place, Qt::IntersectClip);
  target.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, words);
  target.restore();
}

QRectF WholePixels(const QRectF& device) {
  return {device.topLeft().toPoint(),
          QSizeF(std::max(1.0, std::round(device.width())), std::max(1.0, std::round(device.height())))};
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
  if (!DrawPicture(*target, place, picture)) DrawPlaceholder(*target, place, *picture);
  target->restore();
}

// Pixel by pixel on a screen; on paper as lines and letters, which it draws finer.
bool InlineObjects::DrawPicture(QPainter& target, const QRectF& place, const PicturePointer& picture) {
  const bool onScreen = target.paintEngine()->type() == QPaintEngine::Raster;
  if (!onScreen && images_.PaintShapes(target, place, *picture)) return true;
  const QTransform toDevice = target.deviceTransform();
  const QRectF device = onScreen ? WholePixels(toDevice.mapRect(place)) : toDevice.mapRect(place);
  const QImage image = images_.ImageOf(picture, device.size().toSize().expandedTo({1, 1}));
  if (image.isNull()) return false;
  target.setRenderHint(QPainter::SmoothPixmapTransform);
  target.setRenderHint(QPainter::LosslessImageRendering, picture->kind != "jpegblip");
  target.drawImage(toDevice.inverted().mapRect(device), image);
  return true;
}

}  // namespace tellurix
