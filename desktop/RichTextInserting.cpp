// Reports into Qt's text documents.
#include <QTextTable>
#include <algorithm>
#include <utility>

#include "desktop/RichTextDocument.h"
#include "desktop/RichTextFormats.h"
#include "report/TableGrid.h"

namespace tellurix {

namespace {

constexpr int MaxColumns = 200;

// Text without the characters by which Qt marks blocks, frames and objects.
QString ToQtText(const std::string& text) {
  QString result = QString::fromStdString(text);
  for (QChar& c : result) {
    const char16_t unit = c.unicode();
    if (unit == '\n' || unit == 0x2029) {
      c = QChar(LineBreak);
    } else if ((unit < 0x20 && unit != '\t') || unit == ObjectCharacter || unit == 0xFDD0 || unit == 0xFDD1) {
      c = QChar(0xFFFD);
    }
  }
  return result;
}

// The few formats of a report, made once.
class FormatStore {
 public:
  const QTextCharFormat& Of(const CharFormat& format) {
    for (const auto& [known, made] : formats_) {
      if (known == format) return made;
    }
    if (formats_.size() > 64) formats_.clear();
    formats_.emplace_back(format, ToQtFormat(format));
    return formats_.back().second;
  }

 private:
  std::vector<std::pair<CharFormat, QTextCharFormat>> formats_;
};

// Writes blocks at a cursor.
class Inserter {
 public:
  // `fresh`: the cursor stands in an empty block that the first block may take.
  Inserter(QTextCursor& cursor, bool fresh) : cursor_(cursor), fresh_(fresh) {}

  void Add(std::span<const Block> blocks) {
    for (std::size_t k = 0; k < blocks.size(); ++k) {
      if (const auto* table = std::get_if<Table>(&blocks[k])) {
        const auto* next = k + 1 < blocks.size() ? std::get_if<Paragraph>(&blocks[k + 1]) : nullptr;
        const bool beforeTable = k + 2 < blocks.size() && std::holds_alternative<Table>(blocks[k + 2]);
        AddTable(*table, next != nullptr ? SpaceBehindTable(*next, beforeTable) : 0);
      } else {
        AddParagraph(std::get<Paragraph>(blocks[k]));
      }
    }
  }

  // In twips. Qt gives an empty block between two tables no height.
  static int SpaceBehindTable(const Paragraph& next, bool beforeTable) {
    constexpr int emptyLine = 230;  // of 10 points
    return next.format.spaceBefore + (beforeTable && next.runs.empty() ? emptyLine : 0);
  }

  void AddParagraph(const Paragraph& paragraph) {
    const QTextBlockFormat format = ToQtFormat(paragraph.format);
    const QTextCharFormat& mark = formats_.Of(MarkFormat(paragraph));
    if (fresh_) {
      cursor_.setBlockFormat(format);
      cursor_.setBlockCharFormat(mark);
      fresh_ = false;
    } else {
      cursor_.insertBlock(format, mark);
    }
    AddRuns(paragraph, cursor_);
  }

  void AddRuns(const Paragraph& paragraph, QTextCursor& cursor) {
    for (const Run& run : paragraph.runs) {
      const QTextCharFormat& format = formats_.Of(run.format);
      if (!run.picture && !run.format.hidden) {
        cursor.insertText(ToQtText(run.text), format);
        continue;
      }
      QTextCharFormat object = format;
      object.setObjectType(InlineObject);
      if (run.picture) object.setProperty(Picture, QVariant::fromValue(run.picture));
      if (run.format.hidden) object.setProperty(IsHidden, true);
      if (!run.text.empty()) object.setProperty(HiddenText, QString::fromStdString(run.text));
      cursor.insertText(QString(QChar(ObjectCharacter)), object);
    }
  }

  // `spaceBehind`, in twips: what the paragraph behind the table asks for above itself.
  void AddTable(const Table& table, int spaceBehind) {
    Table filled;
    for (const TableRow& row : table.rows) {
      if (!row.cells.empty()) filled.rows.push_back(row);
    }
    if (filled.rows.empty()) return;
    TableGrid grid = FindGrid(filled);
    std::size_t cells = 0;
    for (const TableRow& row : filled.rows) cells += row.cells.size();
    const auto places = [&] { return filled.rows.size() * static_cast<std::size_t>(grid.columns); };
    // Rows of unlike edges take more places than they have cells; then the k-th cell stands in the k-th column.
    if (places() > 50000 && places() > 20 * cells) {
      Table narrow = filled;
      for (TableRow& row : narrow.rows) row.cells.back().rightEdge = row.leftEdge;
      grid = FindGrid(narrow);
    }
    if (grid.columns > MaxColumns || cursor_.currentTable() != nullptr ||
        (places() > 1000000 && places() > 20 * cells)) {
      AddAsLines(filled);
      return;
    }
    PlaceTable(filled, grid, spaceBehind);
  }

