// Documents that are written, read, broken and read again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "report/RichText.h"

namespace tellurix {
namespace {

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

CharFormat RandomFormat(Dice& dice) {
  CharFormat format;
  if (dice.Once(2)) return format;
  format.font = dice.Of<const char*>({"Arial", "Times New Roman", "Courier", "Überschrift"});
  format.halfPoints = dice.Of({20, 21, 1, 3276, 48});
  format.bold = dice.Once(3);
  format.italic = dice.Once(3);
  format.underline = dice.Once(4);
  format.strike = dice.Once(5);
  format.script = dice.Of({Script::None, Script::None, Script::Sub, Script::Super});
  format.colour = dice.Of({0U, 0U, 0xFF0000U, 0x123456U, 0xFFFFFFU});
  format.hidden = dice.Once(5);
  return format;
}

std::string RandomText(Dice& dice) {
  std::string text;
  for (int left = 1 + dice.Below(8); left > 0; --left) {
    text += dice.Of<const char*>(
        {"a",        " ", "  ",           "word",         "\\",     "{",     "}",    "\t", "\n",
         ";",        "?", "1.5",          "-7",           "β",      "é",     "日",   "😀",  "\xC2\xA0",
         "\xC2\xAD", "‑", "\xEF\x81\xA1", "\xEF\xBF\xBD", "/h/12/", "\\'e9", "\\par"});
  }
  return text;
}

std::shared_ptr<const PictureGroup> RandomPicture(Dice& dice) {
  PictureGroup picture;
  picture.kind = dice.Of<const char*>({"wmetafile8", "emfblip", "pngblip", "jpegblip", ""});
  for (int left = dice.Below(40); left > 0; --left) picture.bytes += static_cast<char>(dice.Below(256));
  picture.width = dice.Below(5000);
  picture.goalHeight = dice.Below(5000);
  if (dice.Once(3)) picture.scaleY = dice.Below(300);
  return std::make_shared<const PictureGroup>(std::move(picture));
}

Paragraph RandomParagraph(Dice& dice) {
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

Table RandomTable(Dice& dice) {
  Table table;
  for (int rows = 1 + dice.Below(4); rows > 0; --rows) {
    TableRow row;
    row.leftEdge = dice.Below(300) - 108;
    row.cellGap = dice.Below(200);
    row.alignment = dice.Of({Alignment::Left, Alignment::Centre, Alignment::Right});
    row.header = dice.Once(4);
    int edge = row.leftEdge;
    for (int cells = 1 + dice.Below(4); cells > 0; --cells) {
      TableCell cell;
      for (int left = 1 + (dice.Once(4) ? dice.Below(3) : 0); left > 0; --left)
        cell.paragraphs.push_back(RandomParagraph(dice));
      cell.rightEdge = edge += dice.Below(3000);
      cell.borders = {dice.Of({0, 0, 15, 20}), dice.Of({0, 10}), dice.Of({0, 0, 5}), dice.Of({0, 0, 75})};
      row.cells.push_back(std::move(cell));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

RichText RandomDocument(unsigned seed) {
  Dice dice(seed);
  RichText document;
  for (int left = dice.Below(7); left > 0; --left) {
    if (dice.Once(3)) {
      document.blocks.emplace_back(RandomTable(dice));
    } else {
      document.blocks.emplace_back(RandomParagraph(dice));
    }
  }
  return document;
}

TEST(RtfRoundTrip, ReadingWhatWasWrittenGivesTheSameDocument) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    const RichText document = RandomDocument(seed);
    const std::string bytes = WriteRtf(document);
    ASSERT_EQ(bytes.back(), '}');
    const auto read = ReadRtf(bytes);
    ASSERT_TRUE(read.has_value());
    ASSERT_TRUE(*read == document) << "seed " << seed << "\n" << bytes << "\n" << WriteRtf(*read);
  }
}

TEST(RtfRoundTrip, AFragmentOfADocumentMayBeAppended) {
  RichText whole = RandomDocument(3);
  const RichText second = RandomDocument(4);
  const std::size_t blocks = whole.blocks.size() + second.blocks.size();
  whole.Append(ReadRtf(WriteRtf(second)).value());
  EXPECT_EQ(whole.blocks.size(), blocks);
  EXPECT_EQ(ReadRtf(WriteRtf(whole)).value(), whole);
}

// What any reading has to stand: all writers, and a second reading that gives the same.
void Check(const std::string& bytes) {
  const auto document = ReadRtf(bytes);
  if (!document) {
    ASSERT_FALSE(bytes.starts_with("{\\rtf"));
    return;
  }
  const std::string written = WriteRtf(*document);
  const auto again = ReadRtf(written);
  ASSERT_TRUE(again.has_value());
  ASSERT_TRUE(*again == *document) << written << "\n--- again:\n" << WriteRtf(*again);
  WriteHtml(*document, "Title");
  WriteText(*document);
  for (const char c : written.substr(0, written.find("{\\pict"))) ASSERT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F));
}

std::vector<std::string> Samples() {
  std::vector<std::string> samples{
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\froman\\fcharset2 "
      "Symbol;}{\\f2\\fcharset128 "
      "MS Mincho;}{\\f3\\fcharset204 Cyr;}}{\\colortbl;\\red255\\green0\\blue9;}{\\stylesheet{\\ql "
      "Normal;}{\\s1\\qc\\b head;}}"
      "{\\info{\\title T}}{\\header H\\par}\\pard\\plain\\s1\\f0\\fs20 T\\'e9\\u946?{\\f1 "
      "c}{\\f2\\'93\\'fa}{\\f3\\'cf}\\u-10179?"
      "\\u-8704?{\\super 2}{\\v /h/12/}\\par\\pard\\tqdec\\tx900 a\\tab b\\line c\\par{\\field{\\*\\fldinst "
      "X}{\\fldrslt y}}"
      "{\\pntext 1.\\tab}\\sect\\page z\\par}",
      "{\\rtf1\\trowd\\trgaph108\\trhdr\\trqc\\clbrdrt\\brdrs\\brdrw15\\clmgf\\cellx900\\clmrg\\cellx1800\\pard\\intbl "
      "a\\cell\\cell"
      "\\row\\trowd\\clvmrg\\cellx900\\clbrdrb\\brdrdb\\cellx1800\\pard\\intbl x\\par\\pard\\intbl\\itap2 n\\nestcell "
      "m\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx400\\nestrow}{\\nonesttables\\par}\\pard\\intbl\\cell\\qr "
      "1.5\\cell\\row\\pard end}",
      "{\\rtf1 "
      "p{\\*\\shppict{\\pict{\\*\\picprop}\\pngblip\\picw9\\pich9\\picwgoal99\\pichgoal99\n0102ff}}{\\nonshppict{"
      "\\pict 00}}"
      "{\\pict\\wmetafile8\\bin5 {}\\{z}\\uc2\\u8364 ab{\\upr{a}{\\*\\ud{b}}}q\\par}"};
  for (unsigned seed = 0; seed < 5; ++seed) samples.push_back(WriteRtf(RandomDocument(seed + 100)));
  return samples;
}

TEST(RtfFuzz, CutAnywhere) {
  for (const auto& sample : Samples()) {
    for (std::size_t size = 0; size <= sample.size() && size < 2500; ++size) {
      Check(sample.substr(0, size));
      if (HasFatalFailure()) FAIL() << sample.substr(0, size);
    }
  }
}

TEST(RtfFuzz, BrokenDocumentsAreReadAndWrittenAgain) {
  const char* variable = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = variable != nullptr ? std::atoi(variable) : 500;
  const auto samples = Samples();
  for (int round = 0; round < rounds; ++round) {
    Dice dice(static_cast<unsigned>(round));
    const int count = static_cast<int>(samples.size());
    std::string bytes = samples[static_cast<std::size_t>(dice.Below(count))];
    const auto somewhere = [&] { return static_cast<std::size_t>(dice.Below(static_cast<int>(bytes.size()) + 1)); };
    for (int left = 1 + dice.Below(8); left > 0 && !bytes.empty(); --left) {
      switch (dice.Below(6)) {
        case 0:
          bytes[somewhere() % bytes.size()] ^= static_cast<char>(1 << dice.Below(8));
          break;
        case 1:
          if (dice.Once(4)) bytes.resize(somewhere());
          break;
        case 2: {
          const std::string& other = samples[static_cast<std::size_t>(dice.Below(count))];
          const auto from = static_cast<std::size_t>(dice.Below(static_cast<int>(other.size())));
          bytes.insert(somewhere(), other.substr(from, static_cast<std::size_t>(dice.Below(200))));
          break;
        }
        case 3:
          bytes.insert(somewhere(), dice.Of<const char*>({"{",
                                                          "}",
                                                          "\\",
                                                          "{\\*",
                                                          "\\'",
                                                          "\\u",
                                                          "\\bin9 ",
                                                          "\\row ",
                                                          "\\cell ",
                                                          "\\intbl ",
                                                          "\\par ",
                                                          "\\trowd ",
                                                          "\\nestcell ",
                                                          "\\nestrow ",
                                                          "{\\pict ",
                                                          "\\uc0 ",
                                                          "\\u55357 ",
                                                          "\\ansicpg65001 ",
                                                          "\\ansicpg932 ",
                                                          "\\clmrg "}));
          break;
        case 4:
          bytes.insert(somewhere(),
                       std::string(static_cast<std::size_t>(dice.Below(9)), static_cast<char>(dice.Below(256))));
          break;
        default:
          bytes.erase(somewhere() % bytes.size(), static_cast<std::size_t>(dice.Below(60)));
      }
    }
    if (!bytes.starts_with("{\\rtf")) bytes.insert(0, "{\\rtf1 ");
    Check(bytes);
    if (HasFatalFailure()) FAIL() << "round " << round << "\n" << bytes;
  }
}

}  // namespace
}  // namespace tellurix
