// The pictures of reports as images: recorded charts drawn for the size at which they are shown, bitmaps decoded. What
// was made is kept, so that painting it again costs next to nothing.
#pragma once

#include <QCache>
#include <QImage>
#include <QMetaType>
#include <QRectF>
#include <QSize>
#include <memory>

#include "graphics/FontBook.h"
#include "report/RichText.h"

class QPainter;

namespace tellurix {

using PicturePointer = std::shared_ptr<const PictureGroup>;

class PictureImages {
 public:
  PictureImages();
  ~PictureImages();

  // The image of a picture for a room of so many pixels: a chart has just that size, or a smaller one where it would
  // take too much memory, a bitmap its own. A null image when the picture is damaged or of a kind that is not known.
  QImage ImageOf(const PicturePointer& picture, QSize room);

  // Draws a chart on paper, line by line; false for bitmaps, and for what is damaged or not known.
  bool PaintShapes(QPainter& target, const QRectF& place, const PictureGroup& picture);

 private:
  struct Kept;

  FontBook fonts_;
  QCache<const PictureGroup*, Kept> kept_;  // sizes in kilobytes
};

// A picture as other programs take it: a chart is drawn for print. Null as above.
QImage ImageForOthers(const PictureGroup& picture);

}  // namespace tellurix

Q_DECLARE_METATYPE(tellurix::PicturePointer)
