#include <gtest/gtest.h>

#include <string>

#include "report/RichText.h"

namespace tellurix {
namespace {

Paragraph Plain(const std::string& text, Alignment alignment = Alignment::Left) {
  Paragraph paragraph;
  if (!text.empty()) paragraph.runs.push_back({text, {}, nullptr});
  paragraph.format.alignment = alignment;
  return paragraph;
}

TableRow Row(const std::vector<std::pair<std::string, int>>& cells, int top = 0, int bottom = 0) {
  TableRow row;
  for (const auto& [text, edge] : cells) {
    const bool first = row.cells.empty();
    row.cells.push_back({{Plain(text, first ? Alignment::Left : Alignment::Right)}, edge, {top, bottom, 0, 0}});
  }
  return row;
}

// A table as journals print it, with a note over all columns.
RichText Sample() {
  RichText document;
  CharFormat bold;
  bold.bold = true;
  CharFormat hidden;
  hidden.hidden = true;
  CharFormat super;
  super.script = Script::Super;
  Paragraph title;
  title.runs = {
      {"Results <1> & “2”", bold, nullptr}, {"/h/12/", hidden, nullptr}, {"χ", {}, nullptr}, {"2", super, nullptr}};
  document.blocks.emplace_back(title);
  Table table;
  table.rows = {Row({{"Größe", 2000}, {"Mean", 3500}}, 20, 10), Row({{"Age", 2000}, {"5.25", 3500}}),
                Row({{"日本", 2000}, {"-101.5", 3500}}, 0, 20), Row({{"A note that is wider than both", 3500}})};
  table.rows[0].header = true;
  table.rows[1].cells[0].paragraphs.push_back(Plain("years"));
  document.blocks.emplace_back(table);
  return document;
}

TEST(RichTextWriters, AlignPlainTextTables) {
  EXPECT_EQ(WriteText(Sample()),
            "Results <1> & “2”χ2\n"
            "------------------------------\n"
            "Größe                     Mean\n"
            "------------------------------\n"
            "Age                       5.25\n"
            "years\n"
            "日本                    -101.5\n"
            "------------------------------\n"
            "A note that is wider than both\n");

  RichText ragged;  // rules only where the borders are, ordinal columns where edges make no sense, long texts wrapped
  Table table;
  table.rows = {Row({{"a", 5}, {"b", 4}, {"c", 3}}), Row({{"dd", 0}, {std::string(70, 'x') + " end", 0}, {"e", 0}})};
  table.rows[0].cells[0].borders.bottom = 10;
  table.rows[0].cells[2].borders.bottom = 10;
  ragged.blocks.emplace_back(table);
  const std::string blank(60, ' ');
  EXPECT_EQ(WriteText(ragged), "a   " + blank.substr(1) + "b  c\n--  " + blank + "  -\ndd  " + std::string(60, 'x') +
                                   "  e\n    " + blank.substr(14) + std::string(10, 'x') + " end\n");
}

TEST(RichTextWriters, MakeHtml) {
  RichText document = Sample();
  const auto picture = std::make_shared<const PictureGroup>(PictureGroup{"wmetafile8", "x", 10, 10, 1440, 30});
  document.blocks.emplace_back(Paragraph{{{"", {}, picture}}, {}});
  document.blocks.emplace_back(Paragraph{});
  const std::string page = WriteHtml(document, "A & B");
  const auto has = [&](const std::string& text) { return page.find(text) != std::string::npos; };
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
  EXPECT_TRUE(has("<meta charset=\"utf-8\">") && has("<title>A &amp; B</title>"));
  EXPECT_TRUE(has("<b>Results &lt;1&gt; &amp; “2”</b>χ<sup>2</sup>"));
  EXPECT_FALSE(has("/h/12/"));
  EXPECT_TRUE(has("<thead>\n<tr><th style=\"border-top:1pt solid;border-bottom:0.50pt solid\">Größe</th>"));
  EXPECT_TRUE(has("<td class=\"r\">5.25</td>"));
  EXPECT_TRUE(has("<p>Age</p><p>years</p></t"));  // white space would show
  EXPECT_TRUE(has("<td colspan=\"2\">A note"));
  EXPECT_TRUE(has("<span class=\"picture\" style=\"width:72pt;height:1.50pt\"></span>"));
  EXPECT_TRUE(has("<p><br></p>"));
  const std::string drawn =
      WriteHtml(document, "", [](const PictureGroup& one) { return "<svg>" + one.bytes + "</svg>"; });
  EXPECT_NE(drawn.find("<p><svg>x</svg></p>"), std::string::npos);
}

TEST(RichTextWriters, CannotBeTrickedIntoMarkup) {
  RichText document;
  CharFormat evil;
  evil.font = "A'\"><script>;{}\\";
  document.blocks.emplace_back(Paragraph{{{"<script>\xff{\\par}\x01", evil, nullptr}}, {}});
  const std::string page = WriteHtml(document, "</title><script>");
  EXPECT_EQ(page.find("<script>"), std::string::npos);
  EXPECT_NE(page.find("&lt;script&gt;ÿ{\\par}"), std::string::npos);
  EXPECT_EQ(WriteText(ReadRtf(WriteRtf(document)).value()), "<script>ÿ{\\par}\n");
}

TEST(RichText, RemovesHiddenTags) {
  struct Case {
    const char* text;
    const char* left;
  };
  for (const Case& one : {
           Case{"", ""},
           {"plain / words", "plain / words"},
           {"/h/123/after", "after"},
           {"a/h/1/b/h/2/c", "abc"},
           {"a/h/1//h/2/b", "ab"},
           {"/h/12345678901234567/x", "x"},                         // the slash 20 characters from the start
           {"/h/123456789012345678/x", "/h/123456789012345678/x"},  // 21
           {"/h/1234567890123456é/x", "x"},                         // characters, not bytes
           {"/h/123456789012345678/h/5/x", "/h/123456789012345678x"},
           {"/h/open", "/h/open"},
           {"/h/", "/h/"},
           {"//h/1/h/5/", "/h/5/"},  // what the cut brings together is no tag
           {"/h//h/", "h/"},
           {"/H/1/", "/H/1/"},
       }) {
    EXPECT_EQ(RemoveHiddenTags(one.text), one.left) << one.text;
  }
}

TEST(RichText, LeavesHiddenTextOutOfPlainText) {
  CharFormat hidden;
  hidden.hidden = true;
  RichText document;
  document.blocks.emplace_back(
      Paragraph{{{"a/h", {}, nullptr}, {"/7/secret", hidden, nullptr}, {"b/h/8/c", {}, nullptr}}, {}});
  EXPECT_EQ(WriteText(document), "abc\n");
}

TEST(RichText, FindsTheLastHelpTag) {
  CharFormat hidden;
  hidden.hidden = true;
  const auto tagged = [&](const std::string& text) {
    return Paragraph{{{"x", {}, nullptr}, {text, hidden, nullptr}}, {}};
  };
  RichText document;
  EXPECT_EQ(LastHelpTag(document, 0), std::nullopt);
  Table table;
  table.rows = {Row({{"a", 1}, {"b", 2}})};
  table.rows[0].cells[0].paragraphs = {tagged("/h/30/"), Plain("/h/99/")};
  document.blocks = {Plain("/h/1/"), tagged("/h/10//h/11/ /h/x/"), Plain("y"), table, tagged("/h/99999999999/")};
  EXPECT_EQ(LastHelpTag(document, 0), std::nullopt);
  EXPECT_EQ(LastHelpTag(document, 1), 11);
  EXPECT_EQ(LastHelpTag(document, 2), 11);
  EXPECT_EQ(LastHelpTag(document, 3), 30);
  EXPECT_EQ(LastHelpTag(document, 100), 30);
  document.blocks = {Paragraph{{{"/h/", hidden, nullptr}, {"5/", hidden, nullptr}}, {}}};
  EXPECT_EQ(LastHelpTag(document, 0), 5);
}

TEST(RichText, AppendsAndKnowsWhenItIsEmpty) {
  RichText document;
  EXPECT_TRUE(document.IsEmpty());
  document.Append(ReadRtf("{\\rtf1\\par\\trowd\\cellx9\\intbl\\cell\\row\\pard  \\par}").value());
  EXPECT_EQ(document.blocks.size(), 3u);
  EXPECT_TRUE(document.IsEmpty());
  document.Append(ReadRtf("{\\rtf1 a}").value());
  EXPECT_FALSE(document.IsEmpty());
  EXPECT_EQ(WriteText(document).substr(WriteText(document).size() - 2), "a\n");
  EXPECT_FALSE(ReadRtf("{\\rtf1{\\pict 00}}").value().IsEmpty());
}

}  // namespace
}  // namespace tellurix
