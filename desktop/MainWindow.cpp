#include "desktop/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QMessageBox>
#include <QShortcut>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>
#include <utility>

#include "desktop/DesktopHost.h"
#include "desktop/DocumentWindows.h"
#include "desktop/HelpWindow.h"
#include "desktop/Icons.h"
#include "desktop/QtText.h"
#include "desktop/ReportView.h"
#include "desktop/SelectionBar.h"
#include "desktop/UnsavedWork.h"
#include "desktop/WindowPlace.h"
#include "desktop/WorksheetView.h"
#include "host/Script.h"
#include "numeric/Text.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/Dispatch.h"
#include "shell/DocumentFiles.h"
#include "shell/FileCommands.h"
#include "shell/LinkCommand.h"
#include "shell/Recovery.h"
#include "shell/Tools.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr const char* SavingScript = "Save Script As";

// The keys that people expect.
const std::map<std::string, QKeySequence>& Shortcuts() {
  static const std::map<std::string, QKeySequence> keys{
      {"M_New_Workbook", QKeySequence::New},
      {"M_Open", QKeySequence::Open},
      {"M_Save_Workbook", QKeySequence::Save},
      {"M_Report_Save", QKeySequence::Save},
      {"M_Print", QKeySequence::Print},
      {"M_Cut", QKeySequence::Cut},
      {"M_Copy", QKeySequence::Copy},
      {"M_Paste", QKeySequence::Paste},
      {"M_Undo", QKeySequence::Undo},
      {"M_Goto", QKeySequence(Qt::CTRL | Qt::Key_G)},
      {"M_Find", QKeySequence::Find},
      {"M_Replace", QKeySequence(Qt::CTRL | Qt::Key_H)},
      {"M_Report_Bold", QKeySequence::Bold},
      {"M_Report_Italic", QKeySequence::Italic},
      {"M_Report_Underline", QKeySequence::Underline},
  };
  return keys;
}

}  // namespace

MainWindow::MainWindow(Paths paths, const fs::path& settingsFile)
    : settings_(settingsFile),
      bar_(new SelectionBar(this)),
      area_(new QMdiArea(this)),
      status_(new QLabel(this)),
      host_(std::make_unique<DesktopHost>(
          *this, *bar_, [this](bool on) { SetCommandsEnabled(on); },
          [this](std::string_view text) { SetStatus(FromUtf8(text)); }, [this](int topic) { ShowHelp(topic); },
          settings_)),
      recorder_(std::make_unique<Recorder>(*host_, documents_)),
      session_(*recorder_, documents_, settings_, std::move(paths)) {
  setObjectName("MD1");
  setWindowTitle("Tellurix");
  setWindowIcon(ThemeIcon("tellurix"));
  resize(1180, 760);
  settings_.onProblem = [this](const std::string& problem) { statusBar()->showMessage(FromUtf8(problem)); };
  host_->dataFolder = [this] { return session_.paths.data; };
  area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  auto* centre = new QWidget(this);
  auto* layout = new QVBoxLayout(centre);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(bar_);
  layout->addWidget(area_, 1);
  setCentralWidget(centre);
  LoadSettings(session_);
  windowActions_ = MakeWindowActions(*this);
  MakeToolbar();
  ShowMenus();
  // Redo has no entry of its own.
  for (const QKeySequence& keys :
       {QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)}) {
    auto* redo = new QShortcut(keys, this);
    connect(redo, &QShortcut::activated, this, [this] {
      if (commandsEnabled_) windowActions_.at("M_Redo").run();
    });
  }
  status_->setObjectName("status");
  statusBar()->addWidget(status_, 1);
  SetStatus("Ready");
  qApp->installEventFilter(this);

  documents_.onWorkbookOpened = [this](Workbook& workbook) { ShowWorkbook(workbook); };
  documents_.onReportOpened = [this](Report& report) { ShowReport(report); };
  documents_.onWorkbookClosing = [this](Workbook& workbook) { recorder_->Closing(workbook); };
  documents_.onReportClosing = [this](Report& report) { recorder_->Closing(report); };
  documents_.onReportActivated = [this](Report& report) {
    for (QMdiSubWindow* child : area_->subWindowList()) {
      auto* form = qobject_cast<ReportForm*>(child);
      if (form && &form->Shown() == &report) area_->setActiveSubWindow(form);
    }
  };
  documents_.onWorkbookActivated = [this](Workbook& workbook) {
    for (QMdiSubWindow* child : area_->subWindowList()) {
      auto* form = qobject_cast<WorksheetForm*>(child);
      if (!form || &form->Book() != &workbook) continue;
      area_->setActiveSubWindow(form);
      // A command may have chosen another cell.
      form->View().Refresh();
      form->View().Grid()->ScrollTo(workbook.ActiveRow(), workbook.ActiveColumn());
    }
  };
  connect(area_, &QMdiArea::subWindowActivated, this, &MainWindow::ChildActivated);
  connect(bar_, &SelectionBar::WaitBegan, this, [this] {
    WorksheetForm* form = nullptr;
    for (QMdiSubWindow* child : area_->subWindowList()) {
      if (auto* sheet = qobject_cast<WorksheetForm*>(child)) {
        sheet->View().Refresh();
        sheet->View().SetSelecting(true);
        sheet->View().Grid()->SetRightButtonConfirms(session_.options.RClick);
        if (documents_.ActiveWorkbook() == &sheet->Book()) form = sheet;
      }
    }
    if (!form) return;
    area_->setActiveSubWindow(form);
    form->View().Grid()->setFocus();
  });
  connect(bar_, &SelectionBar::WaitEnded, this, [this] {
    for (QMdiSubWindow* child : area_->subWindowList()) {
      if (auto* sheet = qobject_cast<WorksheetForm*>(child)) sheet->View().SetSelecting(false);
    }
  });
}

