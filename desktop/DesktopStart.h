// The start of the desktop: what its windows do in the steps of StartUp.
#pragma once

#include "shell/StartUp.h"

namespace tellurix {

class MainWindow;

class DesktopStart : public FrontEnd {
 public:
  explicit DesktopStart(MainWindow& window) : window_(window) {}

  void SetTitle(const std::string& title) override;
  bool OpenLinkedFile(const std::filesystem::path& file) override;
  void ShowOpening(const std::string& name, const std::string& version) override;
  void ShowMainWindow() override;

 private:
  MainWindow& window_;
};

}  // namespace tellurix
