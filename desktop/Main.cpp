// tellurix: the desktop.

#include <QApplication>
#include <QMessageBox>
#include <QStandardPaths>
#include <filesystem>

#include "desktop/MainWindow.h"
#include "shell/ProgramFolder.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("tellurix");
  QApplication::setApplicationDisplayName("Tellurix");
  const auto program = tellurix::FindProgramFolder();
  if (!program) {
    QMessageBox::critical(nullptr, "Tellurix", "Tellurix files are not properly installed, please re-install.");
    return 1;
  }
  tellurix::Paths paths = tellurix::ScriptPaths(*program);
  paths.user = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation).toStdString();
  std::error_code error;
  std::filesystem::create_directories(paths.user, error);
  const auto settings = paths.user / "Tellurix.ini";
  tellurix::MainWindow window(std::move(paths), settings);
  window.show();
  const QStringList arguments = QApplication::arguments();
  for (int i = 1; i < arguments.size(); ++i) window.OpenFile(arguments[i].toStdString());
  return QApplication::exec();
}
