// The grid as it is made, and as it follows its workbook.

#include "desktop/GridView.h"

#include <QEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>
#include <QTimerEvent>

namespace tellurix {

namespace {

constexpr int LongestEdit = 100'000;  // more than a cell takes, so that nothing is cut off unseen

}  // namespace

GridView::GridView(Workbook& workbook, const Regional& regional, QWidget* parent)
    : QAbstractScrollArea(parent),
      workbook_(workbook),
      regional_(regional),
      geometry_{GridAxis(GridStore::MaxRows, 20), GridAxis(GridStore::MaxColumns, 80)},
      editor_(new QLineEdit(viewport())),
      headingEditor_(new QLineEdit(viewport())) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_InputMethodEnabled);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  viewport()->setMouseTracking(true);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName(tr("Worksheet"));

  for (QLineEdit* line : {editor_, headingEditor_}) {
    line->hide();
    line->setFrame(false);
    line->setMaxLength(LongestEdit);
    line->installEventFilter(this);
  }
  editor_->setObjectName("cellEditor");
  headingEditor_->setObjectName("headingEditor");
  headingEditor_->setAlignment(Qt::AlignCenter);
  connect(editor_, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (!editing_) return;
    if (line_ && line_->text() != text) line_->setText(text);
    PlaceEditor();
  });
  // Released bars may have to grow again.
  for (QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()}) {
    connect(bar, &QScrollBar::sliderReleased, this, &GridView::UpdateScrollBars);
  }

  MeasureFont();
  sheet_ = workbook_.Sheet();
  sheetName_ = workbook_.SheetName(sheet_);
  LoadGeometry();
  listener_ = workbook_.AddListener([this](const WorkbookChange& change) { OnChange(change); });
  MarksChanged();
}

GridView::~GridView() { workbook_.RemoveListener(listener_); }

void GridView::SetLooks(GridLooks* looks) {
  looks_ = looks;
  otherSheets_.clear();
  geometry_.rows.Reset();
  LoadGeometry();
  viewport()->update();
}

void GridView::SetSelecting(bool on) {
  if (on) CommitEdit();
  selecting_ = on;
  viewport()->update();
}

void GridView::timerEvent(QTimerEvent* event) {
  if (event->timerId() == summaryTimer_.timerId()) {
    GoOnSummarizing();
  } else if (event->timerId() == scrollTimer_.timerId()) {
    ScrollOnByDrag();
  } else {
    QAbstractScrollArea::timerEvent(event);
  }
}

// --- changes of the workbook ---

void GridView::OnChange(const WorkbookChange& change) {
  ScheduleUpkeep();
  if (change.kind == WorkbookChange::Kind::Sheets) {
    Refresh();
    emit SheetChanged();
    emit Modified();
    return;
  }
  if (change.sheet == 0) {  // settings of the workbook
    LoadGeometry();
    viewport()->update();
  }
  if (change.sheet == sheet_ && change.sheet == workbook_.Sheet()) {
    ShowChange(change);
    ResetSummary();
  }
  emit Modified();
}

// Of the sheet that shows.
void GridView::ShowChange(const WorkbookChange& change) {
  switch (change.kind) {
    case WorkbookChange::Kind::Widths:
      LoadWidths(change.range.firstColumn, change.range.lastColumn);
      UpdateLayout();
      viewport()->update();
      break;
    case WorkbookChange::Kind::Cells:
      ShowChangedCells(change.range);
      break;
    case WorkbookChange::Kind::Looks:
      viewport()->update();
      break;
    default:
      looks_ ? LoadGeometry() : UpdateLayout();
      viewport()->update();
      break;
  }
}

void GridView::ShowChangedCells(const CellRange& range) {
  // With columns or rows their sizes and headings have moved.
  if (range.firstRow == 0) LoadWidths(range.firstColumn, range.lastColumn);
  if (range.firstColumn == 0 && looks_) LoadGeometry();
  if (range.firstRow == 0 || range.firstColumn == 0) {
    UpdateLayout();
    viewport()->update();
    return;
  }
  const auto [first, end] = SpansWithin(rows_, range.firstRow, range.lastRow);
  if (first == end) return;
  // A text may reach over its neighbours on both sides of the range.
  viewport()->update(0, rows_[first].start, viewport()->width(), rows_[end - 1].End() - rows_[first].start);
}

void GridView::ScheduleUpkeep() {
  if (upkeepDue_) return;
  upkeepDue_ = true;
  QTimer::singleShot(0, this, &GridView::Upkeep);
}

void GridView::Upkeep() {
  upkeepDue_ = false;
  UpdateScrollBars();
  ShowActiveCell();
}

void GridView::Refresh() {
  const int sheet = workbook_.Sheet();
  const std::string name = workbook_.SheetName(sheet);
  const bool another = sheet != sheet_ || name != sheetName_;
  if (another) {
    otherSheets_.insert_or_assign(sheetName_, SheetState{geometry_, shownRow_, shownColumn_});
    const auto found = otherSheets_.find(name);
    if (found != otherSheets_.end()) {
      geometry_ = found->second.geometry;
      shownRow_ = found->second.activeRow;
      shownColumn_ = found->second.activeColumn;
    } else {
      geometry_ = {GridAxis(GridStore::MaxRows, 20), GridAxis(GridStore::MaxColumns, 80)};
      shownRow_ = shownColumn_ = 1;
    }
    MeasureFont();
    sheet_ = sheet;
    sheetName_ = name;
  }
  LoadGeometry();
  UpdateScrollBars();
  if (shownRow_ != workbook_.ActiveRow() || shownColumn_ != workbook_.ActiveColumn()) ScrollToMarks();
  MarksChanged();
  viewport()->update();
  if (another) emit SheetChanged();
}

void GridView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    MeasureFont();
    LoadGeometry();
  }
  if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) viewport()->update();
}

}  // namespace tellurix
