// MD1, the main window.
#pragma once

#include <QMainWindow>

namespace tellurix {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();
};

}  // namespace tellurix
