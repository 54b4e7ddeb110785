#include "desktop/SheetPrinting.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "desktop/GridView.h"
#include "desktop/QtText.h"
#include "desktop/SheetLooks.h"

namespace tellurix {

namespace {

constexpr double Padding = 4;  // in pixels of the screen, as all sizes here
constexpr double LightestLine = 0.5;
constexpr std::size_t LongestDrawn = 4096;  // bytes of a cell

// Rows or columns that stand on one page, with the place at which each starts.
struct Strip {
  std::vector<std::pair<int, double>> parts;
  double size = 0;
};

template <typename SizeOf>
std::vector<Strip> Strips(int first, int last, double room, SizeOf sizeOf) {
  std::vector<Strip> strips;
  for (int i = first; i <= last; ++i) {
    const double size = sizeOf(i);
    if (size <= 0) continue;
    if (strips.empty() || strips.back().size + size > room) strips.emplace_back();
    strips.back().parts.emplace_back(i, strips.back().size);
    strips.back().size += size;
  }
  return strips;
}

class SheetPainter {
 public:
  SheetPainter(const Workbook& workbook, const Regional& regional, const CellRange& range, QPagedPaintDevice& device)
      : workbook_(workbook), regional_(regional), settings_(workbook.SettingsOfSheet()), device_(device) {
    scale_ = device.logicalDpiY() / (PointsToPixels(7200) / 100.0);
    font_ = DefaultFont(workbook);
    font_.setPointSizeF(font_.pointSizeF() / scale_);
    const QFontMetricsF metrics(font_, &device);
    lineHeight_ = metrics.height();
    digitWidth_ = metrics.horizontalAdvance(u'0');
    page_ = QSizeF(device.width() / scale_, device.height() / scale_);
    if (settings_.printing.headings) {
      const auto digits = QString::number(range.lastRow).size();
      left_ = digitWidth_ * static_cast<double>(std::max<qsizetype>(3, digits)) + 2 * Padding;
      top_ = lineHeight_ + 4;
    }
    rows_ = Strips(range.firstRow, range.lastRow, page_.height() - top_ - 2 * lineHeight_,
                   [&](int row) { return static_cast<double>(PointsToPixels(workbook.RowHeight(row))); });
    columns_ = Strips(range.firstColumn, range.lastColumn, page_.width() - left_, [&](int column) {
      const double width = workbook.ColumnWidth(column);
      return width > 0 ? std::round(width * digitWidth_) + 2 * Padding : 0;
    });
  }

  int Pages() const { return static_cast<int>(rows_.size() * columns_.size()); }

  void Draw(QPainter& painter, int number) const {  // from 1
    const auto index = static_cast<std::size_t>(number - 1);
    const Strip& rows = rows_[index % rows_.size()];
    const Strip& columns = columns_[index / rows_.size()];
    painter.save();
    painter.scale(scale_, scale_);
    painter.setFont(font_);
    painter.setPen(Qt::black);
    painter.save();
    painter.setClipRect(QRectF(0, 0, page_.width(), page_.height() - 2 * lineHeight_ + 1));
    if (settings_.printing.headings) DrawHeadings(painter, rows, columns);
    painter.translate(left_, top_);
    for (std::size_t i = 0; i < rows.parts.size(); ++i) DrawRow(painter, rows, i, columns);
    painter.restore();
    painter.drawText(QRectF(0, page_.height() - lineHeight_, page_.width(), lineHeight_),
                     Qt::AlignHCenter | Qt::AlignBottom | Qt::TextSingleLine,
                     QString("Page %1 of %2").arg(number).arg(Pages()));
    painter.restore();
  }

 private:
  static double End(const Strip& strip, std::size_t i) {
    return i + 1 < strip.parts.size() ? strip.parts[i + 1].second : strip.size;
  }

