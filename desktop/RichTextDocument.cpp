#include "desktop/RichTextDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QScreen>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <algorithm>
#include <cmath>

#include "desktop/ReportObjects.h"
#include "report/TableGrid.h"

namespace tellurix {

namespace {

enum Property {
  // Of blocks.
  KeepWithNext = FirstFreeProperty,
  Filler,  // stands where Qt needs a block and the report has none, as long as it is empty
  // Of cells, in twips.
  CellEdge,
  CellTop,
  CellBottom,
  CellLeft,
  CellRight,
  NoCell,  // stands where a row has no cell
  RowLeft,
  RowGap,
  RowAlignment,
  RowHeader,
};

constexpr char16_t LineBreak = 0x2028;
constexpr int MaxColumns = 200;
constexpr int StandardWidth = 9000;  // twips, for tables that name no widths

int TwipsOfPixels(double pixels) { return static_cast<int>(std::lround(pixels * 1440.0 / ScreenDpi())); }

Qt::Alignment ToQt(Alignment alignment) {
  switch (alignment) {
    case Alignment::Centre:
      return Qt::AlignHCenter;
    case Alignment::Right:
      return Qt::AlignRight;
    case Alignment::Justify:
      return Qt::AlignJustify;
    case Alignment::Left:
      break;
  }
  return Qt::AlignLeft;
}

Alignment ToAlignment(Qt::Alignment alignment) {
  if (alignment & Qt::AlignHCenter) return Alignment::Centre;
  if (alignment & Qt::AlignRight) return Alignment::Right;
  if (alignment & Qt::AlignJustify) return Alignment::Justify;
  return Alignment::Left;
}

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

QTextBlockFormat FillerFormat() {
  QTextBlockFormat format;
  format.setProperty(Filler, true);
  return format;
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
    for (int i = 0; i < rows; ++i) {
      const TableRow& row = table.rows[static_cast<std::size_t>(i)];
      const auto& places = grid.rows[static_cast<std::size_t>(i)];
      int column = 0;
      const auto leaveOut = [&](int to) {
        for (; column < to; ++column) {
          QTextTableCell gap = made->cellAt(i, column);
          QTextCharFormat format = gap.format();
          format.setProperty(NoCell, true);
          gap.setFormat(format);
        }
      };
      for (std::size_t k = 0; k < row.cells.size(); ++k) {
        leaveOut(places[k].column);
        if (places[k].span > 1) made->mergeCells(i, column, 1, places[k].span);
        QTextTableCell cell = made->cellAt(i, column);
        QTextTableCellFormat format = CellFormat(row, row.cells[k]);
        if (places[k].span > 1) format.setTableCellColumnSpan(places[k].span);
        cell.setFormat(format);
        QTextCursor inside = cell.firstCursorPosition();
        bool first = true;
        for (const Paragraph& paragraph : row.cells[k].paragraphs) {
          const QTextBlockFormat blockFormat = ToQtFormat(paragraph.format);
          if (first) {
            inside.setBlockFormat(blockFormat);
          } else {
            inside.insertBlock(blockFormat, formats_.Of(MarkFormat(paragraph)));
          }
          first = false;
          AddRuns(paragraph, inside);
        }
        column += places[k].span;
      }
      leaveOut(grid.columns);
    }
    cursor_.setPosition(made->lastPosition() + 1);
    cursor_.setBlockFormat(FillerFormat());
    cursor_.setBlockCharFormat(formats_.Of({}));
    fresh_ = true;
  }

  QTextCursor& cursor_;
  bool fresh_;
  FormatStore formats_;
};

// Reads blocks out of a document, or out of the part of it in [from, to).
class Extractor {
 public:
  Extractor(const QTextDocument& document, int from, int to) : document_(document), from_(from), to_(to) {}

  RichText Whole() {
    RichText result;
    std::vector<bool> fillers;
    ReadFrame(*document_.rootFrame(), result, fillers);
    // A filler goes where it only keeps tables apart, or ends the document behind one.
    std::vector<Block> kept;
    kept.reserve(result.blocks.size());
    const std::size_t count = result.blocks.size();
    const auto isEdge = [&](std::size_t k) { return k >= count || std::holds_alternative<Table>(result.blocks[k]); };
    std::vector<bool> drop(count);
    for (std::size_t k = 0; k < count; ++k) drop[k] = fillers[k] && isEdge(k - 1) && isEdge(k + 1);
    for (std::size_t k = 0; k < count; ++k) {
      if (!drop[k]) kept.push_back(std::move(result.blocks[k]));
    }
    result.blocks = std::move(kept);
    return result;
  }