MainWindow::~MainWindow() {
  documents_.onWorkbookOpened = nullptr;
  documents_.onReportOpened = nullptr;
  documents_.onWorkbookActivated = nullptr;
  documents_.onReportActivated = nullptr;
  disconnect(area_, nullptr, this, nullptr);
  // The windows show what the documents hold.
  qDeleteAll(area_->subWindowList());
}

// ---------------------------------------------------------------------------------------------------------------------
// The menu of the active window
// ---------------------------------------------------------------------------------------------------------------------

unsigned MainWindow::ActiveKind() const {
  if (ActiveWorksheet()) return InWorksheet;
  return ActiveReport() ? InReport : InMain;
}

// The menus of each kind of window are made once: what was chosen in them may still be running when they give way.
void MainWindow::ShowMenus() {
  shownKind_ = ActiveKind();
  menuBar()->clear();
  QList<QAction*>& heads = menus_[shownKind_];
  if (heads.empty()) {
    for (const MenuEntry& entry : CommandTable()) {
      if (entry.windows & shownKind_) AddEntry(entry, shownKind_);
    }
    AddTools();
    heads = menuBar()->actions();
    for (QAction* head : heads) {
      if (head->text() != "&Window") continue;
      connect(head->menu(), &QMenu::aboutToShow, this, [this, menu = head->menu()] { ShowOpenWindows(*menu); });
    }
  } else {
    menuBar()->addActions(heads);
  }
  ShowRecording();
  ShowHistory();
}

void MainWindow::MakeMenusAnew() {
  menus_.clear();
  ShowMenus();
}

void MainWindow::ShowRecording() {
  for (QAction* record : menuBar()->findChildren<QAction*>("M_Record")) record->setChecked(recorder_->IsRecording());
}

// The tools that are configured stand for those of the table; recording is the desktop's own.
void MainWindow::AddTools() {
  for (QAction* head : menuBar()->actions()) {
    if (head->text() != "&Tools") continue;
    QMenu* menu = head->menu();
    QAction* first = menu->actions().value(0);
    int number = 0;
    for (const Tool& tool : ConfiguredTools(session_)) {
      auto* action = new QAction(FromUtf8(tool.caption), menu);
      action->setObjectName(QString("M_Apps(%1)").arg(number++));
      action->setStatusTip(FromUtf8(tool.commandLine));
      connect(action, &QAction::triggered, this,
              [this, tool] { RunTool(session_, tool, [this] { RunEntry(*FindCommand("M_Apps(0)")); }); });
      menu->insertAction(first, action);
    }
    menu->insertSeparator(first);
    QAction* record = menu->addAction("&Record Script");
    record->setObjectName("M_Record");
    record->setCheckable(true);
    record->setStatusTip("Write down what is done, for playing it again");
    connect(record, &QAction::toggled, this, &MainWindow::Record);
  }
}

