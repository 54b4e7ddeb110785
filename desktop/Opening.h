// The `Opening` screen: the program's name and version over a drawing, for a short time.
#pragma once

#include <QWidget>

namespace tellurix {

class Opening : public QWidget {
  Q_OBJECT

 public:
  static constexpr int Period = 800;  // milliseconds

  Opening(QString name, QString version);

  // Shows itself in the middle of the screen, with the events pumped, until a click, a key, or the end of the period.
  void Run(int milliseconds = Period);

 signals:
  void Dismissed();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  QString name_;
  QString version_;
};

}  // namespace tellurix