  // Cells of a table, as they stand.
  Table ReadTable(const QTextTable& table, int firstRow, int rows, int firstColumn, int columns) {
    const std::vector<int> edges = ColumnEdges(table);
    Table result;
    for (int i = firstRow; i < firstRow + rows; ++i) {
      TableRow row;
      bool known = false;
      row.header = i < table.format().headerRowCount();
      row.leftEdge = edges[static_cast<std::size_t>(firstColumn)];
      row.alignment = ToAlignment(table.format().alignment());
      for (int j = firstColumn; j < firstColumn + columns;) {
        const QTextTableCell cell = table.cellAt(i, j);
        const QTextCharFormat format = cell.format();
        const int next = std::max(cell.column() + cell.columnSpan(), j + 1);
        if (format.hasProperty(NoCell) && cell.firstPosition() == cell.lastPosition()) {
          j = next;
          if (!known) row.leftEdge = edges[static_cast<std::size_t>(std::min(j, table.columns()))];
          continue;
        }
        if (!known && format.hasProperty(CellEdge)) {
          known = true;
          row.leftEdge = LeftEdgeOf(table, i, j, format, row.leftEdge);
          row.cellGap = format.intProperty(RowGap);
          row.alignment = static_cast<Alignment>(format.intProperty(RowAlignment));
          row.header = format.boolProperty(RowHeader);
        }
        row.cells.push_back(ReadCell(table, cell, i, edges[static_cast<std::size_t>(std::min(next, table.columns()))]));
        j = next;
      }
      if (!row.cells.empty()) result.rows.push_back(std::move(row));
    }
    return result;
  }

  Paragraph ReadBlock(const QTextBlock& block) {
    Paragraph paragraph;
    paragraph.format = ToParagraphFormat(block);
    if (const QTextList* list = block.textList()) ReadListMark(*list, block, paragraph);
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextFragment fragment = it.fragment();
      const int start = std::max(fragment.position(), from_);
      const int end = std::min(fragment.position() + fragment.length(), to_);
      if (start >= end) continue;
      ReadFragment(fragment.text().mid(start - fragment.position(), end - start), fragment.charFormat(),
                   paragraph.runs);
    }
    return paragraph;
  }

 private:
  bool Touches(int first, int last) const { return last >= from_ && first <= to_; }

  void ReadFrame(const QTextFrame& frame, RichText& result, std::vector<bool>& fillers) {
    for (auto it = frame.begin(); !it.atEnd(); ++it) {
      if (const QTextFrame* child = it.currentFrame()) {
        if (!Touches(child->firstPosition(), child->lastPosition())) continue;
        if (const auto* table = qobject_cast<const QTextTable*>(child)) {
          Table read = ReadTable(*table, 0, table->rows(), 0, table->columns());
          if (read.rows.empty()) continue;
          result.blocks.emplace_back(std::move(read));
          fillers.push_back(false);
        } else {
          ReadFrame(*child, result, fillers);
        }
      } else {
        const QTextBlock block = it.currentBlock();
        if (!block.isValid() || !Touches(block.position(), block.position() + block.length() - 1)) continue;
        result.blocks.emplace_back(ReadBlock(block));
        fillers.push_back(block.length() == 1 && block.blockFormat().hasProperty(Filler));
      }
    }
  }

  // The row's own left edge belongs to its first cell; further right the edge of the cell before counts.
  static int LeftEdgeOf(const QTextTable& table, int row, int column, const QTextCharFormat& format, int otherwise) {
    if (column > 0) {
      const QTextCharFormat before = table.cellAt(row, column - 1).format();
      if (before.hasProperty(CellEdge)) return before.intProperty(CellEdge);
    }
    return format.hasProperty(RowLeft) ? format.intProperty(RowLeft) : otherwise;
  }

  static std::vector<int> ColumnEdges(const QTextTable& table) {
    const QList<QTextLength> widths = table.format().columnWidthConstraints();
    std::vector<int> edges{0};
    for (int k = 0; k < table.columns(); ++k) {
      const QTextLength width = k < widths.size() ? widths[k] : QTextLength();
      const int own = width.type() == QTextLength::FixedLength ? TwipsOfPixels(width.rawValue()) : 0;
      edges.push_back(edges.back() + (own > 0 ? own : StandardWidth / std::max(table.columns(), 1)));
    }
    return edges;
  }

