// The document model of a report: paragraphs of formatted runs, tables, hidden text, and pictures kept byte for byte.
// Lengths are in twips (1/1440 inch), font sizes in half points, colours 0xRRGGBB.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tellurix {

enum class Script { None, Sub, Super };
enum class Alignment { Left, Centre, Right, Justify };

struct CharFormat {
  std::string font = "Arial";
  int halfPoints = 20;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  Script script = Script::None;
  std::uint32_t colour = 0;
  bool hidden = false;

  bool operator==(const CharFormat&) const = default;
};

// A picture as it stood in the file; what it holds is not understood here.
struct PictureGroup {
  std::string kind;   // "wmetafile8", "emfblip", "pngblip", "jpegblip"
  std::string bytes;  // binary
  int width = 0;      // picw, pich in the units of the kind
  int height = 0;
  int goalWidth = 0;  // picwgoal, pichgoal, twips
  int goalHeight = 0;
  int scaleX = 100;  // picscalex, picscaley: the picture is shown in so many percent of its goal
  int scaleY = 100;
  std::string group;  // the whole group "{\pict...}" as read; empty when the fields above alone give it back

  bool operator==(const PictureGroup&) const = default;
};

// A stretch of text in one format, or a picture. A line break inside a paragraph is "\n", a tab "\t"; there are no
// other control characters.
struct Run {
  std::string text;  // UTF-8
  CharFormat format;
  std::shared_ptr<const PictureGroup> picture;

  bool operator==(const Run& other) const;  // pictures by what they hold
};

struct TabStop {
  int position = 0;
  Alignment alignment = Alignment::Left;
  bool decimal = false;  // aligned at the decimal point; the alignment then says nothing

  bool operator==(const TabStop&) const = default;
};

struct ParagraphFormat {
  Alignment alignment = Alignment::Left;
  int leftIndent = 0;
  int rightIndent = 0;
  int firstIndent = 0;
  int spaceBefore = 0;
  int spaceAfter = 0;
  bool keepWithNext = false;
  std::vector<TabStop> tabs;

  bool operator==(const ParagraphFormat&) const = default;
};

struct Paragraph {
  std::vector<Run> runs;
  ParagraphFormat format;

  bool operator==(const Paragraph&) const = default;
};

struct Borders {  // widths, 0 is none
  int top = 0;
  int bottom = 0;
  int left = 0;
  int right = 0;

  bool operator==(const Borders&) const = default;
};

struct TableCell {
  std::vector<Paragraph> paragraphs;  // at least one
  int rightEdge = 0;                  // from the left margin, as in \cellx
  Borders borders;

  bool operator==(const TableCell&) const = default;
};

struct TableRow {
  std::vector<TableCell> cells;
  int leftEdge = 0;
  int cellGap = 108;  // half the gap between cells
  Alignment alignment = Alignment::Left;
  bool header = false;

  bool operator==(const TableRow&) const = default;
};

struct Table {
  std::vector<TableRow> rows;

  bool operator==(const Table&) const = default;
};

using Block = std::variant<Paragraph, Table>;

struct RichText {
  std::vector<Block> blocks;

  bool IsEmpty() const;  // neither text nor picture; blank paragraphs and empty tables count as nothing
  void Append(RichText other);

  bool operator==(const RichText&) const = default;
};

// Reads a rich-text file or fragment group. It survives anything: what it does not know it skips, what is cut short it
// closes; lengths are cut to a million twips either way. Text that a tracked change has deleted is left out; the words
// in a box follow the paragraph that the box is tied to, foot- and endnotes the whole text, each with its number. An
// empty paragraph behind the last paragraph mark is none. Nothing only where the bytes, behind a byte order mark and
// blanks, do not start with "{\rtf". Time and memory are linear in the size of the bytes.
std::optional<RichText> ReadRtf(std::string_view bytes);

// Plain text as it stands in rich text: backslash and braces escaped, other than ASCII as Unicode escapes, tabs and
// line breaks as control words.
std::string EscapeRtf(std::string_view text);

// A complete rich-text document, ending in its closing brace. ReadRtf gives the same document back, provided that no
// run is empty, neighbouring runs differ in format, and every table has rows, every row cells, every cell paragraphs.
std::string WriteRtf(const RichText& document);

// Turns a picture into SVG markup; an empty answer leaves a placeholder of the right size.
using PictureToSvg = std::function<std::string(const PictureGroup&)>;

// A complete HTML page. Hidden text is left out.
std::string WriteHtml(const RichText& document, std::string_view title, const PictureToSvg& toSvg = {});

// Plain text, every line ended by "\n", with tables aligned for a fixed-width font and borders above and below cells
// drawn with hyphens. Help tags and all other hidden text are left out, and so are pictures. Long texts in cells are
// wrapped; paragraphs are not.
std::string WriteText(const RichText& document);

// Takes hidden help tags out of plain words: "/h/" up to and with the next "/" when that lies less than 21 characters
// from the start of the "/h/". Any other "/h/" stays.
std::string RemoveHiddenTags(std::string_view text);

// The stretches [from, to) of the text that RemoveHiddenTags leaves, in order, as offsets in bytes.
std::vector<std::pair<std::size_t, std::size_t>> OutsideHiddenTags(std::string_view text);

// The number of the last help tag, hidden text like "/h/123/", in the blocks up to and with `block`; nothing where
// there is none.
std::optional<int> LastHelpTag(const RichText& document, std::size_t block);

}  // namespace tellurix
