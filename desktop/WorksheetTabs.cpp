#include "desktop/WorksheetTabs.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>
#include <QToolButton>
#include <utility>

#include "desktop/GridEditing.h"

namespace tellurix {

namespace {

// A bar that asks for no more room than its tabs need, so that "+" stands beside the last one.
class SheetBar : public QTabBar {
 public:
  using QTabBar::QTabBar;
  QSize minimumSizeHint() const override { return QTabBar::minimumSizeHint().boundedTo(TabsSize()); }
  QSize sizeHint() const override { return TabsSize(); }

 private:
  QSize TabsSize() const {
    QSize size(0, QTabBar::sizeHint().height());
    for (int i = 0; i < count(); ++i) size.rwidth() += tabSizeHint(i).width();
    return size;
  }
};

}  // namespace

WorksheetTabs::WorksheetTabs(Workbook& workbook, QWidget* parent)
    : QWidget(parent), workbook_(workbook), bar_(new SheetBar(this)), add_(new QToolButton(this)) {
  bar_->setShape(QTabBar::RoundedSouth);
  bar_->setMovable(true);
  bar_->setExpanding(false);
  bar_->setDrawBase(false);
  bar_->setUsesScrollButtons(true);
  bar_->setElideMode(Qt::ElideNone);
  bar_->setFocusPolicy(Qt::NoFocus);
  bar_->setContextMenuPolicy(Qt::CustomContextMenu);
  bar_->installEventFilter(this);
  add_->setText("+");
  add_->setAutoRaise(true);
  add_->setFocusPolicy(Qt::NoFocus);
  add_->setToolTip(tr("Insert a sheet"));
  add_->setAccessibleName(tr("Insert a sheet"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(2);
  row->addWidget(bar_);
  row->addWidget(add_);
  row->addStretch(1);

  connect(bar_, &QTabBar::currentChanged, this, [this](int index) {
    // While tabs are dragged their order is not that of the sheets.
    if (refreshing_ || moved_ || index < 0 || index + 1 == workbook_.Sheet()) return;
    emit AboutToChange();
    workbook_.Sheet(index + 1);
    emit SheetChosen();
  });
  connect(bar_, &QTabBar::tabMoved, this, [this] { moved_ = !refreshing_; });
  connect(bar_, &QTabBar::tabBarDoubleClicked, this, [this](int index) {
    if (index >= 0) Rename(index + 1);
  });
  connect(bar_, &QWidget::customContextMenuRequested, this, &WorksheetTabs::ShowMenu);
  connect(add_, &QToolButton::clicked, this, &WorksheetTabs::Add);
  Refresh();
}

void WorksheetTabs::SetEnabledChanges(bool on) {
  FinishRename(false);
  changes_ = on;
  bar_->setMovable(on);
  add_->setEnabled(on);
}

void WorksheetTabs::Refresh() {
  refreshing_ = true;
  const int count = workbook_.SheetCount();
  while (bar_->count() > count) bar_->removeTab(bar_->count() - 1);
  for (int i = 0; i < count; ++i) {
    // An ampersand would mark an access key.
    const QString name = QString::fromStdString(workbook_.SheetName(i + 1)).replace(u'&', "&&");
    if (i >= bar_->count()) {
      bar_->addTab(name);
    } else if (bar_->tabText(i) != name) {
      bar_->setTabText(i, name);
    }
  }
  bar_->setCurrentIndex(workbook_.Sheet() - 1);
  refreshing_ = false;
}

void WorksheetTabs::Add() {
  if (!changes_) return;
  emit AboutToChange();
  {
    const GridStep step(workbook_, "Add sheet");
    const int after = workbook_.Sheet();
    const int added = workbook_.AddSheet();
    workbook_.MoveSheet(added, after + 1);
  }
  Refresh();
  emit SheetChosen();
}

void WorksheetTabs::Delete(int sheet) {
  if (!changes_) return;
  emit AboutToChange();
  if (!workbook_.DeleteSheet(sheet)) {
    emit Refused(workbook_.SheetCount() > 1 ? tr("The sheet %1 is locked and cannot be deleted.")
                                                  .arg(QString::fromStdString(workbook_.SheetName(sheet)))
                                            : tr("The only sheet of a workbook cannot be deleted."));
    return;
  }
  Refresh();
  emit SheetChosen();
}

void WorksheetTabs::Rename(int sheet) {
  if (!changes_ || sheet < 1 || sheet > workbook_.SheetCount()) return;
  emit AboutToChange();
  FinishRename(true);
  renamed_ = sheet;
  editor_ = new QLineEdit(QString::fromStdString(workbook_.SheetName(sheet)), bar_);
  editor_->setMaxLength(static_cast<int>(Workbook::MaxSheetName));
  editor_->setAlignment(Qt::AlignCenter);
  editor_->installEventFilter(this);
  QRect place = bar_->tabRect(sheet - 1);
  place.setWidth(std::max(place.width(), 80));
  editor_->setGeometry(place);
  editor_->selectAll();
  editor_->show();
  editor_->setFocus(Qt::OtherFocusReason);
}

void WorksheetTabs::FinishRename(bool take) {
  const int sheet = std::exchange(renamed_, 0);
  if (sheet == 0 || !editor_) return;
  const QString name = editor_->text().trimmed();
  editor_->hide();
  editor_->deleteLater();
  editor_ = nullptr;
  if (!take || name.toStdString() == workbook_.SheetName(sheet)) return;
  if (!workbook_.RenameSheet(sheet, name.toStdString())) {
    emit Refused(name.isEmpty() ? tr("A sheet needs a name.") : tr("There is a sheet named \"%1\" already.").arg(name));
    return;
  }
  Refresh();
  emit SheetChosen();
}

// A drag moves a sheet once, when it ends.
void WorksheetTabs::FinishMove() {
  if (!std::exchange(moved_, false)) return;
  emit AboutToChange();
  workbook_.MoveSheet(pressed_ + 1, bar_->currentIndex() + 1);
  Refresh();
  if (bar_->currentIndex() + 1 != workbook_.Sheet()) bar_->setCurrentIndex(workbook_.Sheet() - 1);
  emit SheetChosen();
}

void WorksheetTabs::ShowMenu(const QPoint& position) {
  const int index = bar_->tabAt(position);
  if (!changes_ || index < 0) return;
  bar_->setCurrentIndex(index);
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(tr("&Insert Sheet"), this, &WorksheetTabs::Add);
  menu->addAction(tr("&Rename..."), this, [this, index] { Rename(index + 1); });
  menu->addAction(tr("&Delete Sheet"), this, [this, index] { Delete(index + 1); })
      ->setEnabled(workbook_.SheetCount() > 1);
  menu->popup(bar_->mapToGlobal(position));
}

bool WorksheetTabs::eventFilter(QObject* watched, QEvent* event) {
  if (watched == bar_ && event->type() == QEvent::MouseButtonPress) {
    pressed_ = bar_->tabAt(static_cast<QMouseEvent*>(event)->position().toPoint());
  } else if (watched == bar_ && event->type() == QEvent::MouseButtonRelease) {
    // The bar ends its own drag first.
    QTimer::singleShot(0, this, &WorksheetTabs::FinishMove);
  } else if (watched == editor_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool takes = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab;
    if (takes || key == Qt::Key_Escape) {
      FinishRename(takes);
      emit SheetChosen();
      return true;
    }
  } else if (watched == editor_ && event->type() == QEvent::FocusOut) {
    if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) FinishRename(true);
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace tellurix