void MainWindow::AddEntry(const MenuEntry& entry, unsigned window) {
  if (entry.name.starts_with("M_Apps(")) return;
  QWidget* at = menuBar();
  auto captions = Split(entry.captions, '/');
  for (std::size_t i = 0; i + 1 < captions.size(); ++i) {
    QMenu* menu = nullptr;
    for (QAction* action : at->actions()) {
      if (action->menu() && action->text() == FromUtf8(captions[i])) menu = action->menu();
    }
    if (!menu) {
      menu = at == menuBar() ? menuBar()->addMenu(FromUtf8(captions[i]))
                             : static_cast<QMenu*>(at)->addMenu(FromUtf8(captions[i]));
      menu->setToolTipsVisible(true);
    }
    at = menu;
  }
  QAction* action = static_cast<QMenu*>(at)->addAction(FromUtf8(captions.back()));
  action->setObjectName(FromUtf8(entry.name));
  const auto own = windowActions_.find(entry.name);
  const bool works =
      (entry.active & window) && (entry.command || (own != windowActions_.end() && (own->second.windows & window)));
  action->setEnabled(works);
  action->setStatusTip(works ? FromUtf8(ReplaceAll(entry.path, "/", ", "))
                             : QString("This command is not available yet"));
  if (works) {
    if (const auto key = Shortcuts().find(entry.name); key != Shortcuts().end()) action->setShortcut(key->second);
  }
  connect(action, &QAction::triggered, this, [this, &entry] { RunEntry(entry); });
  if (works && own != windowActions_.end() && own->second.isReady) {
    connect(static_cast<QMenu*>(at), &QMenu::aboutToShow, action,
            [action, isReady = own->second.isReady] { action->setEnabled(isReady()); });
  }
}

void MainWindow::RunEntry(const MenuEntry& entry) {
  if (!commandsEnabled_ || session_.CommandRunning) return;
  session_.HelpContext = entry.helpContext;
  if (const auto action = windowActions_.find(entry.name); action != windowActions_.end()) return action->second.run();
  if (!entry.command) return;
  WorksheetForm* sheet = ActiveWorksheet();
  if (sheet && !sheet->View().CommitEdit()) return;
  if (ReportForm* report = ActiveReport()) report->View().Commit();
  recorder_->NoteRun(entry.path);
  RunCommand(session_, entry);
  recorder_->NoteRunEnded();
  CommandEnded();
}

void MainWindow::CommandEnded() {
  // Commands set marks and sheets, of which workbooks do not tell.
  for (QMdiSubWindow* child : area_->subWindowList()) {
    if (auto* sheet = qobject_cast<WorksheetForm*>(child)) sheet->View().Refresh();
    if (auto* report = qobject_cast<ReportForm*>(child)) report->View().setReadOnly(report->State().readOnly);
    if (auto* window = qobject_cast<DocumentWindow*>(child)) window->UpdateTitle();
  }
  ShowHistory();
  ForgetCopies();
  const QStringList waiting = std::exchange(linkCommands_, {});
  for (const QString& command : waiting) ExecuteLinkCommand(command);
  if (!closing_) return;
  QWidget* window = closing_;
  closing_ = nullptr;
  QTimer::singleShot(0, window, [window] { window->close(); });
}

void MainWindow::NewWorkbook() { RunEntry(*FindCommand("M_New_Workbook")); }

void MainWindow::NewReport() { RunEntry(*FindCommand("M_New_Report")); }

void MainWindow::SetupToolsMenu() {
  SetupTools(session_);
  MakeMenusAnew();
}

