// tellurix: the desktop.

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QStandardPaths>
#include <filesystem>

#include "desktop/LinkServer.h"
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
  // A second start hands its file to the first.
  QStringList files = QApplication::arguments().mid(1);
  for (QString& file : files) file = QFileInfo(file).absoluteFilePath();
  if (tellurix::LinkServer::Send(files.isEmpty() ? QString() : "FileOpen " + files.front())) {
    for (const QString& file : files.mid(1)) tellurix::LinkServer::Send("FileOpen " + file);
    return 0;
  }

  tellurix::Paths paths = tellurix::ScriptPaths(*program);
  paths.user = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation).toStdString();
  std::error_code error;
  std::filesystem::create_directories(paths.user, error);
  const auto settings = paths.user / "Tellurix.ini";
  tellurix::MainWindow window(std::move(paths), settings);
  window.show();
  tellurix::LinkServer link;
  link.Listen([&window](const QString& command) { window.ExecuteLinkCommand(command); });
  for (const QString& file : files) window.ExecuteLinkCommand(file);
  return QApplication::exec();
}
