#include "desktop/ReportPrinting.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextTable>
#include <algorithm>
#include <vector>

namespace tellurix {

namespace {

// A paragraph or a table of the report's main flow, with its place in a flow without pages.
struct FlowUnit {
  QTextBlock block;
  QTextFrame* frame = nullptr;
  double top = 0;
  double bottom = 0;
  bool keepWithNext = false;
};

std::vector<FlowUnit> FindUnits(const QTextDocument& document) {
  std::vector<FlowUnit> units;
  const QAbstractTextDocumentLayout& layout = *document.documentLayout();
  for (auto it = document.rootFrame()->begin(); !it.atEnd(); ++it) {
    FlowUnit unit;
    QRectF place;
    if (QTextFrame* frame = it.currentFrame()) {
      unit.frame = frame;
      place = layout.frameBoundingRect(frame);
      unit.keepWithNext = KeepsWithNext(document.findBlock(frame->lastPosition()));
    } else {
      unit.block = it.currentBlock();
      place = layout.blockBoundingRect(unit.block);
      unit.keepWithNext = KeepsWithNext(unit.block);
    }
    unit.top = place.top();
    unit.bottom = place.bottom();
    units.push_back(unit);
  }
  return units;
}

void BreakBefore(const FlowUnit& unit) {
  if (unit.frame != nullptr) {
    auto* table = qobject_cast<QTextTable*>(unit.frame);
    if (table == nullptr) return;
    QTextTableFormat format = table->format();
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    table->setFormat(format);
  } else {
    QTextBlockFormat format;
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(unit.block).mergeBlockFormat(format);
  }
}

// Puts page breaks ahead of what belongs together and would fall on two pages. The places are found in one pass over
// the flow without pages; natural breaks inside long paragraphs and tables are taken to waste no room.
class PageBreaker {
 public:
  PageBreaker(std::vector<FlowUnit> units, double height) : units_(std::move(units)), height_(height) {}

  void Run() {
    for (std::size_t first = 0; first < units_.size();) {
      std::size_t last = first;
      while (last + 1 < units_.size() && units_[last].keepWithNext) ++last;
      if (units_[last].bottom - units_[first].top <= height_) {
        Place(first, last);
      } else {
        for (std::size_t k = first; k <= last; ++k) Place(k, k);
      }
      first = last + 1;
    }
  }

 private:
  void Place(std::size_t first, std::size_t last) {
    const double top = units_[first].top;
    const double bottom = units_[last].bottom;
    if (bottom - pageTop_ <= height_) return;
    const bool text = first == last && units_[first].frame == nullptr;  // a paragraph may go over two pages
    if (!text && bottom - top <= height_ && top > pageTop_) {
      BreakBefore(units_[first]);
      pageTop_ = top;
    }
    while (bottom - pageTop_ > height_) pageTop_ += height_;
  }

  std::vector<FlowUnit> units_;
  double height_;
  double pageTop_ = 0;
};

// Tables that reach over the right edge get narrower columns.
void NarrowTables(QTextDocument& document, double width) {
  for (QTextFrame* frame : document.rootFrame()->childFrames()) {
    auto* table = qobject_cast<QTextTable*>(frame);
    if (table == nullptr) continue;
    QTextTableFormat format = table->format();
    QList<QTextLength> widths = format.columnWidthConstraints();
    double total = 0;
    for (const QTextLength& length : widths) total += length.rawValue();
    const double room = width - std::max(format.leftMargin(), 0.0);
    if (total <= room || room <= 0) continue;
    for (QTextLength& length : widths) length = QTextLength(QTextLength::FixedLength, length.rawValue() * room / total);
    format.setColumnWidthConstraints(widths);
    table->setFormat(format);
  }
}

// Qt does not fit these measures to the device.
void FitMargins(QTextDocument& document, double scale) {
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    QTextBlockFormat format = block.blockFormat();
    if (format.leftMargin() == 0 && format.rightMargin() == 0 && format.textIndent() == 0) continue;
    format.setLeftMargin(scale * format.leftMargin());
    format.setRightMargin(scale * format.rightMargin());
    format.setTextIndent(scale * format.textIndent());
    QTextCursor(block).setBlockFormat(format);
  }
}

}  // namespace

QPageLayout ToPageLayout(const PageSetup& setup) {
  return {QPageSize(setup.size), setup.landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
          QMarginsF(10 * setup.left, 10 * setup.top, 10 * setup.right, 10 * setup.bottom), QPageLayout::Millimeter};
}

PageSetup ToPageSetup(const QPageLayout& layout) {
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter) / 10;
  return {layout.pageSize().id(), layout.orientation() == QPageLayout::Landscape,
          margins.left(),         margins.top(),
          margins.right(),        margins.bottom()};
}

int PrintRichText(const RichText& text, QPagedPaintDevice& device, PageRange range) {
  const QSizeF page(device.width(), device.height());  // inside the margins
  QTextDocument document;
  document.setUndoRedoEnabled(false);
  document.setDocumentMargin(0);
  PrepareDocument(document);
  QAbstractTextDocumentLayout& layout = *document.documentLayout();
  layout.setPaintDevice(&device);
  SetPaperSize(document, page);
  AppendBlocks(document, text.blocks);
  const double scale = device.logicalDpiX() / ScreenDpi();
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  NarrowTables(document, page.width() / scale);
  FitMargins(document, scale);
  cursor.endEditBlock();
  document.setPageSize(QSizeF(page.width(), -1));
  cursor.beginEditBlock();
  PageBreaker(FindUnits(document), page.height()).Run();
  cursor.endEditBlock();
  document.setPageSize(page);

  QPainter target;
  if (!target.begin(&device)) return -1;
  const int pages = layout.pageCount() > 0 ? layout.pageCount() : 1;
  const int first = std::clamp(range.from, 1, pages);
  const int last = range.to > 0 ? std::clamp(range.to, first, pages) : pages;
  for (int number = first; number <= last; ++number) {
    if (number > first && !device.newPage()) return -1;
    const QRectF part(0, (number - 1) * page.height(), page.width(), page.height());
    target.save();
    target.translate(0, -part.top());
    target.setClipRect(part);
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = part;
    context.palette.setColor(QPalette::Text, Qt::black);
    layout.draw(&target, context);
    target.restore();
  }
  return target.end() ? last - first + 1 : -1;
}

bool WritePdf(const RichText& text, const PageSetup& setup, const QString& title, const QString& path, QString& error) {
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    error = file.errorString();
    return false;
  }
  bool drawn = false;
  {
    QPdfWriter writer(&file);
    writer.setPageLayout(ToPageLayout(setup));
    writer.setTitle(title);
    writer.setCreator(QStringLiteral("Tellurix"));
    drawn = PrintRichText(text, writer) > 0;
  }
  if (drawn && file.commit()) return true;
  error = drawn ? file.errorString() : QStringLiteral("The pages could not be drawn.");
  return false;
}

}  // namespace tellurix