void MainWindow::Refuse(const QString& reason) { ShowMessage(session_, reason.toStdString(), WarningIcon); }

// ---------------------------------------------------------------------------------------------------------------------
// Child windows
// ---------------------------------------------------------------------------------------------------------------------

DocumentWindow* MainWindow::ActiveDocument() const { return qobject_cast<DocumentWindow*>(area_->currentSubWindow()); }

WorksheetForm* MainWindow::ActiveWorksheet() const { return qobject_cast<WorksheetForm*>(area_->currentSubWindow()); }

ReportForm* MainWindow::ActiveReport() const { return qobject_cast<ReportForm*>(area_->currentSubWindow()); }

void MainWindow::ShowWorkbook(Workbook& workbook) {
  auto* form = new WorksheetForm(*this, workbook);
  area_->addSubWindow(form);
  form->show();
  recorder_->Opened(workbook);
}

void MainWindow::ShowReport(Report& report) {
  auto* form = new ReportForm(*this, report);
  area_->addSubWindow(form);
  form->show();
  recorder_->Opened(report);
}

void MainWindow::ChildActivated(QMdiSubWindow* child) {
  // A command's own look at the active workbook must not turn while it waits for a selection elsewhere.
  if (auto* sheet = qobject_cast<WorksheetForm*>(child)) {
    documents_.ActivateWorkbook(documents_.IndexOf(sheet->Book()));
  } else if (auto* report = qobject_cast<ReportForm*>(child)) {
    documents_.ActivateReport(documents_.IndexOf(report->Shown()));
  }
  if (ActiveKind() != shownKind_) ShowMenus();
}

void MainWindow::Forget(DocumentWindow& window) {
  if (closing_ == &window) closing_ = nullptr;
}

bool MainWindow::OpenFile(const fs::path& file) {
  session_.CommandRunning = true;  // reading pumps events
  const bool opened = tellurix::OpenFile(session_, file);
  session_.CommandRunning = false;
  CommandEnded();
  return opened;
}

void MainWindow::ExecuteLinkCommand(const QString& text) {
  if (session_.CommandRunning) {
    linkCommands_ << text;
    return;
  }
  tellurix::ExecuteLinkCommand(session_, text.toStdString(), [this](const fs::path& file) { return OpenFile(file); });
  if (!isVisible()) return;  // it starts
  if (isMinimized()) showNormal();
  raise();
  activateWindow();
}

SaveFunctions MainWindow::Savers() { return SaversOf(session_); }

// ---------------------------------------------------------------------------------------------------------------------
// Toolbar, help, recording
// ---------------------------------------------------------------------------------------------------------------------

void MainWindow::MakeToolbar() {
  auto* bar = addToolBar("Toolbar");
  bar->setObjectName("Toolbar1");
  bar->setMovable(false);
  const struct {
    const char* key;
    const char* icon;
  } buttons[] = {{"New", "document-new"},
                 {"Open", "document-open"},
                 {"Save", "document-save"},
                 {"Print", "document-print"},
                 {"", ""},
                 {"Cut", "edit-cut"},
                 {"Copy", "edit-copy"},
                 {"Paste", "edit-paste"},
                 {"Undo", "edit-undo"},
                 {"", ""},
                 {"Calculator", "accessories-calculator"},
                 {"Help", "help-contents"}};
  for (const auto& button : buttons) {
    const QString key = button.key;
    if (key.isEmpty()) {
      bar->addSeparator();
      continue;
    }
    QAction* action = bar->addAction(ThemeIcon(button.icon), key);
    action->setData(key);
    toolActions_[key] = action;
    connect(action, &QAction::triggered, this, [this, key] { ToolPressed(key); });
  }
}

void MainWindow::ToolPressed(const QString& key) {
  if (key == "New") return NewWorkbook();
  if (key == "Open") return RunEntry(*FindCommand("M_Open"));
  if (key == "Help") return HelpInFront();
  if (key == "Calculator") return RunEntry(*FindCommand("M_Apps(0)"));
  if (key == "Save") {
    if (ActiveDocument()) RunEntry(*FindCommand(ActiveWorksheet() ? "M_Save_Workbook" : "M_Report_Save"));
    return;
  }
  const auto action = windowActions_.find("M_" + key.toStdString());
  if (action != windowActions_.end() && (action->second.windows & ActiveKind())) action->second.run();
}

