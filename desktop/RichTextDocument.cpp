#include "desktop/RichTextDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>

#include "desktop/ReportObjects.h"
#include "desktop/RichTextFormats.h"

namespace tellurix {

namespace {

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
