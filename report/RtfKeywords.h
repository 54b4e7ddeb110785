// The control words and symbols of rich text that are understood.
#pragma once

#include <string_view>

#include "report/RtfLexer.h"

namespace tellurix {

// Words of one kind stand together: the reader tells the kinds apart by their order.
enum class RtfWord {
  // Characters
  Bold,
  Italic,
  Underline,
  Strike,
  Hidden,
  Script,
  Up,
  Down,
  Font,
  Size,
  Colour,
  Plain,
  // Paragraphs; those up to Tab belong to styles too
  Align,
  LeftIndent,
  RightIndent,
  FirstIndent,
  SpaceBefore,
  SpaceAfter,
  KeepWithNext,
  TabKind,
  Tab,
  InTable,
  ResetParagraph,
  // Properties under a number
  Style,
  // Text
  Character,
  Paragraph,
  Page,
  Unicode,
  UnicodeSkip,
  NoteMark,
  NestedCell,
  NestedRow,
  // Tables
  RowDefaults,
  RowGap,
  Padding,
  RowLeft,
  RowAlign,
  RowHeader,
  CellMerge,
  CellMergeDown,
  CellBorder,
  OtherBorder,
  BorderStyle,
  BorderWidth,
  CellEdge,
  Cell,
  Row,
  // The header
  CodePage,
  CodePageNumber,
  DefaultFont,
  // What a group is for
  FontTable,
  ColourTable,
  StyleSheet,
  Picture,
  TwoVersions,
  NestedProperties,
  TableEnd,
  Note,
  Shape,
  ShapeProperty,
  ShapeText,
  ShapeResult,
  ListText,
  Deleted,
  Skip,  // the group
};

struct RtfKeyword {
  RtfWord word;
  int value = 0;  // what the word stands for, where several words say the like
};

// Null for a word that means nothing here.
const RtfKeyword* FindRtfKeyword(std::string_view name);

// The character that a control symbol stands for; 0 if none.
char32_t ControlSymbol(char symbol);

constexpr int MaxRtfLength = 1'000'000;  // twips; beyond what word processors write

// The number of a word as a length, cut to MaxRtfLength either way.
int RtfLength(const RtfToken& word);

// Whether a word that switches something switches it on: it has no number or one that is not 0.
inline bool IsOn(const RtfToken& word) { return !word.hasNumber || word.number != 0; }

}  // namespace tellurix
