#include "desktop/PictureImages.h"

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

QImage ImageForOthers(const PictureGroup& picture) {
  if (IsBitmap(picture)) return Decoded(picture);
  const auto drawing = DrawingOf(picture);
  if (!drawing) return {};
  FontBook fonts;
  const ExportSize size = SizeFor(picture);
  return Drawn(*drawing, fonts, {size.width, size.height});
}

}  // namespace tellurix
