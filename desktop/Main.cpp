// tellurix: the desktop.

#include <QApplication>

#include "desktop/MainWindow.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("Tellurix");
  tellurix::MainWindow window;
  window.show();
  return QApplication::exec();
}
