// The document model of a report: paragraphs of formatted runs, tables, hidden text, and pictures kept byte for byte.
// Lengths are in twips (1/1440 inch), font sizes in half points, colours 0xRRGGBB.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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
  std::string group;  // the whole group "{\pict...}" as read; empty when it was made here

  bool operator==(const PictureGroup&) const = default;
};

// A stretch of text in one format, or a picture. A line break inside a paragraph is "\n", a tab "\t".
struct Run {
  std::string text;  // UTF-8
  CharFormat format;
  std::shared_ptr<const PictureGroup> picture;
};

struct TabStop {
  int position = 0;
  Alignment alignment = Alignment::Left;
  bool decimal = false;
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
};

struct TableRow {
  std::vector<TableCell> cells;
  int leftEdge = 0;
  int cellGap = 108;  // half the gap between cells
  Alignment alignment = Alignment::Left;
  bool header = false;
};

struct Table {
  std::vector<TableRow> rows;
};

using Block = std::variant<Paragraph, Table>;

struct RichText {
  std::vector<Block> blocks;

  bool IsEmpty() const;  // neither text nor picture
  void Append(RichText other);
};

// Reads a rich-text file or fragment group. It survives anything: what it does not know it skips, what is cut short it
// closes. Nothing only where the bytes do not start as rich text.
std::optional<RichText> ReadRtf(std::string_view bytes);

// A complete rich-text document, ending in its closing brace.
std::string WriteRtf(const RichText& document);

// Turns a picture into SVG markup; an empty answer leaves a placeholder of the right size.
using PictureToSvg = std::function<std::string(const PictureGroup&)>;

// A complete HTML page. Hidden text is left out.
std::string WriteHtml(const RichText& document, std::string_view title, const PictureToSvg& toSvg = {});

// Plain text with tables aligned for a fixed-width font; hidden tags are removed.
std::string WriteText(const RichText& document);

// Takes hidden help tags out of plain words: "/h/" up to the next "/" when that lies less than 21 characters from the
// start of the "/h/".
std::string RemoveHiddenTags(std::string_view text);

// The last hidden help tag's number at or before the end of block `block` (run `run`), or nothing.
std::optional<int> LastHelpTag(const RichText& document, std::size_t block);

}  // namespace tellurix
