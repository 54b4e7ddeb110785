// Random rich text with all that a report can hold, the same one for the same seed.
#pragma once

#include <memory>
#include <random>
#include <string>

#include "report/RichText.h"

namespace tellurix {

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  int Below(int count) { return static_cast<int>(engine_() % static_cast<unsigned>(count)); }
  bool Once(int in) { return Below(in) == 0; }
  template <typename T>
  T Of(std::initializer_list<T> values) {
    return values.begin()[Below(static_cast<int>(values.size()))];
  }

 private:
  std::mt19937 engine_;
};

inline CharFormat RandomFormat(Dice& dice) {
  CharFormat format;
  if (dice.Once(2)) return format;
  format.font = dice.Of<const char*>({"Arial", "Times New Roman", "Courier", "Überschrift"});
  format.halfPoints = dice.Of({20, 21, 2, 300, 48});
  format.bold = dice.Once(3);
  format.italic = dice.Once(3);
  format.underline = dice.Once(4);
  format.strike = dice.Once(5);
  format.script = dice.Of({Script::None, Script::None, Script::Sub, Script::Super});
  format.colour = dice.Of({0U, 0U, 0xFF0000U, 0x123456U, 0xFFFFFFU});
  format.hidden = dice.Once(5);
  return format;
}

inline std::string RandomText(Dice& dice) {
  std::string text;
  for (int left = 1 + dice.Below(8); left > 0; --left) {
    text += dice.Of<const char*>(
        {"a",        " ", "  ",           "word",         "\\",     "{",     "}",     "\t",  "\n",
         ";",        "?", "1.5",          "-7",           "β",      "é",     "日",    "😀",   "\xC2\xA0",
         "\xC2\xAD", "‑", "\xEF\x81\xA1", "\xEF\xBF\xBD", "/h/12/", "\\'e9", "\\par", "<b>", "&amp;"});
  }
  return text;
}

inline std::shared_ptr<const PictureGroup> RandomPicture(Dice& dice) {
  PictureGroup picture;
  picture.kind = dice.Of<const char*>({"wmetafile8", "emfblip", "pngblip", "jpegblip", ""});
  for (int left = dice.Below(40); left > 0; --left) picture.bytes += static_cast<char>(dice.Below(256));
  picture.width = dice.Below(5000);
  picture.goalWidth = dice.Below(5000);
  picture.goalHeight = dice.Below(5000);
  if (dice.Once(3)) picture.scaleY = dice.Below(300);
  return std::make_shared<const PictureGroup>(std::move(picture));
}

inline Paragraph RandomParagraph(Dice& dice) {
  Paragraph paragraph;
  for (int left = dice.Below(5); left > 0; --left) {
    Run run;
    run.format = RandomFormat(dice);
    if (dice.Once(8)) {
      run.picture = RandomPicture(dice);
    } else {
      // Neighbours of one format would be read as one run.
      if (!paragraph.runs.empty() && !paragraph.runs.back().picture && paragraph.runs.back().format == run.format)
        continue;
      run.text = RandomText(dice);
    }
    paragraph.runs.push_back(std::move(run));
  }
  ParagraphFormat& format = paragraph.format;
  format.alignment = dice.Of({Alignment::Left, Alignment::Centre, Alignment::Right, Alignment::Justify});
  if (dice.Once(3)) format.leftIndent = dice.Below(2000) - 500;
  if (dice.Once(5)) format.rightIndent = dice.Below(2000);
  if (dice.Once(5)) format.firstIndent = dice.Below(2000) - 1000;
  if (dice.Once(5)) format.spaceBefore = dice.Below(300);
  if (dice.Once(5)) format.spaceAfter = dice.Below(300);
  format.keepWithNext = dice.Once(4);
  for (int left = dice.Once(3) ? dice.Below(4) : 0; left > 0; --left) {
    TabStop tab{dice.Below(9000), dice.Of({Alignment::Left, Alignment::Centre, Alignment::Right}), dice.Once(4)};
    if (tab.decimal) tab.alignment = Alignment::Left;
    format.tabs.push_back(tab);
  }
  return paragraph;
}

inline Table RandomTable(Dice& dice) {
  Table table;
  const bool even = dice.Once(2);
  for (int rows = 1 + dice.Below(4); rows > 0; --rows) {
    TableRow row;
    row.leftEdge = even ? 0 : dice.Below(900) - 108;
    row.cellGap = dice.Below(200);
    row.alignment = dice.Of({Alignment::Left, Alignment::Centre, Alignment::Right});
    row.header = dice.Once(4);
    int edge = row.leftEdge;
    for (int cells = 1 + dice.Below(4); cells > 0; --cells) {
      TableCell cell;
      for (int left = 1 + (dice.Once(4) ? dice.Below(3) : 0); left > 0; --left)
        cell.paragraphs.push_back(RandomParagraph(dice));
      cell.rightEdge = edge += even ? 1000 * (1 + dice.Below(2)) : dice.Below(3000);
      cell.borders = {dice.Of({0, 0, 15, 20}), dice.Of({0, 10}), dice.Of({0, 0, 5}), dice.Of({0, 0, 75})};
      row.cells.push_back(std::move(cell));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

inline RichText RandomReport(unsigned seed) {
  Dice dice(seed);
  RichText report;
  for (int left = dice.Below(7); left > 0; --left) {
    if (dice.Once(3)) {
      report.blocks.emplace_back(RandomTable(dice));
    } else {
      report.blocks.emplace_back(RandomParagraph(dice));
    }
  }
  return report;
}

}  // namespace tellurix
