// MD1, the main window: the workspace with its child windows, the menu of the active one, the toolbar, the bar that
// waits for selections, and the close-down.
#pragma once

#include <QList>
#include <QMainWindow>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "desktop/WindowActions.h"
#include "session/Session.h"
#include "shell/CloseDown.h"
#include "shell/CommandTable.h"
#include "shell/IniSettings.h"
#include "shell/LinkCommand.h"
#include "shell/OpenDocuments.h"
#include "shell/Recorder.h"

class QLabel;
class QMdiArea;
class QMdiSubWindow;

namespace tellurix {

class DesktopHost;
class DocumentWindow;
class HelpWindow;
class Recovery;
class ReportForm;
class SelectionBar;
class UnsavedWork;
class WorksheetForm;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  // `settingsFile` empty: settings live in memory only.
  MainWindow(Paths paths, const std::filesystem::path& settingsFile);
  ~MainWindow() override;

  Session& DesktopSession() { return session_; }
  OpenDocuments& OpenedDocuments() { return documents_; }
  SelectionBar& Bar() { return *bar_; }
  void Record(bool on);  // switching off asks where to save the script
  Recorder& DesktopRecorder() { return *recorder_; }

  // Opens a file by its extension; false after a message.
  bool OpenFile(const std::filesystem::path& file);

  // Opens what a command line or a link command names; a temporary copy stays unsaved. False after a message.

  // A link command from outside: opens the file that it names and comes to the front. While a command runs it
  // waits for its end.
  void ExecuteLinkCommand(const QString& text);

  // --- at the start ---
  void ShowAtSavedPlace();
  // Offers what an earlier run could not save, and keeps copies of unsaved documents from now on.
  void KeepUnsavedWork();

  // Runs a menu entry, whatever stands behind it.
  void RunEntry(const MenuEntry& entry);

  // The active child windows; null when the active window is of the other kind or none is open.
  DocumentWindow* ActiveDocument() const;
  WorksheetForm* ActiveWorksheet() const;
  ReportForm* ActiveReport() const;

  // --- for the child windows ---
  // A command runs: closing waits until it has been taken back. False when nothing runs.
  bool StopRunningCommand(QWidget& closing);
  SaveFunctions Savers();
  void ShowHelp(int topic);
  void Refuse(const QString& reason);   // a message box that says why something cannot be done
  void Forget(DocumentWindow& window);  // it is closing
  void ForgetCopies();                  // of documents that were saved or closed

  // --- for the menu's entries ---
  QString Printer;  // chosen in Printer Setup; empty: the system's
  QMdiArea& Area() { return *area_; }
  void NewWorkbook();
  void NewReport();
  void SetupToolsMenu();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void MakeToolbar();
  void ShowMenus();
  void MakeMenusAnew();  // when the tools have changed
  void ShowRecording();
  void AddEntry(const MenuEntry& entry, unsigned window);
  void AddTools();
  void ShowHistory();
  void OpenFromHistory(const std::filesystem::path& file);
  void ShowOpenWindows(QMenu& menu);
  unsigned ActiveKind() const;
  void ShowWorkbook(Workbook& workbook);
  void ShowReport(Report& report);
  void ChildActivated(QMdiSubWindow* child);
  void SetCommandsEnabled(bool enabled);
  void SetStatus(const QString& text);
  void CommandEnded();
  void HelpInFront();
  void NoteSettings();
  void SaveScript();
  void ToolPressed(const QString& key);

  IniSettings settings_;
  OpenDocuments documents_;
  SelectionBar* bar_;
  QMdiArea* area_;
  QLabel* status_;  // stays beneath the tips of the menu, which come and go
  std::unique_ptr<DesktopHost> host_;
  std::unique_ptr<Recorder> recorder_;
  Session session_;
  std::unique_ptr<HelpWindow> help_;
  std::unique_ptr<Recovery> recovery_;  // null in a session without a user's folder
  std::unique_ptr<UnsavedWork> unsavedWork_;

  WindowActions windowActions_;
  std::map<QString, QAction*> toolActions_;    // by the button's key
  std::map<unsigned, QList<QAction*>> menus_;  // the heads, by the kind of window
  unsigned shownKind_ = 0;
  bool commandsEnabled_ = true;
  QStringList linkCommands_;    // come in while a command ran
  QWidget* closing_ = nullptr;  // closes once the running command has ended
};

}  // namespace tellurix
