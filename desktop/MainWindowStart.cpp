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

// The files last used stand before the menu's last entry, a line above them.
void MainWindow::ShowHistory() {
  QMenu* menu = menuBar()->actions().value(0)->menu();
  for (QAction* action : menu->actions()) {
    if (!action->objectName().startsWith("M_OpenList")) continue;
    menu->removeAction(action);
    action->deleteLater();  // it may be the one that was chosen
  }
  QAction* last = menu->actions().constLast();
  const auto rows = History(session_);
  if (!rows.empty()) menu->insertSeparator(last)->setObjectName("M_OpenList(-)");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    // Of the caption only the first "&" names an access key.
    auto* action = new QAction("&" + QString::fromStdString(rows[i].caption).mid(1).replace("&", "&&"), menu);
    action->setObjectName(QString("M_OpenList(%1)").arg(i));
    action->setStatusTip(QString::fromStdString(rows[i].path.string()));
    connect(action, &QAction::triggered, this, [this, file = rows[i].path] { OpenFromHistory(file); });
    menu->insertAction(last, action);
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
