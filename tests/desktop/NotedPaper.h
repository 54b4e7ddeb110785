// Paper that notes the images and the shapes drawn on it, page by page, and prints nothing.
#pragma once

#include <QBuffer>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QRectF>
#include <vector>

namespace tellurix {

struct NotedImage {
  int page = 0;
  QRectF place;  // on that page, in pixels of the device
  QImage image;
};

class NotedPaper : public QPdfWriter {
 public:
  explicit NotedPaper(const QPageLayout& layout) : QPdfWriter(&nowhere_) {
    nowhere_.open(QIODevice::WriteOnly);
    setPageLayout(layout);
  }

  std::vector<NotedImage> images;
  std::vector<QRectF> shapes;  // the boxes of paths, in pixels of the device

  bool newPage() override {
    ++page_;
    return true;
  }
  QPaintEngine* paintEngine() const override { return &engine_; }

 private:
  class Engine : public QPaintEngine {
   public:
    explicit Engine(NotedPaper& paper) : QPaintEngine(AllFeatures), paper_(paper) {}
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawPath(const QPainterPath& path) override {
      paper_.shapes.push_back(painter()->transform().mapRect(path.boundingRect()));
    }
    void drawTextItem(const QPointF&, const QTextItem&) override {}
    void drawImage(const QRectF& place, const QImage& image, const QRectF&, Qt::ImageConversionFlags) override {
      paper_.images.push_back({paper_.page_, painter()->transform().mapRect(place), image});
    }
    Type type() const override { return User; }

   private:
    NotedPaper& paper_;
  };

  QBuffer nowhere_;
  int page_ = 0;
  mutable Engine engine_{*this};
};

}  // namespace tellurix
