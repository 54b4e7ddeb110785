// What the parts of RichTextDocument share: formats of reports as formats of Qt.
#pragma once

#include <QTextBlockFormat>

#include "desktop/ReportObjects.h"
#include "report/RichText.h"

namespace tellurix {

// What Qt's formats do not know, as properties of theirs.
enum FormatProperty {
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

inline constexpr char16_t LineBreak = 0x2028;  // within a paragraph
inline constexpr int StandardWidth = 9000;     // twips, for tables that name no widths

int TwipsOfPixels(double pixels);

Qt::Alignment ToQt(Alignment alignment);
Alignment ToAlignment(Qt::Alignment alignment);

QTextBlockFormat FillerFormat();

}  // namespace tellurix