  bool Fresh() const { return fresh_; }

 private:
  // The format of the paragraph's mark, which gives an empty paragraph its height: that of the last visible run.
  static CharFormat MarkFormat(const Paragraph& paragraph) {
    for (auto run = paragraph.runs.rbegin(); run != paragraph.runs.rend(); ++run) {
      if (!run->format.hidden && !run->picture) return run->format;
    }
    return {};
  }

  void AddAsLines(const Table& table) {
    for (const TableRow& row : table.rows) {
      Paragraph line;
      for (const TableCell& cell : row.cells) {
        if (&cell != &row.cells.front()) line.runs.push_back({"\t", {}, nullptr});
        for (const Paragraph& paragraph : cell.paragraphs) {
          if (&paragraph != &cell.paragraphs.front()) line.runs.push_back({" ", {}, nullptr});
          line.runs.insert(line.runs.end(), paragraph.runs.begin(), paragraph.runs.end());
        }
      }
      AddParagraph(line);
    }
  }

  static QTextTableFormat TableFormat(const Table& table, const TableGrid& grid) {
    QTextTableFormat format;
    format.setBorder(0);
    format.setBorderCollapse(false);
    format.setCellSpacing(0);
    format.setCellPadding(0);
    format.setAlignment(ToQt(table.rows.front().alignment));
    int heads = 0;
    while (heads < static_cast<int>(table.rows.size()) && table.rows[static_cast<std::size_t>(heads)].header) ++heads;
    format.setHeaderRowCount(heads);
    QList<QTextLength> widths;
    if (!grid.edges.empty()) {
      format.setLeftMargin(PixelsOfTwips(grid.edges.front()));
      for (std::size_t k = 1; k < grid.edges.size(); ++k)
        widths.append(QTextLength(QTextLength::FixedLength, PixelsOfTwips(grid.edges[k] - grid.edges[k - 1])));
    } else {
      for (int k = 0; k < grid.columns; ++k)
        widths.append(QTextLength(QTextLength::FixedLength, PixelsOfTwips(StandardWidth / grid.columns)));
    }
    format.setColumnWidthConstraints(widths);
    return format;
  }

  QTextTableCellFormat CellFormat(const TableRow& row, const TableCell& cell) {
    QTextTableCellFormat format;
    format.merge(formats_.Of(cell.paragraphs.empty() ? CharFormat{} : MarkFormat(cell.paragraphs.front())));
    const auto border = [&](int width, auto setWidth, auto setStyle, auto setBrush) {
      if (width <= 0) return;
      (format.*setWidth)(PixelsOfTwips(width));
      (format.*setStyle)(QTextFrameFormat::BorderStyle_Solid);
      (format.*setBrush)(QBrush(Qt::black));
    };
    using Cell = QTextTableCellFormat;
    border(cell.borders.top, &Cell::setTopBorder, &Cell::setTopBorderStyle, &Cell::setTopBorderBrush);
    border(cell.borders.bottom, &Cell::setBottomBorder, &Cell::setBottomBorderStyle, &Cell::setBottomBorderBrush);
    border(cell.borders.left, &Cell::setLeftBorder, &Cell::setLeftBorderStyle, &Cell::setLeftBorderBrush);
    border(cell.borders.right, &Cell::setRightBorder, &Cell::setRightBorderStyle, &Cell::setRightBorderBrush);
    format.setLeftPadding(PixelsOfTwips(std::max(row.cellGap, 0)));
    format.setRightPadding(PixelsOfTwips(std::max(row.cellGap, 0)));
    // So it does at the top and the bottom of a cell.
    if (!cell.paragraphs.empty()) {
      format.setTopPadding(PixelsOfTwips(std::max(cell.paragraphs.front().format.spaceBefore, 0)));
      format.setBottomPadding(PixelsOfTwips(std::max(cell.paragraphs.back().format.spaceAfter, 0)));
    }
    format.setProperty(CellEdge, cell.rightEdge);
    const auto set = [&](int property, int value) {
      if (value != 0) format.setProperty(property, value);
    };
    set(CellTop, cell.borders.top);
    set(CellBottom, cell.borders.bottom);
    set(CellLeft, cell.borders.left);
    set(CellRight, cell.borders.right);
    format.setProperty(RowLeft, row.leftEdge);
    format.setProperty(RowGap, row.cellGap);
    set(RowAlignment, static_cast<int>(row.alignment));
    if (row.header) format.setProperty(RowHeader, true);
    return format;
  }

