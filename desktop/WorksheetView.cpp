#include "desktop/WorksheetView.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>

namespace tellurix {

WorksheetView::WorksheetView(Workbook& workbook, const Regional& regional, QWidget* parent)
    : QWidget(parent),
      looks_(workbook),
      grid_(new GridView(workbook, regional, this)),
      tabs_(new WorksheetTabs(workbook, this)),
      nameBox_(new QLineEdit(this)),
      formulaLine_(new QLineEdit(this)) {
  nameBox_->setObjectName("nameBox");
  nameBox_->setAccessibleName(tr("Active cell"));
  nameBox_->setToolTip(tr("The active cell or range; type one to go there"));
  nameBox_->setFixedWidth(nameBox_->fontMetrics().horizontalAdvance("XFD1048576") + 32);
  nameBox_->installEventFilter(this);
  formulaLine_->setObjectName("formulaLine");
  formulaLine_->setAccessibleName(tr("Contents of the active cell"));
  grid_->setFrameShape(QFrame::NoFrame);
  grid_->setFont(DefaultFont(workbook));
  grid_->SetLooks(&looks_);
  grid_->SetFormulaLine(formulaLine_);
  // Tab belongs to the cells, and a window that is turned to by keys has the focus in them.
  for (QWidget* line : {static_cast<QWidget*>(nameBox_), static_cast<QWidget*>(formulaLine_)}) {
    line->setFocusPolicy(Qt::ClickFocus);
  }
  listener_ = workbook.AddListener([this](const WorkbookChange& change) {
    if (change.sheet == 0) FollowSettings();
  });

  auto* top = new QHBoxLayout;
  top->setContentsMargins(2, 2, 2, 2);
  top->setSpacing(4);
  top->addWidget(nameBox_);
  top->addWidget(formulaLine_, 1);
  auto* all = new QVBoxLayout(this);
  all->setContentsMargins(0, 0, 0, 0);
  all->setSpacing(0);
  all->addLayout(top);
  all->addWidget(grid_, 1);
  all->addWidget(tabs_);
  setFocusProxy(grid_);

  connect(grid_, &GridView::SelectionChanged, nameBox_, [this](const QString& text) {
    if (!nameBox_->hasFocus()) {
      nameBox_->setText(text);
      nameBox_->setCursorPosition(0);
    }
  });
  nameBox_->setText(grid_->SelectionText());
  connect(grid_, &GridView::SheetChanged, tabs_, &WorksheetTabs::Refresh);
  connect(tabs_, &WorksheetTabs::AboutToChange, grid_, [this] { grid_->CommitEdit(); });
  connect(tabs_, &WorksheetTabs::SheetChosen, grid_, [this] {
    grid_->Refresh();
    grid_->setFocus();
  });
  connect(grid_, &GridView::Refused, this, &WorksheetView::Refused);
  connect(tabs_, &WorksheetTabs::Refused, this, &WorksheetView::Refused);
}

WorksheetView::~WorksheetView() {
  Book().RemoveListener(listener_);
  delete grid_;  // before what it paints by
}

void WorksheetView::FollowSettings() {
  const QFont font = DefaultFont(Book());
  if (font != grid_->font()) grid_->setFont(font);
}

void WorksheetView::SetSelecting(bool on) {
  grid_->SetSelecting(on);
  tabs_->SetEnabledChanges(!on);
  formulaLine_->setReadOnly(on);
}

void WorksheetView::Refresh() {
  grid_->Refresh();
  tabs_->Refresh();
}

bool WorksheetView::eventFilter(QObject* watched, QEvent* event) {
  if (watched == nameBox_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      const QString text = nameBox_->text();
      if (grid_->GoTo(text)) {
        grid_->setFocus();
      } else {
        emit Refused(tr("\"%1\" is no cell or range of this workbook.").arg(text));
        nameBox_->selectAll();
        return true;
      }
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
      grid_->setFocus();
      nameBox_->setText(grid_->SelectionText());
      return true;
    }
  } else if (watched == nameBox_ && event->type() == QEvent::FocusOut) {
    nameBox_->setText(grid_->SelectionText());
    nameBox_->setCursorPosition(0);
  } else if (watched == nameBox_ && event->type() == QEvent::FocusIn) {
    grid_->CommitEdit();
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace tellurix
