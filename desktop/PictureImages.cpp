#include "desktop/PictureImages.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "graphics/ImageExport.h"
#include "graphics/Renderer.h"

namespace tellurix {

namespace {

constexpr double MostPixels = 40e6;

bool IsBitmap(const PictureGroup& picture) { return picture.kind == "pngblip" || picture.kind == "jpegblip"; }

QImage Decoded(const PictureGroup& picture) {
  return QImage::fromData(reinterpret_cast<const uchar*>(picture.bytes.data()), static_cast<int>(picture.bytes.size()));
}

QImage Drawn(const Drawing& drawing, FontBook& fonts, QSize size) {
  const double share = std::sqrt(MostPixels / (static_cast<double>(size.width()) * size.height()));
  if (share < 1) size = {std::max(1, int(size.width() * share)), std::max(1, int(size.height() * share))};
  const Image image = RenderImage(drawing, fonts, size.width(), size.height());
  if (image.pixels.empty()) return {};
  const QImage view(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height, 4 * image.width,
                    QImage::Format_RGB32);
  return view.copy();
}

QPainterPath PathOf(const DrawnShape& shape) {
  using Step = DrawnShape::Step;
  QPainterPath path;
  path.setFillRule(shape.winding ? Qt::WindingFill : Qt::OddEvenFill);
  std::size_t next = 0;
  const auto point = [&] {
    const DrawPoint& at = shape.points[next++];
    return QPointF(at.x, at.y);
  };
  for (const Step step : shape.steps) {
    if (step == Step::Move) path.moveTo(point());
    if (step == Step::Line) path.lineTo(point());
    if (step == Step::Curve) {
      const QPointF first = point(), second = point();
      path.cubicTo(first, second, point());
    }
    if (step == Step::Close) path.closeSubpath();
  }
  return path;
}

QPen PenOf(const DrawnShape& shape) {
  const Qt::PenCapStyle cap = shape.squareCaps ? Qt::SquareCap : Qt::FlatCap;
  QPen pen(QColor::fromRgb(shape.colour), shape.penWidth, Qt::SolidLine, cap, Qt::MiterJoin);
  if (shape.dashes.empty()) return pen;
  QList<qreal> pattern;  // in widths of the pen
  for (const double length : shape.dashes) pattern.append(length / shape.penWidth);
  pen.setDashPattern(pattern);
  return pen;
}

QBrush BrushOf(const DrawnShape& shape) {
  static constexpr Qt::BrushStyle hatches[]{Qt::HorPattern,   Qt::VerPattern,   Qt::FDiagPattern,
                                            Qt::BDiagPattern, Qt::CrossPattern, Qt::DiagCrossPattern};
  return {QColor::fromRgb(shape.colour),
          shape.hatch ? hatches[static_cast<std::size_t>(*shape.hatch)] : Qt::SolidPattern};
}

void Paint(QPainter& target, const DrawnShape& shape) {
  if (shape.bitmap) {
    const DrawBitmap& bitmap = *shape.bitmap;
    const QImage image(reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.width, bitmap.height,
                       4 * bitmap.width, QImage::Format_RGB32);
    const DrawPoint &from = shape.points[0], &to = shape.points[1];
    const QRectF place(QPointF(from.x, from.y), QPointF(to.x, to.y));
    return target.drawImage(place.normalized(), image.mirrored(to.x < from.x, to.y < from.y));
  }
  if (shape.isFilled) return target.fillPath(PathOf(shape), BrushOf(shape));
  target.strokePath(PathOf(shape), PenOf(shape));
}

}  // namespace

struct PictureImages::Kept {
  explicit Kept(PicturePointer shown) : picture(std::move(shown)) {
    if (IsBitmap(*picture)) {
      image = Decoded(*picture);
    } else {
      drawing = DrawingOf(*picture);
    }
  }

  PicturePointer picture;          // held, so that its address stays its own
  std::optional<Drawing> drawing;  // of a chart
  QImage image;
  QSize room;  // that the chart was drawn for
};

PictureImages::PictureImages() : kept_(512 * 1024) {}
PictureImages::~PictureImages() = default;

QImage PictureImages::ImageOf(const PicturePointer& picture, QSize room) {
  if (!picture || room.isEmpty()) return {};
  Kept* known = kept_.object(picture.get());
  if (known && (!known->drawing || known->room == room)) return known->image;
  std::unique_ptr<Kept> now(known ? kept_.take(picture.get()) : new Kept(picture));
  if (now->drawing) now->image = Drawn(*now->drawing, fonts_, room);
  now->room = room;
  const QImage image = now->image;
  const qsizetype size = (image.sizeInBytes() + static_cast<qsizetype>(picture->bytes.size())) / 1024;
  kept_.insert(picture.get(), now.release(), std::clamp<qsizetype>(size, 1, kept_.maxCost()));
  return image;
}

bool PictureImages::PaintShapes(QPainter& target, const QRectF& place, const PictureGroup& picture) {
  const auto drawing = DrawingOf(picture);
  if (!drawing) return false;
  target.save();
  target.setRenderHint(QPainter::Antialiasing);
  target.translate(place.topLeft());
  RenderShapes(*drawing, fonts_, place.width(), place.height(), [&](const DrawnShape& shape) {
    target.save();
    QRectF box(QPointF(0, 0), place.size());
    if (shape.clip) {
      const auto& [from, to] = *shape.clip;
      box = box.intersected(QRectF(QPointF(from.x, from.y), QPointF(to.x, to.y)));
    }
    if (shape.clip) target.setClipRect(box, Qt::IntersectClip);
    Paint(target, shape);
    target.restore();
  });
  target.restore();
  return true;
}

QImage ImageForOthers(const PictureGroup& picture) {
  if (IsBitmap(picture)) return Decoded(picture);
  const auto drawing = DrawingOf(picture);
  if (!drawing) return {};
  FontBook fonts;
  const ExportSize size = SizeFor(picture);
  return Drawn(*drawing, fonts, {size.width, size.height});
}

}  // namespace tellurix