  void PlaceTable(const Table& table, const TableGrid& grid, int spaceBehind) {
    if (fresh_) cursor_.setBlockFormat(FillerFormat());
    const int rows = static_cast<int>(table.rows.size());
    // Qt leaves out the space between a table and the paragraphs around it; the table's own margins stand in for it.
    QTextTableFormat tableFormat = TableFormat(table, grid);
    tableFormat.setTopMargin(cursor_.blockFormat().bottomMargin());
    tableFormat.setBottomMargin(PixelsOfTwips(std::max(spaceBehind, 0)));
    QTextTable* made = cursor_.insertTable(rows, grid.columns, tableFormat);
    for (int i = 0; i < rows; ++i) FillRow(*made, i, table.rows[static_cast<std::size_t>(i)], grid);
    cursor_.setPosition(made->lastPosition() + 1);
    cursor_.setBlockFormat(FillerFormat());
    cursor_.setBlockCharFormat(formats_.Of({}));
    fresh_ = true;
  }

  void FillRow(QTextTable& table, int index, const TableRow& row, const TableGrid& grid) {
    const auto& places = grid.rows[static_cast<std::size_t>(index)];
    int column = 0;
    const auto leaveOut = [&](int to) {
      for (; column < to; ++column) {
        QTextTableCell gap = table.cellAt(index, column);
        QTextCharFormat format = gap.format();
        format.setProperty(NoCell, true);
        gap.setFormat(format);
      }
    };
    for (std::size_t k = 0; k < row.cells.size(); ++k) {
      const int span = places[k].span;
      leaveOut(places[k].column);
      if (span > 1) table.mergeCells(index, column, 1, span);
      QTextTableCell cell = table.cellAt(index, column);
      QTextTableCellFormat format = CellFormat(row, row.cells[k]);
      if (span > 1) format.setTableCellColumnSpan(span);
      cell.setFormat(format);
      FillCell(cell, row.cells[k].paragraphs);
      column += span;
    }
    leaveOut(grid.columns);
  }

  void FillCell(const QTextTableCell& cell, const std::vector<Paragraph>& paragraphs) {
    QTextCursor inside = cell.firstCursorPosition();
    bool first = true;
    for (const Paragraph& paragraph : paragraphs) {
      const QTextBlockFormat format = ToQtFormat(paragraph.format);
      if (first) {
        inside.setBlockFormat(format);
      } else {
        inside.insertBlock(format, formats_.Of(MarkFormat(paragraph)));
      }
      first = false;
      AddRuns(paragraph, inside);
    }
  }

  QTextCursor& cursor_;
  bool fresh_;
  FormatStore formats_;
};

}  // namespace

int AppendBlocks(QTextDocument& document, std::span<const Block> blocks) {
  const QTextBlock last = document.lastBlock();
  const bool fresh = last.length() == 1 && last.blockFormat().hasProperty(Filler);
  const int start = fresh ? last.position() : last.position() + last.length();
  QTextCursor cursor(&document);
  cursor.movePosition(QTextCursor::End);
  cursor.beginEditBlock();
  Inserter inserter(cursor, fresh);
  inserter.Add(blocks);
  cursor.endEditBlock();
  return blocks.empty() ? last.position() : start;
}

void InsertRichText(QTextCursor& cursor, const RichText& text, bool endsInMark) {
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  if (!text.blocks.empty()) {
    const QTextBlockFormat ownFormat = cursor.blockFormat();
    const bool emptyBlock = cursor.block().length() == 1;
    const bool filler = emptyBlock && ownFormat.hasProperty(Filler);
    const auto* first = std::get_if<Paragraph>(&text.blocks.front());
    const bool several = text.blocks.size() > 1 || endsInMark;
    Inserter inserter(cursor, filler || (cursor.atBlockStart() && (several || emptyBlock)));
    std::size_t next = 0;
    if (first != nullptr && !inserter.Fresh()) {
      inserter.AddRuns(*first, cursor);
      next = 1;
    }
    inserter.Add(std::span(text.blocks).subspan(next));
    if (!inserter.Fresh()) {
      if (endsInMark) {
        QTextBlockFormat format = ownFormat;
        format.clearProperty(Filler);
        if (!cursor.atEnd() || !filler) cursor.insertBlock(format);
      }
    } else if (cursor.block().length() > 1) {
      cursor.setBlockFormat(ownFormat);  // what stood behind the cursor
    }
  }
  cursor.endEditBlock();
}

}  // namespace tellurix