  TableCell ReadCell(const QTextTable& table, const QTextTableCell& cell, int row, int edge) {
    TableCell result;
    const QTextCharFormat format = cell.format();
    if (format.hasProperty(CellEdge)) {
      result.rightEdge = format.intProperty(CellEdge);
      result.borders = {format.intProperty(CellTop), format.intProperty(CellBottom), format.intProperty(CellLeft),
                        format.intProperty(CellRight)};
    } else {
      result.rightEdge = edge;
      if (table.format().border() > 0) result.borders = {10, 10, 10, 10};
    }
    // A cell that reaches down from a row above is empty here.
    if (cell.row() == row) {
      const int last = cell.lastPosition();
      for (QTextBlock block = cell.firstCursorPosition().block(); block.isValid() && block.position() <= last;
           block = block.next()) {
        result.paragraphs.push_back(ReadBlock(block));
      }
    }
    if (result.paragraphs.empty()) result.paragraphs.emplace_back();
    return result;
  }

  static void ReadListMark(const QTextList& list, const QTextBlock& block, Paragraph& paragraph) {
    const int indent = 360 * std::max(list.format().indent(), 1);
    paragraph.format.leftIndent += indent;
    paragraph.format.firstIndent = -360;
    paragraph.format.tabs.assign(1, TabStop{paragraph.format.leftIndent});
    const bool numbered = list.format().style() <= QTextListFormat::ListDecimal;
    const std::string mark = numbered ? list.itemText(block).toStdString() : std::string("•");
    paragraph.runs.push_back({mark + "\t", {}, nullptr});
  }

  static void Put(Run run, std::vector<Run>& runs) {
    if (!runs.empty() && !run.picture && !runs.back().picture && runs.back().format == run.format) {
      runs.back().text += run.text;
    } else {
      runs.push_back(std::move(run));
    }
  }

  static void ReadFragment(const QString& text, const QTextCharFormat& format, std::vector<Run>& runs) {
    CharFormat charFormat = ToCharFormat(format);
    if (format.objectType() == InlineObject) {
      Run run;
      run.picture = format.property(Picture).value<PicturePointer>();
      run.format = std::move(charFormat);
      run.format.hidden = format.boolProperty(IsHidden);
      run.text = format.property(HiddenText).toString().toStdString();
      if (!run.picture && run.text.empty()) return;
      for (const QChar c : text) {
        if (c == QChar(ObjectCharacter)) Put(run, runs);
      }
      return;
    }
    QString plain = text;
    plain.remove(QChar(ObjectCharacter));
    plain.replace(QChar(LineBreak), QLatin1Char('\n'));
    if (!plain.isEmpty()) Put({plain.toStdString(), std::move(charFormat), nullptr}, runs);
  }

  const QTextDocument& document_;
  int from_;
  int to_;
};

InlineObjects* ObjectsOf(const QTextDocument& document) {
  return document.findChild<InlineObjects*>(QString(), Qt::FindDirectChildrenOnly);
}

QTextCharFormat FormatAt(const QTextDocument& document, int position) {
  const QTextBlock block = document.findBlock(position);
  if (!block.isValid() || position >= block.position() + block.length() - 1) return {};
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    if (it.fragment().contains(position)) return it.fragment().charFormat();
  }
  return {};
}

}  // namespace

double ScreenDpi() {
  static const double dpi = [] {
    if (QGuiApplication::testAttribute(Qt::AA_Use96Dpi)) return 96.0;
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? std::round(screen->logicalDotsPerInchY()) : 96.0;
  }();
  return dpi;
}

double PixelsOfTwips(int twips) { return twips * ScreenDpi() / 1440.0; }

QTextBlockFormat ToQtFormat(const ParagraphFormat& format) {
  QTextBlockFormat result;
  result.setAlignment(ToQt(format.alignment));
  // Of a block's measures to the left and right Qt fits only this one, and tabs, to the device.
  if (format.leftIndent > 0) result.setIndent(format.leftIndent);
  if (format.leftIndent < 0) result.setLeftMargin(PixelsOfTwips(format.leftIndent));
  if (format.rightIndent != 0) result.setRightMargin(PixelsOfTwips(format.rightIndent));
  if (format.firstIndent != 0) result.setTextIndent(PixelsOfTwips(format.firstIndent));
  if (format.spaceBefore != 0) result.setTopMargin(PixelsOfTwips(format.spaceBefore));
  if (format.spaceAfter != 0) result.setBottomMargin(PixelsOfTwips(format.spaceAfter));
  if (format.keepWithNext) result.setProperty(KeepWithNext, true);
  if (!format.tabs.empty()) result.setTabPositions(ToQtTabs(format.tabs));
  // Qt gives an empty block ahead of a table no height unless it has a background.
  result.setBackground(Qt::NoBrush);
  return result;
}

