// tellurix: the desktop.

#include <QApplication>
#include <QFileInfo>
#include <clocale>
#include <string>
#include <vector>

#include "desktop/DesktopStart.h"
#include "desktop/LinkServer.h"
#include "desktop/MainWindow.h"
#include "shell/Product.h"
#include "shell/ProgramFolder.h"

namespace {

// A second start hands its files to the first; false when there is none.
bool HandOver(const QStringList& files) {
  if (!tellurix::LinkServer::Send(files.isEmpty() ? QString() : "FileOpen " + files.front())) return false;
  for (const QString& file : files.mid(1)) tellurix::LinkServer::Send("FileOpen " + file);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  // Numbers are read and written by the regional settings alone, not by what the C library makes of the locale.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("tellurix");
  QApplication::setApplicationDisplayName(tellurix::ProductName);
  QApplication::setApplicationVersion(tellurix::ProductVersion);
  QApplication::setDesktopFileName("tellurix");
  QStringList files = QApplication::arguments().mid(1);
  for (QString& file : files) file = QFileInfo(file).absoluteFilePath();
  if (HandOver(files)) return 0;

  tellurix::Paths paths = tellurix::DesktopPaths();
  const auto settings = paths.user / "Tellurix.ini";
  tellurix::MainWindow window(std::move(paths), settings);
  window.DesktopSession().systemSymbols = tellurix::ReadSystemSymbols;
  tellurix::LinkServer link;
  link.Listen([&window](const QString& command) { window.ExecuteLinkCommand(command); });
  std::vector<std::string> commandLine;
  for (const QString& file : files) commandLine.push_back(file.toStdString());
  tellurix::DesktopStart start(window);
  if (!tellurix::StartUp(window.DesktopSession(), start, commandLine)) return 1;
  window.KeepUnsavedWork();
  return QApplication::exec();
}
