#include "desktop/DesktopStart.h"

#include "desktop/MainWindow.h"
#include "desktop/Opening.h"

namespace tellurix {

void DesktopStart::SetTitle(const std::string& title) { window_.setWindowTitle(QString::fromStdString(title)); }

bool DesktopStart::OpenLinkedFile(const std::filesystem::path& file) { return window_.OpenFile(file); }

void DesktopStart::ShowOpening(const std::string& name, const std::string& version) {
  Opening(QString::fromStdString(name), QString::fromStdString(version)).Run();
}

void DesktopStart::ShowMainWindow() { window_.ShowAtSavedPlace(); }

}  // namespace tellurix
