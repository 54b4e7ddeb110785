// What the grid shows: cells, marks, headings, tips.

#include <fmt/format.h>

#include <QHelpEvent>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "desktop/GridView.h"
#include "desktop/QtText.h"

namespace tellurix {

namespace {

constexpr int LongestPainted = 1024;  // characters of a cell
constexpr int OverflowColumns = 64;   // how far to the left a text is looked for that reaches into view

// The part of `b` in a blend of two colours.
QColor Blend(const QColor& a, const QColor& b, double part) {
  const auto mix = [&](int x, int y) { return static_cast<int>(std::lround(x + (y - x) * part)); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

// What stands for a value that is too wide for its cell.
QString Marks(const QFontMetrics& metrics, int width) {
  return QString(std::max(1, width / std::max(1, metrics.horizontalAdvance(u'#'))), u'#');
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
  if (geometry_.showsGridlines) PaintGridlines(painter, sheet, area, colors);
  // A text reaches over its neighbours only within its pane.
  const auto [unused, scrolled] = SpansWithin(columns_, 1, geometry_.frozenColumns);
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
  PaintPaneEdges(painter, sheet, scrolled, colors);
}

void GridView::PaintGridlines(QPainter& painter, const QRect& sheet, const QRect& area, const Colors& colors) const {
  for (const GridSpan& column : columns_) {
    painter.fillRect(QRect(column.End() - 1, sheet.top(), 1, sheet.height()) & area, colors.line);
  }
  for (const GridSpan& row : rows_) {
    painter.fillRect(QRect(sheet.left(), row.End() - 1, sheet.width(), 1) & area, colors.line);
  }
}

// `scrolled`: the first of columns_ that is not frozen.
void GridView::PaintPaneEdges(QPainter& painter, const QRect& sheet, std::size_t scrolled, const Colors& colors) const {
  const QColor edge = Blend(colors.base, colors.text, 0.55);
  if (scrolled > 0 && scrolled < columns_.size()) {
    painter.fillRect(columns_[scrolled - 1].End() - 1, sheet.top(), 1, sheet.height(), edge);
  }
  if (const std::size_t frozen = SpansWithin(rows_, 1, geometry_.frozenRows).second;
      frozen > 0 && frozen < rows_.size()) {
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
  PaintTextFromBefore(painter, row, {looks, from, to, right}, colors);
  for (std::size_t i = from; i < to; ++i) {
    const CellAppearance* look = looks_ && looks[i - from] ? &*looks[i - from] : nullptr;
    PaintText(painter, row, columns_[i].index, columns_[i].start, columns_[i].size, look, {looks, i + 1, to, right},
              colors);
  }
}

// A text that starts before the first column may reach into view.
void GridView::PaintTextFromBefore(QPainter& painter, const GridSpan& row, const Neighbours& inView,
                                   const Colors& colors) const {
  const GridSpan& first = columns_[inView.next];
  if (workbook_.ReadRC(row.index, first.index).type != EmptyCell) return;
  int x = first.start;
  const int stop = inView.next > 0 ? geometry_.frozenColumns : 0;
  for (int column = first.index - 1; column > stop && column >= first.index - OverflowColumns; --column) {
    const int size = geometry_.columns.Size(column);
    x -= size;
    if (workbook_.ReadRC(row.index, column).type == EmptyCell) continue;
    if (size > 0) {
      const auto look = looks_ ? looks_->Look(row.index, column, font()) : std::nullopt;
      PaintText(painter, row, column, x, size, look ? &*look : nullptr, inView, colors);
    }
    return;
  }
}

// One cell, over its empty neighbours where it is a text too long for it.
void GridView::PaintText(QPainter& painter, const GridSpan& row, int column, int x, int width,
                         const CellAppearance* look, const Neighbours& neighbours, const Colors& colors) const {
  const CellView view = workbook_.ReadRC(row.index, column);
  const int type = std::abs(view.type);
  if (type == EmptyCell || (type == NumberCell && view.number == 0 && !geometry_.showsZeros)) return;

  if (look) painter.setFont(look->font);
  painter.setPen(look && look->text.isValid() ? look->text : colors.text);
  const bool isError = view.type < 0 && type == TextCell && workbook_.IsError(row.index, column);
  Qt::Alignment side = type == NumberCell ? Qt::AlignRight : type == LogicalCell ? Qt::AlignHCenter : Qt::AlignLeft;
  if (isError) side = Qt::AlignHCenter;
  if (look && (look->alignment & Qt::AlignHorizontal_Mask)) side = look->alignment & Qt::AlignHorizontal_Mask;
  const auto upright = look && (look->alignment & Qt::AlignVertical_Mask) ? look->alignment & Qt::AlignVertical_Mask
                                                                          : Qt::Alignment(Qt::AlignVCenter);
  const int flags = static_cast<int>(side | upright) | Qt::TextSingleLine;
  const QRect cell(x, row.start, width - 1, row.size - 1);  // without its lines
  const QRect inside = cell.adjusted(Padding - 1, 0, -(Padding - 1), 0);
  const QFontMetrics metrics = painter.fontMetrics();

  if (type == NumberCell) {
    const bool keepsDigits = look && look->keepsDigits;
    painter.drawText(inside, flags,
                     FittedNumber(workbook_, regional_, row.index, column, keepsDigits, metrics, inside.width()));
  } else {
    QString text = view.type == TextCell ? FromUtf8(view.text.substr(0, LongestPainted * 4))
                                         : FromUtf8(workbook_.FormattedTextRC(row.index, column));
    text.truncate(LongestPainted);
    const int needed = metrics.horizontalAdvance(text);
    if (needed <= inside.width()) {
      painter.drawText(inside, flags, text);
    } else if (isError || type == LogicalCell) {
      painter.drawText(inside, flags, Marks(metrics, inside.width()));
    } else {
      const bool isFilled = look && look->fill.isValid();
      const bool reaches = side == Qt::AlignLeft;
      const QRect room = reaches ? ReachOver(painter, row, cell, needed, isFilled, neighbours, colors) : cell;
      painter.save();
      painter.setClipRect(room, Qt::IntersectClip);
      painter.drawText(room.adjusted(Padding - 1, 0, reaches ? needed : -(Padding - 1), 0), flags, text);
      painter.restore();
    }
  }
  if (look) painter.setFont(font());
}

// The room of a text too long for its cell: with empty neighbours as far as it needs them. No lines are left within it
// but those that a fill has covered already.
QRect GridView::ReachOver(QPainter& painter, const GridSpan& row, const QRect& cell, int needed, bool isFilled,
                          const Neighbours& neighbours, const Colors& colors) const {
  const auto& [looks, next, to, right] = neighbours;
  QRect room = cell;
  for (std::size_t i = next; i < to && room.width() < needed + 2 * Padding; ++i) {
    if (workbook_.ReadRC(row.index, columns_[i].index).type != EmptyCell) break;
    const auto* other = looks.empty() ? nullptr : &looks[looks.size() - (to - i)];
    const bool nextIsFilled = other && *other && (*other)->fill.isValid();
    if (!isFilled && !nextIsFilled) painter.fillRect(room.right() + 1, cell.top(), 1, cell.height(), colors.base);
    isFilled = nextIsFilled;
    room.setRight(columns_[i].End() - 2);
  }
  room.setRight(std::min(room.right(), right - 1));
  return room;
}

QString InRegion(QString number, const Regional& regional) {
  return regional.decimalSymbol == "." ? number : number.replace(u'.', FromUtf8(regional.decimalSymbol));
}

QString FittedNumber(const Workbook& workbook, const Regional& regional, int row, int column, bool keepsDigits,
                     const QFontMetrics& metrics, int width) {
  const QString shown = FromUtf8(workbook.FormattedTextRC(row, column, regional));
  const auto fits = [&](const QString& text) { return metrics.horizontalAdvance(text) <= width; };
  // Most are so short that no measuring is needed.
  const bool isShort =
      shown.size() * std::max(metrics.horizontalAdvance(u'0'), metrics.horizontalAdvance(u'E')) <= width;
  if (isShort || fits(shown)) return shown;
  const double number = workbook.ReadRC(row, column).number;
  const auto byDigits = [&](int digits) { return fmt::format("{:.{}g}", number, digits); };
  if (shown.contains(FromUtf8(regional.decimalSymbol)) && !keepsDigits) {
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
  const std::vector<CellRange> ranges = MarkedRanges();
  const QRect active = CellRect(workbook_.ActiveRow(), workbook_.ActiveColumn());
  const bool hasFocused = hasFocus() || editing_ || selecting_;
  const QColor mark = hasFocused ? colors.mark : Blend(colors.base, colors.mark, 0.7);
  const bool oneCell = ranges.size() == 1 && ranges[0].IsOneCell();
  if (!oneCell) PaintMarks(painter, ranges, active, mark);
  if (active.isEmpty()) return;
  QRect frame = active.adjusted(-1, -1, 0, 0);
  if (editing_ && editor_->isVisible()) frame.setRight(std::max(frame.right(), editor_->geometry().right() + 2));
  painter.fillRect(frame.left(), frame.top(), frame.width(), 2, mark);
  painter.fillRect(frame.left(), frame.bottom() - 1, frame.width(), 2, mark);
  painter.fillRect(frame.left(), frame.top(), 2, frame.height(), mark);
  painter.fillRect(frame.right() - 1, frame.top(), 2, frame.height(), mark);
}

// The marked ranges, tinted but for the active cell, each in a thin frame.
void GridView::PaintMarks(QPainter& painter, const std::vector<CellRange>& ranges, const QRect& active,
                          const QColor& mark) const {
  bool left = false, top = false, right = false, bottom = false;
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

void GridView::PaintHeadings(QPainter& painter, const QRect& area, const Colors& colors) const {
  if (area.top() < headingHeight_) PaintColumnHeadings(painter, area, colors);
  if (area.left() < headingWidth_) PaintRowHeadings(painter, area, colors);
  const QRect corner(0, 0, headingWidth_, headingHeight_);
  if (corner.intersects(area)) PaintCorner(painter, corner, colors);
}

void GridView::PaintColumnHeadings(QPainter& painter, const QRect& area, const Colors& colors) const {
  const QRect headings(headingWidth_, 0, viewport()->width() - headingWidth_, headingHeight_);
  const QFontMetrics metrics(font());
  painter.fillRect(headings, colors.heading);
  painter.setClipRect(headings & area);
  for (const GridSpan& column : columns_) {
    const QRect place(column.start, 0, column.size, headingHeight_);
    if (!place.intersects(area)) continue;
    bool whole = false;
    if (ColumnIsTouched(column.index, whole)) painter.fillRect(place, whole ? colors.whole : colors.touched);
    painter.fillRect(place.right(), 0, 1, headingHeight_, colors.headingLine);
    QString text = FromUtf8(workbook_.ColText(column.index));
    if (text.isEmpty()) text = FromUtf8(ColumnLetters(column.index));
    const QRect inside = place.adjusted(2, 0, -3, -1);
    text = metrics.elidedText(text.simplified(), Qt::ElideRight, inside.width());
    painter.setPen(colors.headingText);
    painter.drawText(inside, Qt::AlignCenter | Qt::TextSingleLine, text);
  }
  painter.fillRect(headings.left(), headings.bottom(), viewport()->width(), 1, colors.headingLine);
  painter.setClipRect(area);
}

void GridView::PaintRowHeadings(QPainter& painter, const QRect& area, const Colors& colors) const {
  const QRect headings(0, headingHeight_, headingWidth_, viewport()->height() - headingHeight_);
  const QFontMetrics metrics(font());
  painter.fillRect(headings, colors.heading);
  painter.setClipRect(headings & area);
  for (const GridSpan& row : rows_) {
    const QRect place(0, row.start, headingWidth_, row.size);
    if (!place.intersects(area)) continue;
    bool whole = false;
    if (RowIsTouched(row.index, whole)) painter.fillRect(place, whole ? colors.whole : colors.touched);
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
  painter.fillRect(headings.right(), headings.top(), 1, viewport()->height(), colors.headingLine);
  painter.setClipRect(area);
}

void GridView::PaintCorner(QPainter& painter, const QRect& corner, const Colors& colors) const {
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

bool GridView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  QRect place;
  const QString text = TipAt(help->pos(), place);
  if (text.isEmpty()) {
    QToolTip::hideText();
  } else {
    QToolTip::showText(help->globalPos(), "<qt>" + text.toHtmlEscaped() + "</qt>", viewport(), place);
  }
  return true;
}

// The whole heading of a column, or a number that does not fit its cell, and the place it is about.
QString GridView::TipAt(const QPoint& position, QRect& place) const {
  const Hit hit = HitTest(position);
  if (hit.area == Area::ColumnHeading) {
    place = ColumnHeadingRect(hit.column);
    const std::string heading = workbook_.ColText(hit.column);
    return heading.empty() ? QString() : FromUtf8(ColumnLetters(hit.column) + ": " + heading);
  }
  if (hit.area != Area::Cells) return {};
  place = CellRect(hit.row, hit.column);
  const bool isNumber = std::abs(workbook_.ReadRC(hit.row, hit.column).type) == NumberCell;
  if (!isNumber || !place.contains(position)) return {};
  const QString shown = FromUtf8(workbook_.FormattedTextRC(hit.row, hit.column, regional_));
  const bool fits = QFontMetrics(font()).horizontalAdvance(shown) <= place.width() - 2 * Padding;
  return fits ? QString() : shown;
}

}  // namespace tellurix
