// MD1 from one session to the next: its place, the files last used, unsaved work.
#include <QAction>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>

#include "desktop/DocumentWindows.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportView.h"
#include "desktop/UnsavedWork.h"
#include "desktop/WindowPlace.h"
#include "numeric/Text.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/History.h"
#include "shell/Recovery.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

// Of the caption "&1 ..." only the first "&" names an access key.
QString WithAccessKey(const QString& caption) { return "&" + QString(caption.mid(1)).replace("&", "&&"); }

// Those of a list that changes, by how their names begin.
void RemoveEntries(QMenu& menu, const char* names) {
  for (QAction* action : menu.actions()) {
    if (!action->objectName().startsWith(names)) continue;
    menu.removeAction(action);
    action->deleteLater();  // it may be the one that was chosen
  }
}

}  // namespace

void MainWindow::ShowAtSavedPlace() {
  if (!LoadFormPlace(*this, settings_, "MainWindow")) {
    const QRect free = screen()->availableGeometry();
    resize(size().boundedTo(free.size()));
    move(free.center() - rect().center());
  }
  MakeMenusAnew();  // the first start has written the tools and the files last used
  show();
  if (!settings_.Damage().empty()) ShowMessage(session_, settings_.Damage(), WarningIcon);
}

void MainWindow::KeepUnsavedWork() {
  const fs::path folder = session_.paths.user / "Recovery";
  recovery_ = std::make_unique<Recovery>(folder);
  const auto commit = [this] {
    for (QMdiSubWindow* child : area_->subWindowList()) {
      if (auto* report = qobject_cast<ReportForm*>(child)) report->View().Commit();
    }
  };
  unsavedWork_ = std::make_unique<UnsavedWork>(*recovery_, documents_, commit, [this](const std::string& problem) {
    statusBar()->showMessage(QString::fromStdString(problem));
  });
  unsavedWork_->WatchSignals([this] {
    SaveFormPlace(*this, settings_, "MainWindow");
    SaveSettings(session_);
  });
  OfferUnsavedWork(session_, documents_, *recovery_, folder);
}

void MainWindow::ForgetCopies() {
  if (recovery_) recovery_->Tidy(documents_);
}

// The files last used stand before the menu's last entry, between lines.
void MainWindow::ShowHistory() {
  QMenu* menu = menuBar()->actions().value(0)->menu();
  RemoveEntries(*menu, "M_OpenList");
  QAction* last = menu->actions().constLast();
  const auto rows = History(session_);
  const auto addLine = [&] { menu->insertSeparator(last)->setObjectName("M_OpenList(-)"); };
  if (!rows.empty()) addLine();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    auto* action = new QAction(WithAccessKey(QString::fromStdString(rows[i].caption)), menu);
    action->setObjectName(QString("M_OpenList(%1)").arg(i));
    action->setStatusTip(QString::fromStdString(rows[i].path.string()));
    connect(action, &QAction::triggered, this, [this, file = rows[i].path] { OpenFromHistory(file); });
    menu->insertAction(last, action);
  }
  if (!rows.empty()) addLine();
}

// The open windows stand beneath the other entries of Window, in the order of their opening.
void MainWindow::ShowOpenWindows(QMenu& menu) {
  RemoveEntries(menu, "M_WindowList");
  const auto windows = area_->subWindowList();
  if (!windows.empty()) menu.addSeparator()->setObjectName("M_WindowList(-)");
  for (qsizetype i = 0; i < windows.size(); ++i) {
    const QString caption = QString::number(i + 1) + " " + windows[i]->windowTitle();
    QAction* action = menu.addAction(i < 9 ? WithAccessKey("&" + caption) : QString(caption).replace("&", "&&"));
    action->setObjectName(QString("M_WindowList(%1)").arg(i));
    action->setCheckable(true);
    action->setChecked(windows[i] == area_->currentSubWindow());
    connect(action, &QAction::triggered, windows[i],
            [this, window = windows[i]] { area_->setActiveSubWindow(window); });
  }
}

void MainWindow::OpenFromHistory(const fs::path& file) {
  if (!commandsEnabled_ || session_.CommandRunning) return;
  std::error_code error;
  if (fs::exists(file, error)) {
    OpenFile(file);
    return;
  }
  ShowMessage(session_, UpperCase(file.string()) + " is not available", WarningIcon, "File Open");
  RemoveFromHistory(session_, file);
  ShowHistory();
}

}  // namespace tellurix
