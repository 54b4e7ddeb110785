#include "desktop/MainWindow.h"

namespace tellurix {

MainWindow::MainWindow() { setWindowTitle("Tellurix"); }

}  // namespace tellurix
