#include "desktop/Opening.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QTimer>
#include <cmath>
#include <random>

#include "desktop/Icons.h"

namespace tellurix {

namespace {

constexpr int Width = 520;
constexpr int Height = 300;
constexpr double Corner = 10;

const QColor DeepBlue(0x12, 0x36, 0x52), Blue(0x1f, 0x5f, 0x8b), PaleBlue(0x9f, 0xd0, 0xee);

constexpr double Baseline = 236;
constexpr double CurveHeight = 128;
constexpr double CurveCentre = 350;
constexpr double CurveSpread = 62;

QPointF OnCurve(double x) {
  const double z = (x - CurveCentre) / CurveSpread;
  return {x, Baseline - CurveHeight * std::exp(-z * z / 2)};
}

QPainterPath Curve(double from, double to) {
  QPainterPath path(OnCurve(from));
  for (double x = from; x <= to; x += 2) path.lineTo(OnCurve(x));
  return path;
}

// The part of the curve's area from one place to another.
QPainterPath UnderCurve(double from, double to) {
  QPainterPath path = Curve(from, to);
  path.lineTo(to, Baseline);
  path.lineTo(from, Baseline);
  path.closeSubpath();
  return path;
}

void DrawBackground(QPainter& painter) {
  QLinearGradient sky(0, 0, Width, Height);
  sky.setColorAt(0, DeepBlue);
  sky.setColorAt(1, Blue);
  painter.setPen(Qt::NoPen);
  painter.setBrush(sky);
  painter.drawRoundedRect(QRectF(0, 0, Width, Height), Corner, Corner);
  painter.setPen(QPen(QColor(255, 255, 255, 16), 1));
  for (int x = 40; x < Width; x += 40) painter.drawLine(x, 0, x, Height);
  for (int y = 36; y < Height; y += 40) painter.drawLine(0, y, Width, y);
}

// A normal curve with its middle 95% and a sample beneath it.
void DrawCurve(QPainter& painter) {
  constexpr double limit = 1.959964 * CurveSpread;
  painter.setPen(Qt::NoPen);
  QLinearGradient shade(0, Baseline - CurveHeight, 0, Baseline);
  shade.setColorAt(0, QColor(255, 255, 255, 90));
  shade.setColorAt(1, QColor(255, 255, 255, 20));
  painter.setBrush(shade);
  painter.drawPath(UnderCurve(CurveCentre - limit, CurveCentre + limit));
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(Qt::white, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(Curve(150, Width - 1));
  painter.setPen(QPen(PaleBlue, 1.2));
  painter.drawLine(QPointF(150, Baseline), QPointF(Width - 1, Baseline));
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(PaleBlue.red(), PaleBlue.green(), PaleBlue.blue(), 190));
  std::mt19937 generator(1908);
  std::normal_distribution<double> sample(CurveCentre, CurveSpread);
  std::uniform_real_distribution<double> jitter(Baseline + 8, Baseline + 22);
  for (int i = 0; i < 60; ++i) {
    const double x = sample(generator);
    painter.drawEllipse(QPointF(x, jitter(generator)), 2, 2);
  }
}

void DrawWords(QPainter& painter, const QFont& base, const QString& name, const QString& version) {
  ThemeIcon("tellurix").paint(&painter, 36, 34, 52, 52);
  QFont font = base;
  font.setPixelSize(44);
  font.setWeight(QFont::Light);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QPointF(104, 76), name);
  font.setPixelSize(14);
  font.setWeight(QFont::Normal);
  painter.setFont(font);
  painter.setPen(PaleBlue);
  painter.drawText(QPointF(38, 112), "Statistics for medical research");
  painter.drawText(QPointF(38, Height - 22), "Version " + version);
}

}  // namespace

Opening::Opening(QString name, QString version)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      name_(std::move(name)),
      version_(std::move(version)) {
  setObjectName("Opening");
  setWindowTitle(name_);
  setAttribute(Qt::WA_TranslucentBackground);
  setFixedSize(Width, Height);
  setCursor(Qt::ArrowCursor);
}

void Opening::Run(int milliseconds) {
  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    move(screen->availableGeometry().center() - rect().center());
  }
  QEventLoop loop;
  connect(this, &Opening::Dismissed, &loop, &QEventLoop::quit);
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  show();
  loop.exec();
  hide();
}

void Opening::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  DrawBackground(painter);
  DrawCurve(painter);
  DrawWords(painter, font(), name_, version_);
}

void Opening::mousePressEvent(QMouseEvent*) { emit Dismissed(); }

void Opening::keyPressEvent(QKeyEvent*) { emit Dismissed(); }

void Opening::closeEvent(QCloseEvent* event) {
  event->accept();
  emit Dismissed();
}

}  // namespace tellurix
