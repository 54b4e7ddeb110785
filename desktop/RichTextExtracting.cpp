// Reports out of Qt's text documents.
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <algorithm>
#include <utility>

#include "desktop/RichTextDocument.h"
#include "desktop/RichTextFormats.h"

namespace tellurix {

namespace {

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

Table SelectedCells(const QTextCursor& cursor) {
  int firstRow = 0;
  int rows = 0;
  int firstColumn = 0;
  int columns = 0;
  cursor.selectedTableCells(&firstRow, &rows, &firstColumn, &columns);
  const QTextTable* table = cursor.currentTable();
  if (table == nullptr || rows <= 0 || columns <= 0) return {};
  const QTextDocument& document = *cursor.document();
  return Extractor(document, 0, document.characterCount()).ReadTable(*table, firstRow, rows, firstColumn, columns);
}

RichText SelectedWithin(const QTextTableCell& cell, const QTextDocument& document, int from, int to) {
  RichText result;
  Extractor extractor(document, from, to);
  for (QTextBlock block = document.findBlock(from); block.isValid() && block.position() <= to && cell.isValid();
       block = block.next()) {
    result.blocks.emplace_back(extractor.ReadBlock(block));
  }
  return result;
}

}  // namespace

RichText ToRichText(const QTextDocument& document) { return Extractor(document, 0, document.characterCount()).Whole(); }

RichText SelectedRichText(const QTextCursor& cursor, bool& endsInMark) {
  endsInMark = false;
  if (!cursor.hasSelection()) return {};
  const QTextDocument& document = *cursor.document();
  if (cursor.hasComplexSelection()) {
    RichText result;
    if (Table cells = SelectedCells(cursor); !cells.rows.empty()) result.blocks.emplace_back(std::move(cells));
    return result;
  }
  const int from = cursor.selectionStart();
  const int to = cursor.selectionEnd();
  const QTextTable* table = cursor.currentTable();
  RichText result = table != nullptr ? SelectedWithin(table->cellAt(from), document, from, to)
                                     : Extractor(document, from, to).Whole();
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

}  // namespace tellurix
