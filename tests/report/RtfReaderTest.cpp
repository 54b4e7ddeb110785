// The reader against hand-written documents; what they should show follows the published description of Rich Text
// Format 1.9.1 and the published code page charts.
#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>

#include "report/RichText.h"

namespace tellurix {
namespace {

// The text of the body of a document, line by line.
std::string TextOf(const std::string& body) {
  const auto document = ReadRtf(std::string("{\\rtf1\\ansi").append(body).append("}"));
  return document ? WriteText(*document) : "no document";
}

const Paragraph& ParagraphAt(const RichText& document, std::size_t block) {
  return std::get<Paragraph>(document.blocks.at(block));
}

RichText Read(const std::string& body) {
  return ReadRtf(std::string("{\\rtf1\\ansi").append(body).append("}")).value();
}

TEST(RtfReader, KnowsItsOwnByTheFirstBytes) {
  for (const char* bytes : {"", "plain", "{\\rt", "{ \\rtf1 a}", "\\rtf1 a", "x{\\rtf1 a}"}) {
    EXPECT_FALSE(ReadRtf(bytes)) << bytes;
  }
  EXPECT_EQ(WriteText(ReadRtf("\xEF\xBB\xBF \r\n{\\rtf1 a}").value()), "a\n");
  EXPECT_TRUE(ReadRtf("{\\rtf").value().blocks.empty());
}

TEST(RtfReader, EndsParagraphsAsWordProcessorsDo) {
  EXPECT_EQ(TextOf(""), "");
  EXPECT_EQ(TextOf(" a"), "a\n");
  EXPECT_EQ(TextOf(" a\\par "), "a\n");
  EXPECT_EQ(TextOf(" a\\par \\par "), "a\n\n");
  EXPECT_EQ(TextOf(" a\\par\\par b"), "a\n\nb\n");
  EXPECT_EQ(TextOf(" a\\\nb\\\r\nc"), "a\nb\nc\n");
  EXPECT_EQ(TextOf(" a\\page b\\sect c"), "a\nb\nc\n");
  EXPECT_EQ(TextOf(" a\r\nb\\line c\\tab d\te"), "ab\nc\td\te\n");
  EXPECT_EQ(TextOf(" a}}} b"), "a\n");  // nothing counts behind the end
  EXPECT_EQ(TextOf(" {a{b} {c"), "ab c\n");
}

TEST(RtfReader, ReadsCharacterFormats) {
  const RichText document =
      ReadRtf(
          "{\\rtf1\\deff1{\\fonttbl{\\f0\\froman Times New Roman;}{\\f1 Arial{\\*\\falt Helvetica};}"
          "\\f7\\fswiss Verdana;}{\\colortbl;\\red1\\green2\\blue255;}"
          "\\fs20 p{\\b b\\b0 p{\\i i}\\uldb u\\ulnone p}{\\strike s}{\\super u\\nosupersub p\\sub d}"
          "{\\up6 U\\up0 p\\dn D}{\\cf1 c\\cf9 p}{\\f7\\fs31 f}{\\f0 t\\f99 p}{\\v h\\v0 p}{\\b\\plain n}}")
          .value();
  std::ostringstream shape;
  for (const auto& run : ParagraphAt(document, 0).runs) {
    const CharFormat& f = run.format;
    shape << run.text << (f.bold ? " bold" : "") << (f.italic ? " italic" : "") << (f.underline ? " underline" : "")
          << (f.strike ? " strike" : "") << (f.hidden ? " hidden" : "") << (f.script == Script::Sub ? " sub" : "")
          << (f.script == Script::Super ? " super" : "");
    if (f.font != "Arial") shape << " " << f.font;
    if (f.halfPoints != 20) shape << " " << f.halfPoints;
    if (f.colour != 0) shape << " " << f.colour;
    shape << ";";
  }
  EXPECT_EQ(shape.str(),
            "p;b bold;p;i italic;u underline;p;s strike;u super;p;d sub;U super;p;D sub;c 66303;p;f Verdana 31;"
            "t Times New Roman;p;h hidden;p;n 24;");
}

TEST(RtfReader, ReadsParagraphFormats) {
  const RichText document = Read(
      "\\pard\\qc\\li100\\ri-20\\fi-300\\sb40\\sa50\\keepn\\tx500\\tqr\\tx900\\tqc\\tx1000\\tqdec\\tx2000 a\\par"
      "{\\pard\\qr b\\par}c\\par\\pard\\qj d\\par\\pard e");
  const ParagraphFormat expected{Alignment::Centre,
                                 100,
                                 -20,
                                 -300,
                                 40,
                                 50,
                                 true,
                                 {{500, Alignment::Left, false},
                                  {900, Alignment::Right, false},
                                  {1000, Alignment::Centre, false},
                                  {2000, Alignment::Left, true}}};
  EXPECT_EQ(ParagraphAt(document, 0).format, expected);
  EXPECT_EQ(ParagraphAt(document, 1).format.alignment, Alignment::Right);
  EXPECT_EQ(ParagraphAt(document, 2).format, expected);
  EXPECT_EQ(ParagraphAt(document, 3).format.alignment, Alignment::Justify);
  EXPECT_EQ(ParagraphAt(document, 4).format, ParagraphFormat{});
}

TEST(RtfReader, AppliesParagraphStyles) {
  const RichText document = Read(
      "{\\stylesheet{\\ql\\fs24 Normal;}{\\s1\\qc\\b\\fs32\\sbasedon0 heading 1;}{\\*\\cs2\\i Strong;}}"
      "\\pard\\plain\\s1 Head\\par\\pard\\plain body\\par");
  EXPECT_EQ(WriteText(document), "Head\nbody\n");
  EXPECT_EQ(ParagraphAt(document, 0).format.alignment, Alignment::Centre);
  EXPECT_TRUE(ParagraphAt(document, 0).runs.at(0).format.bold);
  EXPECT_EQ(ParagraphAt(document, 0).runs.at(0).format.halfPoints, 32);
  EXPECT_FALSE(ParagraphAt(document, 1).runs.at(0).format.bold);
}

TEST(RtfReader, DecodesBytesByTheCodePageOfDocumentAndFont) {
  struct Case {
    const char* body;
    const char* text;
  };
  for (const Case& one : {
           Case{"\\'e9\\'80\\'93", "é€“"},
           {"\\ansicpg1250 \\'9c\\'b9", "śą"},
           {"\\ansicpg1251 \\'cf\\'f0", "Пр"},
           {"\\ansicpg1253 \\'e1\\'fe", "αώ"},
           {"\\ansicpg1254 \\'fe\\'fd", "şı"},
           {"\\ansicpg1255 \\'f9\\'e0", "שא"},
           {"\\ansicpg1256 \\'c8", "ب"},
           {"\\ansicpg1257 \\'e0", "ą"},
           {"\\ansicpg1258 \\'f5\\'fd", "ơư"},
           {"\\ansicpg437 \\'e1\\'e3", "ßπ"},
           {"\\ansicpg850 \\'9b", "ø"},
           {"\\pc\\'e3", "π"},
           {"\\mac\\'8a", "ä"},
           {"\\ansicpg932 \\'93\\'fa\\'96{\\'7b}\\'b1", "日本ｱ"},
           {"\\ansicpg936 \\'d6\\'d0", "中"},
           {"\\ansicpg949 \\'c7\\'d1", "한"},
           {"\\ansicpg950 \\'a4\\'a4", "中"},
           {"\\ansicpg65001 \\'e2\\'82\\'ac", "€"},
           {"\\ansicpg932 \\'93", "\xEF\xBF\xBD"},
           {"\\ansicpg77777 \\'e9", "é"},
           {"\\'81", "\xEF\xBF\xBD"},
           {"{\\fonttbl{\\f0\\fcharset161 G;}{\\f1\\fcharset204 C;}{\\f2 D;}}\\f0\\'e1\\f1\\'ff{\\f2\\'e9}\\'fe\xe9",
            "αяéюй"},
           {"{\\fonttbl{\\f0\\fcharset238 E;}{\\f1\\fcharset255 O;}}\\'b9\\f1\\'9b", "ąø"},
       }) {
    EXPECT_EQ(TextOf(one.body), std::string(one.text) + "\n") << one.body;
  }
}

TEST(RtfReader, ReadsUnicodeAndSkipsItsStandIns) {
  struct Case {
    const char* body;
    const char* text;
  };
  for (const Case& one : {
           Case{" \\u946?x", "βx"},
           {"\\uc0\\u946 x", "βx"},
           {"\\uc2\\u946 abx", "βx"},
           {"\\uc2\\u946 \\'61bx", "βx"},
           {"\\uc3\\u946 a}", "β"},
           {"{\\uc0\\u946 x}\\u947 xy", "βxγy"},
           {" \\u946\\lquote x", "βx"},
           {"\\u946\\par x", "β\nx"},
           {"\\uc1\\u-10179?\\u-8704?", "😀"},
           {"\\u55357 ?{\\b\\u56832 ?}", "😀"},
           {"\\u128512?", "😀"},
           {"\\u-10179?x", "\xEF\xBF\xBDx"},
           {"\\u-8704?x", "\xEF\xBF\xBDx"},
           {"\\u99999999999?x", "\xEF\xBF\xBDx"},
           {"\\u-99999999999?x", "\xEF\xBF\xBDx"},
           {"\\u0?x\\u7?", "x"},
           {" a\\emdash\\endash\\lquote\\rquote\\ldblquote\\rdblquote\\bullet", "a—–‘’“”•"},
           {" a\\~b\\_c\\-d",
            "a\xC2\xA0"
            "b‑c\xC2\xAD"
            "d"},
           {"\\upr{old}{\\*\\ud{new}}", "new"},
           {"\\\\\\{\\}\\'7b", "\\{}{"},
       }) {
    EXPECT_EQ(TextOf(one.body), std::string(one.text) + "\n") << one.body;
  }
}

TEST(RtfReader, TurnsTheSymbolFontIntoGreek) {
  const RichText document = Read(
      "{\\fonttbl{\\f0 Arial;}{\\f1\\fcharset2 Symbol;}{\\f2\\fcharset2 Wingdings;}}{\\f1 c\\'b1\\u-3999?}{\\f2 a}");
  ASSERT_EQ(ParagraphAt(document, 0).runs.size(), 2u);
  EXPECT_EQ(ParagraphAt(document, 0).runs[0].text, "χ±α");
  EXPECT_EQ(ParagraphAt(document, 0).runs[0].format.font, "Arial");
  EXPECT_EQ(ParagraphAt(document, 0).runs[1].text, "\xEF\x81\xA1");  // U+F061
  EXPECT_EQ(ParagraphAt(document, 0).runs[1].format.font, "Wingdings");
}

TEST(RtfReader, ShowsNoDestinationButText) {
  EXPECT_EQ(
      TextOf(
          "{\\info{\\title T}{\\author A}}{\\header H}{\\footerr F}{\\*\\generator G;}{\\*\\unknown{\\b U}}"
          "{\\*\\bkmkstart m}{\\xe X}a{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}"
          "{\\field{\\*\\fldinst{ X }}{\\fldrslt{\\b R}}}{\\pntext 1.\\tab}{\\listtext\\'b7}{\\*}{\\*\\pn{\\pntxtb (}}"
          "{\\object{\\*\\objdata 00ff}{\\result O}}z\\bin3 }{}\\unknownword7 !"),
      "a7R1.\t·Oz!\n");
}

// As LibreOffice 7.4 and the description write them.
TEST(RtfReader, KeepsTheTextOfNotesAndBoxes) {
  EXPECT_EQ(
      TextOf(" Body{\\super\\chftn{\\*\\footnote\\chftn\\pard\\plain  one{\\b  bold}\\par two}} on{\\super\\chftn}"
             "{\\footnote\\ftnalt\\chftn  end}.\\par last"),
      "Body1 on2.\nlast\n\n1 one bold\ntwo\n2 end\n");
  const std::string box =
      "{\\shp{\\*\\shpinst\\shpleft3402{\\sp{\\sn shapeType}{\\sv 202}}{\\shptxt\\ql{Box}\\par }}{\\shprslt Fallback}}";
  EXPECT_EQ(TextOf(" before\\par " + box + "beside\\par after"), "before\nbeside\nBox\nafter\n");
  EXPECT_EQ(TextOf("\\trowd\\cellx900\\cellx1800\\intbl a" + box + "\\cell b\\cell\\row\\pard z"), "a    b\nBox\nz\n");
  EXPECT_EQ(TextOf("{\\shp{\\*\\shpinst{\\sp{\\sn fill}{\\sv 1}}}{\\shprslt Drawn}}"), "Drawn\n");

  // The picture of a shape, and not its stand-in as well.
  const RichText document = Read(
      " a{\\shp{\\*\\shpinst{\\sp{\\sn pib}{\\sv {\\pict\\pngblip\\picwgoal99 0102}}}{\\sp{\\sn pibName}{\\sv x.png}}}"
      "{\\shprslt{\\pict\\wmetafile8 0304}}}b");
  const auto& runs = ParagraphAt(document, 0).runs;
  ASSERT_EQ(runs.size(), 3u);
  ASSERT_TRUE(runs[1].picture);
  EXPECT_EQ(runs[1].picture->kind, "pngblip");
  EXPECT_EQ(WriteText(document), "ab\n");
}

TEST(RtfReader, LeavesOutWhatAChangeDeletedAndSignsThatShowNothing) {
  EXPECT_EQ(TextOf(" Kept {\\deleted\\revauthdel1 gone}{\\revised\\revauth1 new} end{\\deleted0  still}"),
            "Kept new end still\n");
  EXPECT_EQ(TextOf(" a\\deleted b"), "ab\n");
  EXPECT_EQ(
      TextOf(
          "{\\listtext\\pard\\plain \\tab}Head\\par{\\listtext \\bullet\\tab}item\\par{\\listtext\\u8226 ?\\tab}more"),
      "Head\n\xe2\x80\xa2\titem\n\xe2\x80\xa2\tmore\n");
}

TEST(RtfReader, ReadsTables) {
  const RichText document = Read(
      " before\\par\\trowd\\trgaph70\\trleft-70\\trqc\\trhdr\\clbrdrt\\brdrs\\brdrw20\\clbrdrb\\brdrdb\\cellx1000"
      "\\clbrdrl\\brdrw30\\brdrs\\clbrdrr\\brdrnone\\brdrw9\\cellx3000\\pard\\intbl\\qr a\\cell b\\par c\\cell\\row"
      "\\trowd\\cellx1000\\cellx3000\\pard\\intbl 1\\cell\\cell\\row\\pard after\\par"
      "\\trowd\\cellx500\\pard\\intbl unfinished\\cell rest");
  ASSERT_EQ(document.blocks.size(), 4u);
  const Table& table = std::get<Table>(document.blocks[1]);
  ASSERT_EQ(table.rows.size(), 2u);
  const TableRow& row = table.rows[0];
  EXPECT_TRUE(row.header);
  EXPECT_EQ(row.alignment, Alignment::Centre);
  EXPECT_EQ(row.leftEdge, -70);
  EXPECT_EQ(row.cellGap, 70);
  ASSERT_EQ(row.cells.size(), 2u);
  EXPECT_EQ(row.cells[0].rightEdge, 1000);
  EXPECT_EQ(row.cells[0].borders, (Borders{20, 15, 0, 0}));
  EXPECT_EQ(row.cells[1].borders, (Borders{0, 0, 30, 0}));
  EXPECT_EQ(row.cells[0].paragraphs.at(0).format.alignment, Alignment::Right);
  ASSERT_EQ(row.cells[1].paragraphs.size(), 2u);
  EXPECT_EQ(row.cells[1].paragraphs[1].runs.at(0).text, "c");
  EXPECT_FALSE(table.rows[1].header);
  EXPECT_EQ(table.rows[1].cells.size(), 2u);
  EXPECT_EQ(std::get<Table>(document.blocks[3]).rows.at(0).cells.size(), 2u);
}

TEST(RtfReader, FlattensMergedAndNestedCells) {
  const RichText merged = Read(
      "\\trowd\\clmgf\\cellx1000\\clmrg\\clbrdrr\\brdrs\\brdrw10\\cellx2000\\cellx3000\\pard\\intbl a\\cell\\cell "
      "b\\cell\\row"
      "\\trowd\\clvmgf\\clbrdrb\\brdrs\\cellx1000\\cellx3000\\pard\\intbl c\\cell d\\cell\\row"
      "\\trowd\\clvmrg\\clbrdrt\\brdrs\\cellx1000\\cellx3000\\pard\\intbl\\cell e\\cell\\cell\\row");
  const Table& table = std::get<Table>(merged.blocks.at(0));
  ASSERT_EQ(table.rows.size(), 3u);
  ASSERT_EQ(table.rows[0].cells.size(), 2u);
  EXPECT_EQ(table.rows[0].cells[0].rightEdge, 2000);
  EXPECT_EQ(table.rows[0].cells[0].borders.right, 10);
  EXPECT_EQ(table.rows[1].cells[0].borders.bottom, 0);
  EXPECT_EQ(table.rows[2].cells[0].borders.top, 0);
  EXPECT_EQ(table.rows[2].cells.size(), 2u);

  const RichText nested = Read(
      "\\trowd\\cellx1000\\cellx2000\\pard\\intbl x\\par\\pard\\intbl\\itap2 n1\\nestcell n2\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx400\\cellx800\\nestrow}{\\nonesttables\\par}n3\\nestcell\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx400\\cellx800\\nestrow}\\pard\\intbl\\cell y\\cell\\row");
  const TableRow& row = std::get<Table>(nested.blocks.at(0)).rows.at(0);
  ASSERT_EQ(row.cells.size(), 2u);
  EXPECT_EQ(row.cells[1].rightEdge, 2000);
  ASSERT_EQ(row.cells[0].paragraphs.size(), 3u);
  EXPECT_EQ(row.cells[0].paragraphs[1].runs.at(0).text, "n1\tn2");
  EXPECT_EQ(row.cells[0].paragraphs[2].runs.at(0).text, "n3\t");
}

TEST(RtfReader, KeepsPicturesByteForByte) {
  const std::string hex =
      "{\\pict{\\*\\picprop{\\sp{\\sn a}{\\sv "
      "b}}}\\wmetafile8\\picw100\\pich50\\picwgoal1440\\pichgoal720\\picscalex50\n01 0aFF\r\n}";
  const std::string binary = std::string("{\\pict\\pngblip\\picw1\\bin6 }{\\") + '\0' + "\n\\par}";
  const RichText document =
      Read(" a{\\*\\shppict" + hex + "}{\\nonshppict{\\pict\\wmetafile8 00}}{\\v " + binary + "}b");
  const auto& runs = ParagraphAt(document, 0).runs;
  ASSERT_EQ(runs.size(), 4u);
  ASSERT_TRUE(runs[1].picture && runs[2].picture);
  EXPECT_EQ(runs[1].picture->kind, "wmetafile8");
  EXPECT_EQ(runs[1].picture->bytes, "\x01\x0a\xff");
  EXPECT_EQ(runs[1].picture->goalWidth, 1440);
  EXPECT_EQ(runs[1].picture->scaleX, 50);
  EXPECT_EQ(runs[1].picture->group, hex);
  EXPECT_EQ(runs[2].picture->bytes, std::string("}{\\\0\n\\", 6));
  EXPECT_TRUE(runs[2].format.hidden);
  const std::string written = WriteRtf(document);
  EXPECT_NE(written.find(hex), std::string::npos);
  EXPECT_NE(written.find(binary), std::string::npos);
  EXPECT_EQ(ReadRtf(written).value(), document);

  const RichText cut = ReadRtf("{\\rtf1 a{\\pict\\pngblip\\picw3\\bin99999999999 xyz}}").value();
  EXPECT_EQ(ParagraphAt(cut, 0).runs.at(1).picture->bytes, "xyz}}");
  EXPECT_EQ(ReadRtf(WriteRtf(cut)).value(), cut);
}

TEST(RtfReader, WithstandsHostileInput) {
  const auto start = std::chrono::steady_clock::now();
  const std::size_t million = 1'000'000;
  std::string deep = "{\\rtf1 a";
  for (std::size_t i = 0; i < million; ++i) deep += "{\\b\\qc ";
  deep += "b{\\*\\x y}{\\info z}{\\fonttbl{\\f0 F;}}" + std::string(million, '}') + " plain\\par c}";
  const RichText document = ReadRtf(deep).value();
  EXPECT_EQ(WriteText(document), "ab plain\nc\n");
  EXPECT_FALSE(ParagraphAt(document, 0).runs.back().format.bold);  // the formatting of the outer group is back

  // Each of these would take quadratic time or memory, or overflow, if its bound did not hold.
  const auto repeat = [](const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
  };
  Read(std::string("{\\fonttbl{\\f0 ").append(million, 'F') + ";}{\\f1 G;}}" + repeat("\\f0 a\\f1 b", 50'000));
  Read("\\trowd" + repeat("\\cellx1", 100'000) + repeat("\\cell\\row", 100'000));
  Read(repeat("\\tx1", 100'000) + repeat("{\\tx2}", 100'000) + repeat("\\par", 10'000));
  Read("{\\stylesheet{\\s1" + repeat("\\b", 100'000) + " S;}}" + repeat("\\s1", 100'000));
  Read(repeat("{\\pict", 100'000));
  Read(repeat("\\u55357", 100'000) + repeat("\\ansicpg932\\'93\\ansicpg1252", 10'000));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));

  const RichText huge =
      Read("\\fs99999999999\\li-99999999999\\uc99999999999\\cf-5\\f-7\\trowd\\cellx99999999999 a\\cell\\row");
  const TableCell& cell = std::get<Table>(huge.blocks.at(0)).rows.at(0).cells.at(0);
  EXPECT_EQ(cell.rightEdge, 1'000'000);
  EXPECT_EQ(cell.paragraphs.at(0).format.leftIndent, -1'000'000);
  EXPECT_EQ(cell.paragraphs.at(0).runs.at(0).format.halfPoints, 3276);
  EXPECT_EQ(WriteText(ReadRtf(std::string("{\\rtf1 a\0\x01\x7f"
                                          "b\\",
                                          13))
                          .value()),
            "ab\n");
}

}  // namespace
}  // namespace tellurix
