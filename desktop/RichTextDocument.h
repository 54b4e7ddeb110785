// Reports as Qt's text documents, both ways.
//
// A paragraph is a text block, a table a QTextTable. Lengths are pixels of the screen, kept as fractions so that twips
// come back exactly. Hidden runs and pictures are inline objects: a hidden run takes no room and keeps its text in the
// object's format. What Qt's tables do not know (the edges of each cell, the gaps, alignment and head of each row)
// stands in user properties of the cells.
//
// Not every document can be held: control characters, frame marks and U+2029 in text, sizes below one point, tables
// in cells, and tables of more than 200 columns (they become lines with tabs).
#pragma once

#include <QList>
#include <QSizeF>
#include <QTextBlock>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>
#include <memory>
#include <span>
#include <vector>

#include "report/RichText.h"

namespace tellurix {

// Makes an empty document fit to hold reports: inline objects, standard font, a first block that stands for nothing.
// Every document given to the functions below has gone through here.
void PrepareDocument(QTextDocument& document);
// Empties a document that was made fit before.
void ResetDocument(QTextDocument& document);

// The room on a page, in pixels of the device that the document is laid out for: larger pictures are made smaller. None
// by default.
void SetPaperSize(QTextDocument& document, QSizeF size);

// Pixels of the screen in an inch, the unit of all lengths in documents.
double ScreenDpi();
double PixelsOfTwips(int twips);

// Puts the blocks at the end and leaves the rest as it is: the time taken depends on what is added. The position at
// which the first added block starts. One undo step.
int AppendBlocks(QTextDocument& document, std::span<const Block> blocks);

// Replaces the selection. A first paragraph joins the text before the cursor; the last one joins the text behind it
// unless `endsInMark`. Tables inside a table become lines with tabs. One undo step; the cursor stands behind.
void InsertRichText(QTextCursor& cursor, const RichText& text, bool endsInMark);

RichText ToRichText(const QTextDocument& document);

// The part that is selected; cells of one table as a table of their own. `endsInMark` tells whether the selection ends
// behind a paragraph mark.
RichText SelectedRichText(const QTextCursor& cursor, bool& endsInMark);

// One block up to `end`, a position in the document.
Paragraph ToParagraph(const QTextBlock& block, int end);

bool KeepsWithNext(const QTextBlock& block);

CharFormat ToCharFormat(const QTextCharFormat& format);
QTextCharFormat ToQtFormat(const CharFormat& format);
QTextBlockFormat ToQtFormat(const ParagraphFormat& format);
ParagraphFormat ToParagraphFormat(const QTextBlock& block);
QList<QTextOption::Tab> ToQtTabs(const std::vector<TabStop>& tabs);

// The inline objects.
bool IsHiddenObject(const QTextDocument& document, int position);
std::shared_ptr<const PictureGroup> PictureAt(const QTextDocument& document, int position);  // null: none there

// Plain text: cells apart by tabs, no hidden text, no pictures, no line break at the end unless `endsInMark`.
QString ToPlainText(const RichText& text, bool endsInMark);

}  // namespace tellurix