ParagraphFormat ToParagraphFormat(const QTextBlock& block) {
  const QTextBlockFormat format = block.blockFormat();
  ParagraphFormat result;
  result.alignment = ToAlignment(format.alignment());
  result.leftIndent =
      TwipsOfPixels(format.leftMargin()) + format.indent() * TwipsOfPixels(block.document()->indentWidth());
  result.rightIndent = TwipsOfPixels(format.rightMargin());
  result.firstIndent = TwipsOfPixels(format.textIndent());
  result.spaceBefore = TwipsOfPixels(format.topMargin());
  result.spaceAfter = TwipsOfPixels(format.bottomMargin());
  result.keepWithNext = format.boolProperty(KeepWithNext);
  for (const QTextOption::Tab& tab : format.tabPositions()) {
    TabStop stop{TwipsOfPixels(tab.position)};
    if (tab.type == QTextOption::DelimiterTab) {
      stop.decimal = true;
    } else if (tab.type == QTextOption::CenterTab) {
      stop.alignment = Alignment::Centre;
    } else if (tab.type == QTextOption::RightTab) {
      stop.alignment = Alignment::Right;
    }
    result.tabs.push_back(stop);
  }
  return result;
}

QList<QTextOption::Tab> ToQtTabs(const std::vector<TabStop>& tabs) {
  QList<QTextOption::Tab> result;
  for (const TabStop& tab : tabs) {
    QTextOption::TabType type = QTextOption::LeftTab;
    if (tab.decimal) {
      type = QTextOption::DelimiterTab;
    } else if (tab.alignment == Alignment::Centre) {
      type = QTextOption::CenterTab;
    } else if (tab.alignment == Alignment::Right) {
      type = QTextOption::RightTab;
    }
    result.append(QTextOption::Tab(PixelsOfTwips(tab.position), type, QLatin1Char('.')));
  }
  return result;
}

QTextCharFormat ToQtFormat(const CharFormat& format) {
  QTextCharFormat result;
  result.setFontFamilies({QString::fromStdString(format.font)});
  result.setFontPointSize(std::max(format.halfPoints, 2) / 2.0);
  if (format.bold) result.setFontWeight(QFont::Bold);
  if (format.italic) result.setFontItalic(true);
  if (format.underline) result.setFontUnderline(true);
  if (format.strike) result.setFontStrikeOut(true);
  if (format.script == Script::Sub) result.setVerticalAlignment(QTextCharFormat::AlignSubScript);
  if (format.script == Script::Super) result.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
  if (format.colour != 0) result.setForeground(QColor::fromRgb(format.colour & 0xFFFFFF));
  return result;
}

CharFormat ToCharFormat(const QTextCharFormat& format) {
  CharFormat result;
  if (const QStringList families = format.fontFamilies().toStringList(); !families.isEmpty())
    result.font = families.first().toStdString();
  if (format.hasProperty(QTextFormat::FontPointSize)) {
    result.halfPoints = static_cast<int>(std::lround(2 * format.fontPointSize()));
  } else if (format.hasProperty(QTextFormat::FontPixelSize)) {
    result.halfPoints = static_cast<int>(std::lround(1.5 * format.intProperty(QTextFormat::FontPixelSize)));
  } else if (format.hasProperty(QTextFormat::FontSizeAdjustment)) {
    static constexpr int sizes[] = {14, 16, 20, 24, 30, 36};  // from -2 to 3
    result.halfPoints = sizes[std::clamp(format.intProperty(QTextFormat::FontSizeAdjustment), -2, 3) + 2];
  }
  result.halfPoints = std::max(result.halfPoints, 2);
  result.bold = format.fontWeight() >= QFont::DemiBold;
  result.italic = format.fontItalic();
  result.underline = format.fontUnderline();
  result.strike = format.fontStrikeOut();
  if (format.verticalAlignment() == QTextCharFormat::AlignSubScript) result.script = Script::Sub;
  if (format.verticalAlignment() == QTextCharFormat::AlignSuperScript) result.script = Script::Super;
  if (const QBrush brush = format.foreground(); brush.style() != Qt::NoBrush)
    result.colour = brush.color().rgb() & 0xFFFFFF;
  return result;
}

void PrepareDocument(QTextDocument& document) {
  QFont font(QStringLiteral("Arial"));
  font.setPointSizeF(10);
  document.setDefaultFont(font);
  document.setIndentWidth(PixelsOfTwips(1));
  auto* objects = new InlineObjects(&document);
  document.documentLayout()->registerHandler(InlineObject, objects);
  ResetDocument(document);
}

