// The grid's layout and painting.

#include "desktop/GridView.h"

#include <fmt/format.h>

#include <QEvent>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace tellurix {

namespace {

constexpr int Padding = 4;            // between a cell's edge and its text
constexpr int LongestPainted = 1024;  // characters of a cell
constexpr int OverflowColumns = 64;   // how far to the left a text is looked for that reaches into view
constexpr int LongestEdit = 100'000;  // more than a cell takes, so that nothing is cut off unseen
constexpr int WidestRowHeading = 160;

QString FromUtf8(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// The part of `b` in a blend of two colours.
QColor Blend(const QColor& a, const QColor& b, double part) {
  const auto mix = [&](int x, int y) { return static_cast<int>(std::lround(x + (y - x) * part)); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

// The spans within a rectangle of indexes: [first, last) of those that show.
std::pair<std::size_t, std::size_t> Within(const std::vector<GridSpan>& spans, int first, int last) {
  const auto begin =
      std::partition_point(spans.begin(), spans.end(), [&](const GridSpan& s) { return s.index < first; });
  const auto end = std::partition_point(begin, spans.end(), [&](const GridSpan& s) { return s.index <= last; });
  return {static_cast<std::size_t>(begin - spans.begin()), static_cast<std::size_t>(end - spans.begin())};
}

// What stands for a value that is too wide for its cell.
QString Marks(const QFontMetrics& metrics, int width) {
  return QString(std::max(1, width / std::max(1, metrics.horizontalAdvance(u'#'))), u'#');
}

const GridSpan* FindSpan(const std::vector<GridSpan>& spans, int index) {
  const auto [first, end] = Within(spans, index, index);
  return first < end ? &spans[first] : nullptr;
}

}  // namespace

struct GridView::Colors {
  QColor base;
  QColor text;
  QColor line;
  QColor heading;
  QColor headingText;
  QColor headingLine;
  QColor touched;  // headings of marked cells
  QColor whole;    // headings of whole rows and columns
  QColor mark;
  QColor outside;
};

GridView::Colors GridView::ThemeColors() const {
  const QPalette& theme = palette();
  Colors colors;
  colors.base = theme.color(QPalette::Base);
  colors.text = theme.color(QPalette::Text);
  colors.line = Blend(colors.base, colors.text, 0.16);
  colors.heading = Blend(theme.color(QPalette::Window), colors.base, 0.25);
  colors.headingText = theme.color(QPalette::WindowText);
  colors.headingLine = Blend(colors.heading, colors.headingText, 0.28);
  colors.mark = theme.color(QPalette::Active, QPalette::Highlight);
  colors.touched = Blend(colors.heading, colors.mark, 0.22);
  colors.whole = Blend(colors.heading, colors.mark, 0.45);
  colors.outside = theme.color(QPalette::Window);
  return colors;
}

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

// --- layout ---

void GridView::MeasureFont() {
  const QFontMetricsF metrics(font());
  digitWidth_ = metrics.horizontalAdvance(u'0');
  fullHeadingHeight_ = static_cast<int>(std::ceil(metrics.height())) + 6;
  geometry_.rows.SetDefaultSize(static_cast<int>(std::ceil(metrics.height())) + 4);
}

int GridView::WidthToPixels(double characters) const {
  if (characters <= 0) return 0;
  return static_cast<int>(std::lround(std::min(characters, 1000.0) * digitWidth_)) + 2 * Padding;
}

double GridView::PixelsToWidth(int pixels) const {
  if (pixels <= Padding) return 0;
  return std::max(0.1, std::round((pixels - 2 * Padding) / digitWidth_ * 100) / 100);
}

void GridView::LoadWidths(int firstColumn, int lastColumn) {
  const double usual = workbook_.Settings().columnWidth;
  geometry_.columns.SetDefaultSize(WidthToPixels(usual));
  geometry_.columns.Reset(firstColumn, lastColumn);
  for (int column = std::max(firstColumn, 1); column <= std::min(lastColumn, GridStore::MaxColumns); ++column) {
    const double width = workbook_.ColumnWidth(column);
    if (width != usual) geometry_.columns.SetSize(column, column, WidthToPixels(width));
  }
}

void GridView::LoadGeometry() {
  LoadWidths(1, GridStore::MaxColumns);
  if (looks_) {
    geometry_.rows.Reset();
    geometry_.frozenRows = 0;
    geometry_.frozenColumns = 0;
    looks_->Describe(geometry_);
  }
  UpdateLayout();
  ScheduleUpkeep();
}

void GridView::UpdateLayout() {
  geometry_.topRow = std::max(geometry_.topRow, geometry_.frozenRows + 1);
  geometry_.leftColumn = std::max(geometry_.leftColumn, geometry_.frozenColumns + 1);
  const QSize size = viewport()->size();
  headingHeight_ = geometry_.showsHeadings ? fullHeadingHeight_ : 0;
  rows_ = LayOut(geometry_.rows, geometry_.frozenRows, geometry_.topRow, headingHeight_, size.height());

  const QFontMetrics metrics(font());
  const int digits = rows_.empty() ? 1 : static_cast<int>(QString::number(rows_.back().index).size());
  int width = static_cast<int>(std::ceil(digitWidth_ * std::max(digits, 3))) + 2 * Padding + 4;
  for (const GridSpan& row : rows_) {
    const std::string text = workbook_.RowText(row.index);
    if (!text.empty()) width = std::max(width, metrics.horizontalAdvance(FromUtf8(text)) + 2 * Padding);
  }
  headingWidth_ = geometry_.showsHeadings ? std::min(width, WidestRowHeading) : 0;
  columns_ = LayOut(geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn, headingWidth_, size.width());
  if (editing_) PlaceEditor();
}

QRect GridView::CellsRect() const {
  return QRect(QPoint(headingWidth_, headingHeight_), viewport()->rect().bottomRight());
}

int GridView::PageRows() const {
  int count = 0;
  for (const GridSpan& row : rows_) {
    if (row.index >= geometry_.topRow && row.End() <= viewport()->height()) ++count;
  }
  return std::max(count, 1);
}

// Bars count rows and columns. They end with the used part or with what shows now, a page further at most, and always
// leave a step to go until the sheet itself ends.
void GridView::UpdateScrollBars() {
  const auto update = [](QScrollBar* bar, const GridAxis& axis, int frozen, int top, int used, int page, int room) {
    if (bar->isSliderDown()) return;
    const qint64 end = axis.Start(axis.Count() + 1);
    int lastTop = axis.At(std::max<qint64>(0, end - room));
    if (end - axis.Start(lastTop) > room) lastTop = std::max(1, axis.Next(lastTop, 1));
    const int first = frozen + 1;
    lastTop = std::max(lastTop, first);
    const int last = std::clamp(std::max(used, top + page), first, lastTop);
    const QSignalBlocker block(bar);
    bar->setRange(first, std::max(last, top));
    bar->setPageStep(page);
    bar->setSingleStep(1);
    bar->setValue(top);
  };
  const auto frozenSize = [](const std::vector<GridSpan>& spans, int frozen) {
    int size = 0;
    for (const GridSpan& span : spans) size += span.index <= frozen ? span.size : 0;
    return size;
  };
  const QRect cells = CellsRect();
  update(verticalScrollBar(), geometry_.rows, geometry_.frozenRows, geometry_.topRow,
         std::max(workbook_.LastRow(), workbook_.ActiveRow()), PageRows(),
         std::max(1, cells.height() - frozenSize(rows_, geometry_.frozenRows)));
  int columns = 0;
  for (const GridSpan& column : columns_) {
    if (column.index >= geometry_.leftColumn && column.End() <= viewport()->width()) ++columns;
  }
  update(horizontalScrollBar(), geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn,
         std::max(workbook_.LastCol(), workbook_.ActiveColumn()), std::max(columns, 1),
         std::max(1, cells.width() - frozenSize(columns_, geometry_.frozenColumns)));
}

void GridView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  UpdateLayout();
  UpdateScrollBars();
}

void GridView::scrollContentsBy(int, int) {
  const int top = verticalScrollBar()->value();
  const int left = horizontalScrollBar()->value();
  if (top == geometry_.topRow && left == geometry_.leftColumn) return;
  FinishHeading(true);
  // A hidden row is no place to stand on: stepping into hidden ones goes through.
  const auto shown = [](const GridAxis& axis, int wanted, int from) {
    if (!axis.IsHidden(wanted)) return wanted;
    const int next = axis.Next(wanted, wanted < from ? -1 : 1);
    return next ? next : from;
  };
  geometry_.topRow = shown(geometry_.rows, top, geometry_.topRow);
  geometry_.leftColumn = shown(geometry_.columns, left, geometry_.leftColumn);
  UpdateLayout();
  UpdateScrollBars();
  viewport()->update();
}

void GridView::ScrollBy(int rows, int columns) {
  const auto go = [](QScrollBar* bar, int by) {
    if (by == 0) return;
    bar->setValue(bar->value() + by);
  };
  go(verticalScrollBar(), rows);
  go(horizontalScrollBar(), columns);
}

// As much of the marked columns as has room, the active cell above all.
void GridView::ScrollToMarks() {
  ScrollTo(workbook_.ActiveRow(), LastRange().lastColumn);
  ScrollTo(workbook_.ActiveRow(), workbook_.ActiveColumn());
}

int GridView::TopRow() const { return geometry_.topRow; }
int GridView::LeftColumn() const { return geometry_.leftColumn; }

void GridView::ScrollTo(int row, int column) {
  const auto wanted = [](const GridAxis& axis, int frozen, int first, int index, int room) {
    if (index <= frozen || index < 1) return first;
    if (index < first) return index;
    // The first one with which the wanted one still shows whole.
    const qint64 end = axis.Start(index + 1);
    if (end - axis.Start(first) <= room) return first;
    int start = axis.At(std::max<qint64>(0, end - room));
    if (end - axis.Start(start) > room) {
      if (const int next = axis.Next(start, 1)) start = next;
    }
    return std::min(start, index);
  };
  const QRect cells = CellsRect();
  int frozenHeight = 0;
  for (const GridSpan& span : rows_) frozenHeight += span.index <= geometry_.frozenRows ? span.size : 0;
  int frozenWidth = 0;
  for (const GridSpan& span : columns_) frozenWidth += span.index <= geometry_.frozenColumns ? span.size : 0;
  const int top = wanted(geometry_.rows, geometry_.frozenRows, geometry_.topRow, row, cells.height() - frozenHeight);
  if (top != geometry_.topRow) {
    geometry_.topRow = top;
    UpdateLayout();  // the headings may have become wider
  }
  const int left = wanted(geometry_.columns, geometry_.frozenColumns, geometry_.leftColumn, column,
                          CellsRect().width() - frozenWidth);
  geometry_.leftColumn = left;
  UpdateLayout();
  UpdateScrollBars();
  viewport()->update();
}

QRect GridView::CellRect(int row, int column) const {
  const GridSpan* r = FindSpan(rows_, row);
  const GridSpan* c = FindSpan(columns_, column);
  return r && c ? QRect(c->start, r->start, c->size, r->size) : QRect();
}

QRect GridView::ColumnHeadingRect(int column) const {
  const GridSpan* c = FindSpan(columns_, column);
  return c ? QRect(c->start, 0, c->size, headingHeight_) : QRect();
}

QRect GridView::RowHeadingRect(int row) const {
  const GridSpan* r = FindSpan(rows_, row);
  return r ? QRect(0, r->start, headingWidth_, r->size) : QRect();
}

// What shows of a range, and which of its edges do.
QRect GridView::RangeRect(const CellRange& range, bool& left, bool& top, bool& right, bool& bottom) const {
  const auto [firstRow, endRow] = Within(rows_, range.firstRow, range.lastRow);
  const auto [firstColumn, endColumn] = Within(columns_, range.firstColumn, range.lastColumn);
  if (firstRow == endRow || firstColumn == endColumn) return {};
  left = columns_[firstColumn].index == geometry_.columns.Next(range.firstColumn - 1, 1);
  top = rows_[firstRow].index == geometry_.rows.Next(range.firstRow - 1, 1);
  right = columns_[endColumn - 1].index == geometry_.columns.Next(range.lastColumn + 1, -1);
  bottom = rows_[endRow - 1].index == geometry_.rows.Next(range.lastRow + 1, -1);
  return {QPoint(columns_[firstColumn].start, rows_[firstRow].start),
          QPoint(columns_[endColumn - 1].End() - 1, rows_[endRow - 1].End() - 1)};
}

GridView::Hit GridView::HitTest(const QPoint& position) const {
  constexpr int Grip = 4;
  const auto at = [](const std::vector<GridSpan>& spans, int pixel) {
    const auto found =
        std::partition_point(spans.begin(), spans.end(), [&](const GridSpan& span) { return span.End() <= pixel; });
    return found == spans.end() ? spans.size() - 1 : static_cast<std::size_t>(found - spans.begin());
  };
  if (rows_.empty() || columns_.empty()) return {Area::Corner, geometry_.topRow, geometry_.leftColumn};
  const GridSpan& row = rows_[at(rows_, position.y())];
  const GridSpan& column = columns_[at(columns_, position.x())];
  const bool inHeadings = position.y() < headingHeight_;
  const bool inRowHeadings = position.x() < headingWidth_;
  // The border of a column belongs to the one before it; what is hidden there is dragged out from beyond it.
  const auto border = [](const std::vector<GridSpan>& spans, const GridSpan& span, const GridAxis& axis, int pixel) {
    if (span.End() - pixel <= Grip && pixel <= span.End() + Grip) return span.index;
    if (pixel - span.start < Grip) {
      if (span.index > 1 && axis.IsHidden(span.index - 1)) return span.index - 1;
      if (&span != spans.data()) return (&span - 1)->index;
    }
    return 0;
  };
  if (inHeadings && inRowHeadings) return {Area::Corner, row.index, column.index};
  if (inHeadings) {
    if (const int index = border(columns_, column, geometry_.columns, position.x())) {
      return {Area::ColumnBorder, row.index, index};
    }
    return {Area::ColumnHeading, row.index, column.index};
  }
  if (inRowHeadings) {
    if (const int index = border(rows_, row, geometry_.rows, position.y())) {
      return {Area::RowBorder, index, column.index};
    }
    return {Area::RowHeading, row.index, column.index};
  }
  return {Area::Cells, row.index, column.index};
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
    const auto [first, end] = Within(rows_, change.range.firstRow, change.range.lastRow);
    switch (change.kind) {
      case WorkbookChange::Kind::Widths:
        LoadWidths(change.range.firstColumn, change.range.lastColumn);
        UpdateLayout();
        viewport()->update();
        break;
      case WorkbookChange::Kind::Cells:
        // With columns or rows their sizes and headings have moved.
        if (change.range.firstRow == 0) LoadWidths(change.range.firstColumn, change.range.lastColumn);
        if (change.range.firstColumn == 0 && looks_) LoadGeometry();
        if (change.range.firstRow == 0 || change.range.firstColumn == 0) {
          UpdateLayout();
          viewport()->update();
        } else if (first < end) {
          // A text may reach over its neighbours on both sides of the range.
          viewport()->update(0, rows_[first].start, viewport()->width(), rows_[end - 1].End() - rows_[first].start);
        }
        break;
      case WorkbookChange::Kind::Looks:
        viewport()->update();
        break;
      default:
        looks_ ? LoadGeometry() : UpdateLayout();
        viewport()->update();
        break;
    }
    ResetSummary();
  }
  emit Modified();
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

// --- painting ---

void GridView::paintEvent(QPaintEvent* event) {
  if (workbook_.Sheet() != sheet_) {
    // Someone chose another sheet; what shows is put right before it is painted, the rest after that.
    QTimer::singleShot(0, this, &GridView::Refresh);
  }
  QPainter painter(viewport());
  painter.setFont(font());
  const Colors colors = ThemeColors();
  const QRect area = event->rect();
  painter.fillRect(area, colors.outside);
  const QRect cells = area & CellsRect();
  if (!cells.isEmpty()) {
    painter.setClipRect(cells);
    PaintCells(painter, cells, colors);
    painter.setClipRect(cells);
    PaintSelection(painter, colors);
  }
  painter.setClipRect(area);
  if (geometry_.showsHeadings) PaintHeadings(painter, area, colors);
}

void GridView::PaintCells(QPainter& painter, const QRect& area, const Colors& colors) const {
  if (rows_.empty() || columns_.empty()) return;
  const QRect sheet(QPoint(columns_.front().start, rows_.front().start),
                    QPoint(columns_.back().End() - 1, rows_.back().End() - 1));
  painter.fillRect(area & sheet, colors.base);
  if (geometry_.showsGridlines) {
    for (const GridSpan& column : columns_) {
      painter.fillRect(QRect(column.End() - 1, sheet.top(), 1, sheet.height()) & area, colors.line);
    }
    for (const GridSpan& row : rows_) {
      painter.fillRect(QRect(sheet.left(), row.End() - 1, sheet.width(), 1) & area, colors.line);
    }
  }
  // A text reaches over its neighbours only within its pane.
  const auto [unused, scrolled] = Within(columns_, 1, geometry_.frozenColumns);
  const std::pair<std::size_t, std::size_t> panes[] = {{0, scrolled}, {scrolled, columns_.size()}};
  for (const auto& [from, to] : panes) {
    if (from == to) continue;
    const QRect pane(columns_[from].start, area.top(), columns_[to - 1].End() - columns_[from].start, area.height());
    if (!pane.intersects(area)) continue;
    painter.setClipRect(pane & area);
    for (const GridSpan& row : rows_) {
      if (row.End() <= area.top() || row.start > area.bottom()) continue;
      PaintRow(painter, row, from, to, columns_[to - 1].End(), colors);
    }
  }
  painter.setClipRect(area);
  // The edges of the frozen panes.
  const QColor edge = Blend(colors.base, colors.text, 0.55);
  if (scrolled > 0 && scrolled < columns_.size()) {
    painter.fillRect(columns_[scrolled - 1].End() - 1, sheet.top(), 1, sheet.height(), edge);
  }
  if (const std::size_t frozen = Within(rows_, 1, geometry_.frozenRows).second; frozen > 0 && frozen < rows_.size()) {
    painter.fillRect(sheet.left(), rows_[frozen - 1].End() - 1, sheet.width(), 1, edge);
  }
}

void GridView::PaintRow(QPainter& painter, const GridSpan& row, std::size_t from, std::size_t to, int right,
                        const Colors& colors) const {
  // Fills come first, for texts reach over them; they cover the lines around them.
  RowLooks looks(looks_ ? to - from : 0);
  for (std::size_t i = 0; i < looks.size(); ++i) {
    const GridSpan& column = columns_[from + i];
    looks[i] = looks_->Look(row.index, column.index, font());
    if (looks[i] && looks[i]->fill.isValid()) {
      painter.fillRect(column.start - 1, row.start - 1, column.size + 1, row.size + 1, looks[i]->fill);
    }
  }
  // A text that starts before the first column may reach into view.
  int x = columns_[from].start;
  const int stop = from > 0 ? geometry_.frozenColumns : 0;
  if (workbook_.ReadRC(row.index, columns_[from].index).type == EmptyCell) {
    int column = columns_[from].index;
    for (int i = 0; i < OverflowColumns && column > stop + 1; ++i) {
      --column;
      const int size = geometry_.columns.Size(column);
      x -= size;
      if (workbook_.ReadRC(row.index, column).type == EmptyCell) continue;
      if (size > 0) {
        const auto look = looks_ ? looks_->Look(row.index, column, font()) : std::nullopt;
        PaintText(painter, row, column, x, size, look ? &*look : nullptr, looks, from, to, right, colors);
      }
      break;
    }
  }
  for (std::size_t i = from; i < to; ++i) {
    const CellAppearance* look = looks_ && looks[i - from] ? &*looks[i - from] : nullptr;
    PaintText(painter, row, columns_[i].index, columns_[i].start, columns_[i].size, look, looks, i + 1, to, right,
              colors);
  }
}

// One cell, over its empty neighbours from columns_[next] on where it is a text too long for it.
void GridView::PaintText(QPainter& painter, const GridSpan& row, int column, int x, int width,
                         const CellAppearance* look, const RowLooks& looks, std::size_t next, std::size_t to, int right,
                         const Colors& colors) const {
  const QRect cell(x, row.start, width - 1, row.size - 1);  // without its lines
  const CellView view = workbook_.ReadRC(row.index, column);
  const int type = std::abs(view.type);
  if (type == EmptyCell || (type == NumberCell && view.number == 0 && !geometry_.showsZeros)) return;

  if (look) painter.setFont(look->font);
  const QFontMetrics metrics = painter.fontMetrics();
  painter.setPen(look && look->text.isValid() ? look->text : colors.text);
  const bool isError = view.type < 0 && type == TextCell && workbook_.IsError(row.index, column);
  Qt::Alignment side = type == NumberCell ? Qt::AlignRight : type == LogicalCell ? Qt::AlignHCenter : Qt::AlignLeft;
  if (isError) side = Qt::AlignHCenter;
  if (look && (look->alignment & Qt::AlignHorizontal_Mask)) side = look->alignment & Qt::AlignHorizontal_Mask;
  const auto upright = look && (look->alignment & Qt::AlignVertical_Mask) ? look->alignment & Qt::AlignVertical_Mask
                                                                          : Qt::Alignment(Qt::AlignVCenter);
  const int flags = static_cast<int>(side | upright) | Qt::TextSingleLine;
  const QRect inside = cell.adjusted(Padding - 1, 0, -(Padding - 1), 0);

  if (type == NumberCell) {
    painter.drawText(
        inside, flags,
        FittedNumber(workbook_, regional_, row.index, column, look && look->keepsDigits, metrics, inside.width()));
  } else {
    QString text;
    if (view.type == TextCell) {
      text = FromUtf8(view.text.substr(0, LongestPainted * 4));
    } else {
      text = FromUtf8(workbook_.FormattedTextRC(row.index, column));
    }
    text.truncate(LongestPainted);
    int needed = metrics.horizontalAdvance(text);
    if (needed > inside.width() && (isError || type == LogicalCell)) {
      text = Marks(metrics, inside.width());
      needed = 0;
    }
    QRect room = cell;
    if (needed > inside.width() && type == TextCell && side == Qt::AlignLeft) {
      // No lines through the text; a fill has covered them already.
      bool isFilled = look && look->fill.isValid();
      for (std::size_t i = next; i < to && room.width() < needed + 2 * Padding; ++i) {
        if (workbook_.ReadRC(row.index, columns_[i].index).type != EmptyCell) break;
        const auto* other = looks.empty() ? nullptr : &looks[looks.size() - (to - i)];
        const bool nextIsFilled = other && *other && (*other)->fill.isValid();
        if (!isFilled && !nextIsFilled) {
          painter.fillRect(room.right() + 1, cell.top(), 1, cell.height(), colors.base);
        }
        isFilled = nextIsFilled;
        room.setRight(columns_[i].End() - 2);
      }
      room.setRight(std::min(room.right(), right - 1));
    }
    if (needed > inside.width()) {
      painter.save();
      painter.setClipRect(room, Qt::IntersectClip);
      painter.drawText(room.adjusted(Padding - 1, 0, side == Qt::AlignLeft ? needed : -(Padding - 1), 0), flags, text);
      painter.restore();
    } else {
      painter.drawText(inside, flags, text);
    }
  }
  if (look) painter.setFont(font());
}

QString InRegion(QString number, const Regional& regional) {
  return regional.decimalSymbol == "." ? number : number.replace(u'.', FromUtf8(regional.decimalSymbol));
}

QString FittedNumber(const Workbook& workbook, const Regional& regional, int row, int column, bool keepsDigits,
                     const QFontMetrics& metrics, int width) {
  const QString shown = FromUtf8(workbook.FormattedTextRC(row, column));
  const auto fits = [&](const QString& text) { return metrics.horizontalAdvance(text) <= width; };
  // Most are so short that no measuring is needed.
  const bool isShort =
      shown.size() * std::max(metrics.horizontalAdvance(u'0'), metrics.horizontalAdvance(u'E')) <= width;
  if (isShort || fits(shown)) return InRegion(shown, regional);
  const double number = workbook.ReadRC(row, column).number;
  const auto byDigits = [&](int digits) { return fmt::format("{:.{}g}", number, digits); };
  if (shown.contains(u'.') && !keepsDigits) {
    const bool scientific = shown.contains(u'E') || shown.contains(u'e');
    const int whole = scientific ? 1 : std::abs(number) < 1 ? 1 : static_cast<int>(std::log10(std::abs(number))) + 1;
    for (int digits = 14; digits >= whole; --digits) {
      QString text = QString::fromStdString(byDigits(digits)).toUpper();
      if (scientific != text.contains(u'E')) {
        if (!scientific) break;
        continue;
      }
      if (fits(text)) return InRegion(text, regional);
    }
  }
  return Marks(metrics, width);
}

void GridView::PaintSelection(QPainter& painter, const Colors& colors) const {
  const int activeRow = workbook_.ActiveRow();
  const int activeColumn = workbook_.ActiveColumn();
  const std::vector<CellRange> ranges = MarkedRanges();
  const QRect active = CellRect(activeRow, activeColumn);
  const bool hasFocused = hasFocus() || editing_ || selecting_;
  QColor mark = colors.mark;
  if (!hasFocused) mark = Blend(colors.base, mark, 0.7);
  bool left = false, top = false, right = false, bottom = false;

  const bool oneCell = ranges.size() == 1 && ranges[0].IsOneCell();
  if (!oneCell) {
    QColor fill = mark;
    fill.setAlpha(48);
    QRegion region;
    for (const CellRange& range : ranges) region += RangeRect(range, left, top, right, bottom);
    region -= active.adjusted(0, 0, -1, -1);
    for (const QRect& part : region) painter.fillRect(part, fill);
    for (const CellRange& range : ranges) {
      const QRect frame = RangeRect(range, left, top, right, bottom).adjusted(-1, -1, 0, 0);
      if (frame.width() <= 1 || frame.height() <= 1) continue;
      if (left) painter.fillRect(frame.left(), frame.top(), 1, frame.height(), mark);
      if (top) painter.fillRect(frame.left(), frame.top(), frame.width(), 1, mark);
      if (right) painter.fillRect(frame.right(), frame.top(), 1, frame.height(), mark);
      if (bottom) painter.fillRect(frame.left(), frame.bottom(), frame.width(), 1, mark);
    }
  }
  if (!active.isEmpty()) {
    QRect frame = active.adjusted(-1, -1, 0, 0);
    if (editing_ && editor_->isVisible()) frame.setRight(std::max(frame.right(), editor_->geometry().right() + 2));
    painter.fillRect(frame.left(), frame.top(), frame.width(), 2, mark);
    painter.fillRect(frame.left(), frame.bottom() - 1, frame.width(), 2, mark);
    painter.fillRect(frame.left(), frame.top(), 2, frame.height(), mark);
    painter.fillRect(frame.right() - 1, frame.top(), 2, frame.height(), mark);
  }
}

void GridView::PaintHeadings(QPainter& painter, const QRect& area, const Colors& colors) const {
  const auto back = [&](bool whole, bool touched) {
    return whole ? colors.whole : touched ? colors.touched : colors.heading;
  };
  const int viewWidth = viewport()->width();
  const int viewHeight = viewport()->height();
  const QFontMetrics metrics(font());
  if (area.top() < headingHeight_) {
    painter.fillRect(headingWidth_, 0, viewWidth - headingWidth_, headingHeight_, colors.heading);
    painter.setClipRect(QRect(headingWidth_, 0, viewWidth - headingWidth_, headingHeight_) & area);
    for (const GridSpan& column : columns_) {
      const QRect place(column.start, 0, column.size, headingHeight_);
      if (!place.intersects(area)) continue;
      bool whole = false;
      const bool touched = ColumnIsTouched(column.index, whole);
      if (touched) painter.fillRect(place, back(whole, touched));
      painter.fillRect(place.right(), 0, 1, headingHeight_, colors.headingLine);
      QString text = FromUtf8(workbook_.ColText(column.index));
      if (text.isEmpty()) text = FromUtf8(ColumnLetters(column.index));
      const QRect inside = place.adjusted(2, 0, -3, -1);
      text = metrics.elidedText(text.simplified(), Qt::ElideRight, inside.width());
      painter.setPen(colors.headingText);
      painter.drawText(inside, Qt::AlignCenter | Qt::TextSingleLine, text);
    }
    painter.fillRect(headingWidth_, headingHeight_ - 1, viewWidth, 1, colors.headingLine);
    painter.setClipRect(area);
  }
  if (area.left() < headingWidth_) {
    painter.fillRect(0, headingHeight_, headingWidth_, viewHeight - headingHeight_, colors.heading);
    painter.setClipRect(QRect(0, headingHeight_, headingWidth_, viewHeight - headingHeight_) & area);
    for (const GridSpan& row : rows_) {
      const QRect place(0, row.start, headingWidth_, row.size);
      if (!place.intersects(area)) continue;
      bool whole = false;
      bool touched = false;
      for (const CellRange& range : MarkedRanges()) {
        if (row.index < range.firstRow || row.index > range.lastRow) continue;
        touched = true;
        whole = whole || (range.firstColumn == 1 && range.lastColumn == GridStore::MaxColumns);
      }
      if (touched) painter.fillRect(place, back(whole, touched));
      painter.fillRect(0, place.bottom(), headingWidth_, 1, colors.headingLine);
      QString text = FromUtf8(workbook_.RowText(row.index));
      const QRect inside = place.adjusted(2, 0, -Padding, -1);
      if (text.isEmpty()) {
        text = QString::number(row.index);
      } else {
        text = metrics.elidedText(text.simplified(), Qt::ElideRight, inside.width());
      }
      painter.setPen(colors.headingText);
      painter.drawText(inside, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, text);
    }
    painter.fillRect(headingWidth_ - 1, headingHeight_, 1, viewHeight, colors.headingLine);
    painter.setClipRect(area);
  }
  const QRect corner(0, 0, headingWidth_, headingHeight_);
  if (corner.intersects(area)) {
    painter.fillRect(corner, colors.heading);
    painter.fillRect(corner.right(), 0, 1, headingHeight_, colors.headingLine);
    painter.fillRect(0, corner.bottom(), headingWidth_, 1, colors.headingLine);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.headingLine);
    const QPointF tip(corner.right() - 3, corner.bottom() - 3);
    const QPointF triangle[] = {tip, tip - QPointF(8, 0), tip - QPointF(0, 8)};
    painter.drawPolygon(triangle, 3);
    painter.restore();
  }
}

bool GridView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    const Hit hit = HitTest(help->pos());
    QString text;
    QRect place;
    if (hit.area == Area::ColumnHeading) {
      const std::string heading = workbook_.ColText(hit.column);
      if (!heading.empty()) text = FromUtf8(ColumnLetters(hit.column) + ": " + heading);
      place = ColumnHeadingRect(hit.column);
    } else if (hit.area == Area::Cells) {
      place = CellRect(hit.row, hit.column);
      if (std::abs(workbook_.ReadRC(hit.row, hit.column).type) == NumberCell && place.contains(help->pos())) {
        const QString shown = InRegion(FromUtf8(workbook_.FormattedTextRC(hit.row, hit.column)), regional_);
        if (QFontMetrics(font()).horizontalAdvance(shown) > place.width() - 2 * Padding) text = shown;
      }
    }
    if (text.isEmpty()) {
      QToolTip::hideText();
    } else {
      QToolTip::showText(help->globalPos(), "<qt>" + text.toHtmlEscaped() + "</qt>", viewport(), place);
    }
    return true;
  }
  return QAbstractScrollArea::viewportEvent(event);
}

}  // namespace tellurix
