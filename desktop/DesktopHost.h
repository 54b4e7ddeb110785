// The host with a person in front: prompts as windows.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "host/Host.h"
#include "host/Settings.h"

class QWidget;

namespace tellurix {

class FormDialog;
class HelpWindow;
class ProgressDialog;
class SelectionBar;

class DesktopHost : public Host {
 public:
  // `owner` is the main window; `bar` waits for selections; the functions switch what is enabled while it does, and
  // show a text in the status line. `settings` keep the places of the forms that have one.
  DesktopHost(QWidget& owner, SelectionBar& bar, std::function<void(bool)> setCommandsEnabled,
              std::function<void(std::string_view)> setStatus, std::function<void(int)> showHelp, Settings& settings);
  ~DesktopHost() override;

  Reply ShowMessage(const Message& message) override;
  bool RunForm(Form& form) override;
  void ShowForm(std::shared_ptr<Form> form) override;
  SelectionReply WaitForSelection(const SelectionRequest& request) override;
  std::optional<FileChoice> ChooseFile(const FileRequest& request) override;
  bool ShowProgress(const Progress& progress) override;
  void ShowHelp(int topic) override { showHelp_(topic); }
  void SetBusy(bool busy) override;
  bool IsBusy() const override { return busy_; }
  void SetCommandsEnabled(bool enabled) override { setCommandsEnabled_(enabled); }
  void SetStatus(std::string_view text) override { setStatus_(text); }
  void Beep() override;
  void SetClipboard(std::string_view text) override;
  std::string Clipboard() override;
  bool RunProgram(std::string_view commandLine) override;

  std::function<std::filesystem::path()> dataFolder;  // where a file dialog starts

  bool CloseForms();  // the modeless ones, from the last to the first; false when one of them stays open

 private:
  struct Modeless;
  QWidget* Front() const;  // the window that a dialog belongs to; null before any is shown
  void HideProgress();     // before a question: the next round of the calculation shows it again
  void KeepPlace(FormDialog& dialog, const Form& form);
  void SavePlace(const FormDialog& dialog, const Form& form);

  QWidget& owner_;
  SelectionBar& bar_;
  std::function<void(bool)> setCommandsEnabled_;
  std::function<void(std::string_view)> setStatus_;
  std::function<void(int)> showHelp_;
  Settings& settings_;
  std::unique_ptr<ProgressDialog> progress_;
  std::vector<Modeless> modeless_;
  bool busy_ = false;
};

}  // namespace tellurix