void ResetDocument(QTextDocument& document) {
  document.clear();
  QTextCursor cursor(&document);
  cursor.setBlockFormat(FillerFormat());
  cursor.setBlockCharFormat(ToQtFormat(CharFormat{}));
  document.clearUndoRedoStacks();
}

void SetPaperSize(QTextDocument& document, QSizeF size) {
  if (auto* objects = ObjectsOf(document)) objects->paper = size;
}

bool KeepsWithNext(const QTextBlock& block) { return block.blockFormat().boolProperty(KeepWithNext); }

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

RichText ToRichText(const QTextDocument& document) { return Extractor(document, 0, document.characterCount()).Whole(); }

RichText SelectedRichText(const QTextCursor& cursor, bool& endsInMark) {
  endsInMark = false;
  if (!cursor.hasSelection()) return {};
  const QTextDocument& document = *cursor.document();
  if (cursor.hasComplexSelection()) {
    int firstRow = 0;
    int rows = 0;
    int firstColumn = 0;
    int columns = 0;
    cursor.selectedTableCells(&firstRow, &rows, &firstColumn, &columns);
    RichText result;
    if (const QTextTable* table = cursor.currentTable(); table != nullptr && rows > 0 && columns > 0) {
      Table read =
          Extractor(document, 0, document.characterCount()).ReadTable(*table, firstRow, rows, firstColumn, columns);
      if (!read.rows.empty()) result.blocks.emplace_back(std::move(read));
    }
    return result;
  }
  const int from = cursor.selectionStart();
  const int to = cursor.selectionEnd();
  RichText result;
  if (const QTextTable* table = cursor.currentTable()) {  // within one cell
    const QTextTableCell cell = table->cellAt(from);
    Extractor extractor(document, from, to);
    for (QTextBlock block = document.findBlock(from); block.isValid() && block.position() <= to && cell.isValid();
         block = block.next()) {
      result.blocks.emplace_back(extractor.ReadBlock(block));
    }
  } else {
    result = Extractor(document, from, to).Whole();
  }
  // A selection that ends at the start of a paragraph holds the mark of the one before.
  const auto isParagraph = [&](std::size_t fromEnd) {
    return result.blocks.size() >= fromEnd &&
           std::holds_alternative<Paragraph>(result.blocks[result.blocks.size() - fromEnd]);
  };
  if (document.findBlock(to).position() == to && isParagraph(1) && isParagraph(2) &&
      std::get<Paragraph>(result.blocks.back()).runs.empty()) {
    result.blocks.pop_back();
    endsInMark = true;
  }
  return result;
}

Paragraph ToParagraph(const QTextBlock& block, int end) {
  return Extractor(*block.document(), 0, end).ReadBlock(block);
}

bool IsHiddenObject(const QTextDocument& document, int position) {
  if (document.characterAt(position) != QChar(ObjectCharacter)) return false;
  const QTextCharFormat format = FormatAt(document, position);
  return format.objectType() == InlineObject && format.boolProperty(IsHidden);
}

std::shared_ptr<const PictureGroup> PictureAt(const QTextDocument& document, int position) {
  if (document.characterAt(position) != QChar(ObjectCharacter)) return nullptr;
  const QTextCharFormat format = FormatAt(document, position);
  if (format.objectType() != InlineObject || format.boolProperty(IsHidden)) return nullptr;
  return format.property(Picture).value<PicturePointer>();
}

QString ToPlainText(const RichText& text, bool endsInMark) {
  std::string plain;
  const auto add = [&](const Paragraph& paragraph) {
    for (const Run& run : paragraph.runs) {
      if (!run.format.hidden && !run.picture) plain += run.text;
    }
  };
  for (const Block& block : text.blocks) {
    if (const auto* table = std::get_if<Table>(&block)) {
      for (const TableRow& row : table->rows) {
        for (const TableCell& cell : row.cells) {
          if (&cell != &row.cells.front()) plain += '\t';
          for (const Paragraph& paragraph : cell.paragraphs) {
            if (&paragraph != &cell.paragraphs.front()) plain += ' ';
            add(paragraph);
          }
        }
        plain += '\n';
      }
    } else {
      add(std::get<Paragraph>(block));
      plain += '\n';
    }
  }
  if (!endsInMark && plain.ends_with('\n')) plain.pop_back();
  return QString::fromStdString(RemoveHiddenTags(plain));
}

}  // namespace tellurix