// F1 anywhere but in a dialog, which knows its own topic.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1 &&
      !QApplication::activeModalWidget()) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (widget && widget->window() == this) {
      HelpInFront();
      return true;
    }
  }
  return QMainWindow::eventFilter(watched, event);
}

// Over a report the topic of the result under the caret, else that of the command last chosen.
void MainWindow::HelpInFront() {
  ReportForm* report = ActiveReport();
  ShowHelp(report ? report->View().HelpTopicAtCaret() : session_.HelpContext);
}

void MainWindow::ShowHelp(int topic) {
  if (!help_) help_ = std::make_unique<HelpWindow>(session_.paths.help);
  help_->ShowTopic(topic);
}

// A script starts on default settings: what differs here comes first in a recording.
void MainWindow::NoteSettings() {
  for (const SettingKey& key : SettingKeys()) {
    if (key.section != "Analyses" && key.section != "Graphics" && key.section != "Chart") continue;
    const std::string value = settings_.GetIniValue(key.section, key.key, key.defaultValue);
    if (value != key.defaultValue) recorder_->NoteSetting(key.section, key.key, value);
  }
}

void MainWindow::Record(bool on) {
  if (on == recorder_->IsRecording()) return;
  if (on) {
    recorder_->Start();
    NoteSettings();
    return SetStatus("Recording");
  }
  recorder_->Stop();
  SetStatus("Ready");
  SaveScript();
}

// What was recorded is given up by an answer alone.
void MainWindow::SaveScript() {
  for (;;) {
    const auto file = host_->ChooseFile({.title = SavingScript,
                                         .filter = "Scripts (*.tlx)|*.tlx",
                                         .defaultExtension = "tlx",
                                         .suggestedName = "script.tlx",
                                         .save = true});
    std::string problem;
    if (file && WriteWholeFile(file->path, recorder_->Text(), problem)) return;
    if (file) {
      ShowMessage(session_, problem, WarningIcon, SavingScript);
    } else if (ShowMessage(session_, "Discard what was recorded?", YesNo | QuestionIcon, SavingScript) == Reply::Yes) {
      return;
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Waiting and closing
// ---------------------------------------------------------------------------------------------------------------------

void MainWindow::SetStatus(const QString& text) {
  statusBar()->clearMessage();
  status_->setText(text);
  status_->repaint();  // what it tells of may keep the program from painting for a while
}

void MainWindow::SetCommandsEnabled(bool enabled) {
  commandsEnabled_ = enabled;
  menuBar()->setEnabled(enabled);
  for (const auto& [key, action] : toolActions_) {
    action->setEnabled(enabled || key == "Help");
  }
}

bool MainWindow::StopRunningCommand(QWidget& closing) {
  if (!session_.CommandRunning) return false;
  if (session_.CalculationRunning && ShowMessage(session_, "A calculation is running, are you sure you want to quit?",
                                                 YesNo | QuestionIcon, "Tellurix Close-Down") != Reply::Yes) {
    return true;
  }
  closing_ = &closing;
  session_.data.Batch = false;
  session_.CancelRequested = true;
  bar_->Cancel();
  return true;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (StopRunningCommand(*this)) return;
  for (QMdiSubWindow* child : area_->subWindowList()) {
    if (auto* sheet = qobject_cast<WorksheetForm*>(child)) sheet->View().CommitEdit();
    if (auto* report = qobject_cast<ReportForm*>(child)) report->View().Commit();
  }
  // A calculator may write its lines into a report, which then is asked about.
  if (!host_->CloseForms() || !AskBeforeClosing(session_, Savers())) return;
  DeleteTemporaryFiles(session_.paths);
  SaveFormPlace(*this, settings_, "MainWindow");
  SaveSettings(session_);
  if (recovery_) recovery_->Clear();
  help_.reset();
  event->accept();
}

}  // namespace tellurix
