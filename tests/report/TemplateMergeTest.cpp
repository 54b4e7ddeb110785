#include "report/TemplateMerge.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "numeric/Missing.h"
#include "tests/FakeHost.h"

namespace tellurix {
namespace {

class TemplateMergeTest : public ::testing::Test {
 protected:
  TemplateMergeTest()
      : folder(std::filesystem::path(::testing::TempDir()) /
               (std::string("tellurix-") + ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::filesystem::create_directories(folder);
  }
  ~TemplateMergeTest() override { std::filesystem::remove_all(folder); }

  // Opens a template of this text.
  bool Open(std::string_view text) {
    std::ofstream(folder / "t.rtf", std::ios::binary) << text;
    return merge.OpenTemplate("t.rtf");
  }
  std::string Closed() {
    merge.CloseTemplate();
    return merge.ReportText;
  }

  std::filesystem::path folder;
  FakeHost host;
  ResultsLog results;
  TemplateMerge merge{host, results, folder};
};

TEST_F(TemplateMergeTest, ConsumesFieldsStrictlyInOrder) {
  ASSERT_TRUE(Open("A/*x/B/*y/C}"));
  merge.SetField("y", "2");  // fills the first field, whatever its name
  merge.SetField("x", "1");  // lies no more ahead
  EXPECT_EQ(Closed(), "A2B/*y/C }");
  const auto& fields = results.Current().templates.back().fields;
  ASSERT_EQ(fields.size(), 3u);  // what was asked, what was filled, and the mark left over
  EXPECT_EQ(fields[0].name + ">" + fields[0].mark, "y>x");
  EXPECT_EQ(fields[1].name + ">" + fields[1].mark, "x>");
  EXPECT_EQ(fields[2].name + ">" + fields[2].mark, ">y");

  ASSERT_TRUE(Open("A/*x/B}"));
  merge.SetField("z", "1");
  EXPECT_EQ(Closed(), "A/*x/B }");

  ASSERT_TRUE(Open("/*pc/% to /*PC/%}"));  // any case, and a name twice
  merge.SetField("Pc", "95");
  merge.SetField("pc", "90");
  merge.SetField("pc", "80");
  EXPECT_EQ(Closed(), "95% to 90% }");
}

TEST_F(TemplateMergeTest, RepeatsKeepsAndDropsBlocks) {
  ASSERT_TRUE(Open("P/bs/[/*v/]/bf/Q}"));
  for (const char* value : {"1", "2"}) {
    merge.BlockRepeat();
    merge.SetField("v", value);
  }
  merge.BlockDrop();
  EXPECT_EQ(Closed(), "P[1][2]Q }");

  ASSERT_TRUE(Open("P/bs/a/bf/-/bs/b/bf/-/bs/c/bf/Q}"));  // the first block each time
  merge.BlockKeep();
  merge.BlockDrop();
  merge.BlockKeep();
  merge.BlockKeep();  // none left
  merge.BlockDrop();
  merge.BlockRepeat();
  EXPECT_EQ(Closed(), "Pa--cQ }");

  ASSERT_TRUE(Open("/bs//bf/}"));  // an empty one
  merge.BlockRepeat();
  merge.BlockKeep();
  EXPECT_EQ(Closed(), " }");
}

TEST_F(TemplateMergeTest, PairsNestedBlocksOutermostFirst) {
  constexpr std::string_view nested = "<//bs/1/bs/2/bs/3/bf/4/bf/5/bs/6/bf/7/bf/>}";
  ASSERT_TRUE(Open(nested));
  merge.BlockDrop();
  EXPECT_EQ(Closed(), "</> }");
  ASSERT_TRUE(Open(nested));
  merge.BlockKeep();  // the outer
  merge.BlockKeep();  // 2 ... 4
  merge.BlockDrop();  // 3
  merge.BlockDrop();  // 6
  EXPECT_EQ(Closed(), "</12457> }");
  // A table of rows of cells.
  ASSERT_TRUE(Open("/bs/(/*r/:/bs//*c/;/bf/)/bf/}"));
  for (const char* row : {"a", "b"}) {
    merge.BlockRepeat();
    merge.SetField("r", row);
    for (const char* cell : {"x", "y"}) {
      merge.BlockRepeat();
      merge.SetField("c", cell);
    }
    merge.BlockDrop();
  }
  merge.BlockDrop();
  EXPECT_EQ(Closed(), "(a:x;y;)(b:x;y;) }");
  // An unbalanced one is left as it stands.
  ASSERT_TRUE(Open("A/bs/B/bs/C/bf/}"));
  merge.BlockKeep();
  EXPECT_EQ(Closed(), "A/bs/B/bs/C/bf/ }");
}

TEST_F(TemplateMergeTest, ValuesAreTextUnlessTheySayTheyAreRich) {
  ASSERT_TRUE(Open("/*a/|/*b/|/*c/|/*d/}"));
  merge.SetField("a", "/*c/ /bs/");  // never parsed
  merge.SetField("b", "{\\x} caf\xC3\xA9 \xF0\x9F\x98\x80\n\t");
  merge.SetField("c", Value::Rich("{\\b x}"));
  merge.BlockKeep();
  merge.SetField("d", "");
  EXPECT_EQ(Closed(), "/*c/ /bs/|\\{\\\\x\\} caf\\u233? \\u-10179?\\u-8704?\\line \\tab |{\\b x}| }");

  ASSERT_TRUE(Open("{\\rtf1 /*a/\\par}"));
  merge.SetField("a", "{\\x} caf\xC3\xA9 \xF0\x9F\x98\x80");
  merge.CloseTemplate();
  Report report;
  ASSERT_TRUE(merge.InsertMergedText(report));
  EXPECT_EQ(WriteText(report.text), "{\\x} caf\xC3\xA9 \xF0\x9F\x98\x80\n\n\n");
}

// Upper tail of the standard normal at 1.96: 0.0249979 (Abramowitz and Stegun 1964, table 26.1).
TEST_F(TemplateMergeTest, FillsBothPFieldsOfANormalStatistic) {
  const Options options{.PDecimalPlaces = 4};
  for (const double z : {1.96, -1.96}) {
    ASSERT_TRUE(Open("/*p_1/;/*p_2/}"));
    SetPFields(merge, Formatter(options), z);
    EXPECT_EQ(Closed(), "P = 0.025;P = 0.05 }");
    const auto& fields = results.Current().templates.back().fields;
    EXPECT_NEAR(fields[0].numbers.front(), 0.0249979, 1e-7);
    EXPECT_NEAR(fields[1].numbers.front(), 0.0499958, 1e-7);
  }
  ASSERT_TRUE(Open("/*p_1/;/*p_2/}"));
  SetPFields(merge, Formatter(options), MissingValue);
  EXPECT_EQ(Closed(), "*;* }");
}

TEST_F(TemplateMergeTest, RemovesLineBreaksButTheSecondOfTwo) {
  ASSERT_TRUE(Open("\\a\r\n\\b\r\n\r\n\\c /*na\r\nme/ \n\r\r\n\n}"));
  EXPECT_EQ(merge.TemplateText, "\\a\\b\r\n\\c /*name/ \n\r\n}");
  merge.SetField("name", "x");
  merge.ReportNewLine();
  EXPECT_EQ(merge.ReportText, "\\a\\b\r\n\\c x\r\n\\par");
  ASSERT_TRUE(Open("{\\rtf1 a}\r\n"));  // a line break behind the brace costs nothing
  EXPECT_EQ(Closed(), "{\\rtf1 a }");
}

TEST_F(TemplateMergeTest, RefusesWhatIsNoTemplate) {
  const auto refused = [&](const char* name) {
    host.messages.clear();
    host.busy = true;
    const std::size_t logged = results.Current().templates.size();
    EXPECT_FALSE(merge.OpenTemplate(name)) << name;
    ASSERT_EQ(host.messages.size(), 1u) << name;
    EXPECT_EQ(host.messages[0].text,
              "Error: could not open template: " + std::string(name) +
                  ", please check that all Tellurix files are present and re-install if not.  There may also be a "
                  "problem with file permissions, if so please consult your network administrator.");
    EXPECT_EQ(host.messages[0].title, "Tellurix Report Generator");
    EXPECT_EQ(host.messages[0].style, WarningIcon);
    EXPECT_FALSE(host.busy);
    EXPECT_EQ(results.Current().templates.size(), logged);
    EXPECT_EQ(merge.TemplateText + merge.ReportText, "");
  };
  refused("absent.rtf");
  std::filesystem::create_directory(folder / "folder.rtf");
  refused("folder.rtf");
  std::ofstream(folder / "empty.rtf") << "";
  refused("empty.rtf");
  std::ofstream(folder / "open.rtf") << "{\\rtf1 a";
  refused("open.rtf");
}

TEST_F(TemplateMergeTest, InsertsWithTheHelpTagOfTheFirstMarkOnly) {
  Report report;
  report.helpContext = 2451;
  int told = 0;
  report.onAppended = [&] { ++told; };
  ASSERT_TRUE(Open("{\\rtf1 /h//A /h//\\par}"));
  merge.CloseTemplate();
  ASSERT_TRUE(merge.InsertMergedText(report));
  EXPECT_EQ(merge.ReportText, "{\\rtf1 \\v/h/2451/\\v0 A /h//\\par\\par \\par }");
  EXPECT_NE(WriteRtf(report.text).find("A /h//"), std::string::npos);
  EXPECT_TRUE(ReportHasText(report));
  EXPECT_TRUE(report.document.changed);
  EXPECT_EQ(LastHelpTag(report.text, report.text.blocks.size() - 1), 2451);
  EXPECT_EQ(told, 1);
  EXPECT_TRUE(results.Current().delivered);

  merge.ShortEnding = true;
  ASSERT_TRUE(Open("{\\rtf1 B  }"));
  merge.CloseTemplate();
  ASSERT_TRUE(merge.InsertMergedText(report));
  EXPECT_EQ(merge.ReportText, "{\\rtf1 B\\par }");
  EXPECT_EQ(WriteText(report.text), "A \n\n\nB\n");
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(TemplateMergeTest, AFailureLeavesTheReportAsItWas) {
  Report report;
  host.busy = true;
  ASSERT_TRUE(Open("no rich text}"));
  merge.CloseTemplate();
  EXPECT_FALSE(merge.InsertMergedText(report));
  EXPECT_EQ(host.LastMessage(), "Error in calculation, report invalid.");
  EXPECT_FALSE(host.busyWhenAsked);
  EXPECT_FALSE(ReportHasText(report));
  EXPECT_FALSE(report.document.changed);
  EXPECT_FALSE(results.Current().delivered);
  // A template that was left half filled is simply replaced.
  ASSERT_TRUE(Open("{\\rtf1 /*x/}"));
  merge.SetField("x", "half");
  ASSERT_TRUE(Open("{\\rtf1 /*x/}"));
  merge.SetField("x", "whole");
  merge.CloseTemplate();
  ASSERT_TRUE(merge.InsertMergedText(report));
  EXPECT_EQ(WriteText(report.text), "whole\n\n");
}

TEST(HiddenTags, AreTakenOutWhenShortEnough) {
  EXPECT_EQ(RemoveHiddenTags("a/h/12/b/h/3/c"), "abc");
  EXPECT_EQ(RemoveHiddenTags("a/h/" + std::string(17, '1') + "/b"), "ab");  // the "/" 20 characters on
  EXPECT_EQ(RemoveHiddenTags("a/h/" + std::string(18, '1') + "/b"), "a/h/" + std::string(18, '1') + "/b");
  EXPECT_EQ(RemoveHiddenTags("a/h/12"), "a/h/12");
  EXPECT_EQ(RemoveHiddenTags("/h/" + std::string(30, 'x') + "/h/5/y"), "/h/" + std::string(30, 'x') + "y");
}

}  // namespace
}  // namespace tellurix