  void DrawHeadings(QPainter& painter, const Strip& rows, const Strip& columns) const {
    const QColor fill(236, 236, 236);
    const auto draw = [&](const QRectF& place, const QString& text, Qt::Alignment side) {
      painter.fillRect(place, fill);
      painter.setPen(QPen(Qt::darkGray, LightestLine));
      painter.drawRect(place);
      painter.setPen(Qt::black);
      const QRectF inside = place.adjusted(2, 0, -2, 0);
      const QString shown = QFontMetricsF(font_, &device_).elidedText(text, Qt::ElideRight, inside.width());
      painter.drawText(inside, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
    };
    draw(QRectF(0, 0, left_, top_), {}, {});
    for (std::size_t i = 0; i < columns.parts.size(); ++i) {
      const auto [column, start] = columns.parts[i];
      const std::string heading = workbook_.ColText(column);
      draw(QRectF(left_ + start, 0, End(columns, i) - start, top_),
           FromUtf8(heading.empty() ? ColumnLetters(column) : heading).simplified(), Qt::AlignHCenter);
    }
    for (std::size_t i = 0; i < rows.parts.size(); ++i) {
      const auto [row, start] = rows.parts[i];
      const std::string heading = workbook_.RowText(row);
      draw(QRectF(0, top_ + start, left_, End(rows, i) - start),
           heading.empty() ? QString::number(row) : FromUtf8(heading).simplified(), Qt::AlignRight);
    }
  }

  void DrawRow(QPainter& painter, const Strip& rows, std::size_t at, const Strip& columns) const {
    const auto [row, top] = rows.parts[at];
    const double height = End(rows, at) - top;
    // Fills, lines, then texts, which may reach over both.
    std::vector<CellAppearance> looks;
    for (std::size_t i = 0; i < columns.parts.size(); ++i) {
      const auto [column, start] = columns.parts[i];
      CellLook look = workbook_.LookAt(row, column);
      look.fontSize /= scale_;
      looks.push_back(AppearanceOf(look, font_));
      if (looks[i].fill.isValid()) painter.fillRect(QRectF(start, top, End(columns, i) - start, height), looks[i].fill);
    }
    if (settings_.printing.gridlines) {
      painter.setPen(QPen(QColor(190, 190, 190), LightestLine));
      for (std::size_t i = 0; i < columns.parts.size(); ++i) {
        const double start = columns.parts[i].second;
        painter.drawRect(QRectF(start, top, End(columns, i) - start, height));
      }
    }
    for (std::size_t i = 0; i < columns.parts.size(); ++i) {
      const auto [column, start] = columns.parts[i];
      DrawCell(painter, row, column, QRectF(start, top, End(columns, i) - start, height), looks, columns, i);
    }
  }

  void DrawCell(QPainter& painter, int row, int column, const QRectF& cell, const std::vector<CellAppearance>& looks,
                const Strip& columns, std::size_t at) const {
    const CellAppearance& look = looks[at];
    const CellView view = workbook_.ReadRC(row, column);
    const int type = std::abs(view.type);
    if (type == EmptyCell || (type == NumberCell && view.number == 0 && !settings_.showsZeros)) return;
    painter.setFont(look.font);
    painter.setPen(look.text.isValid() ? look.text : QColor(Qt::black));
    const QFontMetrics metrics(look.font, &device_);
    QRectF inside = cell.adjusted(Padding - 1, 0, -(Padding - 1), 0);
    Qt::Alignment side = type == NumberCell ? Qt::AlignRight : type == LogicalCell ? Qt::AlignHCenter : Qt::AlignLeft;
    if (view.type < 0 && type == TextCell && workbook_.IsError(row, column)) side = Qt::AlignHCenter;
    if (look.alignment & Qt::AlignHorizontal_Mask) side = look.alignment & Qt::AlignHorizontal_Mask;
    QString text;
    QRectF room = cell;
    if (type == NumberCell) {
      text =
          FittedNumber(workbook_, regional_, row, column, look.keepsDigits, metrics, static_cast<int>(inside.width()));
    } else if (type == LogicalCell) {
      text = FromUtf8(workbook_.FormattedTextRC(row, column));
    } else {
      text = FromUtf8(view.text.substr(0, LongestDrawn));
      const double needed = metrics.horizontalAdvance(text) + 2 * Padding;
      for (std::size_t i = at + 1; side == Qt::AlignLeft && room.width() < needed && i < columns.parts.size(); ++i) {
        if (workbook_.ReadRC(row, columns.parts[i].first).type != EmptyCell) break;
        // No lines through the text.
        painter.fillRect(QRectF(room.right() - LightestLine, cell.top() + 1, 2 * LightestLine, cell.height() - 2),
                         looks[i].fill.isValid() ? looks[i].fill : QColor(Qt::white));
        room.setRight(End(columns, i));
      }
      if (side == Qt::AlignLeft) inside.setWidth(std::max(inside.width(), needed));
    }
    painter.save();
    painter.setClipRect(room, Qt::IntersectClip);
    painter.drawText(inside, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine, text);
    painter.restore();
    painter.setFont(font_);
  }

  const Workbook& workbook_;
  const Regional& regional_;
  const SheetSettings& settings_;
  QPagedPaintDevice& device_;
  double scale_ = 1;  // pixels of the device in one of the screen
  QFont font_;
  QSizeF page_;
  double lineHeight_ = 0;
  double digitWidth_ = 0;
  double left_ = 0;  // width and height of the headings
  double top_ = 0;
  std::vector<Strip> rows_;
  std::vector<Strip> columns_;
};

}  // namespace

PageSetup PageOf(const SheetPrinting& printing) {
  PageSetup page{.landscape = printing.isLandscape,
                 .left = printing.left,
                 .top = printing.top,
                 .right = printing.right,
                 .bottom = printing.bottom};
  for (const QPageSize::PageSizeId size : PaperSizes) {
    if (QPageSize::name(size).toStdString() == printing.paper) page.size = size;
  }
  return page;
}

std::optional<CellRange> PrintedRange(const Workbook& workbook) {
  if (const auto& area = workbook.SettingsOfSheet().printing.area) return area;
  if (workbook.LastRow() == 0 || workbook.LastCol() == 0) return std::nullopt;
  return CellRange{1, 1, workbook.LastRow(), workbook.LastCol()};
}

int PrintSheet(const Workbook& workbook, const Regional& regional, const CellRange& range, QPagedPaintDevice& device,
               PageRange pages, int mostPages, int* total) {
  const SheetPainter sheet(workbook, regional, range, device);
  const int count = sheet.Pages();
  if (total) *total = count;
  QPainter painter;
  if (!painter.begin(&device)) return -1;
  if (count == 0) return 0;  // all is hidden
  const int first = std::clamp(pages.from, 1, count);
  int last = pages.to > 0 ? std::clamp(pages.to, first, count) : count;
  if (mostPages > 0) last = std::min(last, first + mostPages - 1);
  for (int number = first; number <= last; ++number) {
    if (number > first && !device.newPage()) return -1;
    sheet.Draw(painter, number);
  }
  return painter.end() ? last - first + 1 : -1;
}

}  // namespace tellurix
