// Search & Replace as a person meets it; its figures are checked by tests/validation/search-replace.tlx.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/shell/Played.h"

namespace tellurix {
namespace {

class SearchReplace : public Played {
 protected:
  void SetUp() override {
    ASSERT_EQ(Play("new workbook\ncells A1 \"Title 1\" / 1 / 2.5 / \"=A2\" / \"äÄ-1\" / \"TRUE\" / 1000\n"), "");
  }

  // Replaces all on the sheet, "" or what went wrong.
  std::string Replace(const std::string& find, const std::string& by, const std::string& said, bool whole = true) {
    return Play(
        fmt::format("run M_Datax(8)\nset #whole {}\nset #find {}\nset #replace {}\npress \"Replace All\"\n"
                    "expect message \"{}\"\ncancel\n",
                    whole ? "on" : "off", find, by, said));
  }
};

TEST_F(SearchReplace, IsOneUndoStepAndLeavesFormulas) {
  ASSERT_EQ(Replace("1", "7", "1 cell replaced.\\n1 found with a formula, which is not replaced."), "");
  EXPECT_EQ(Book().NumberRC(2, 1), 7);
  EXPECT_EQ(Book().FormulaText(4, 1), "=A2");
  EXPECT_EQ(Book().NumberRC(7, 1), 1000);
  ASSERT_EQ(Replace("x<100", "x+1", "2 cells replaced."), "");
  EXPECT_EQ(Book().NumberRC(3, 1), 3.5);
  EXPECT_EQ(Book().NumberRC(2, 1), 8);
  ASSERT_TRUE(Book().Undo());
  EXPECT_EQ(Book().NumberRC(3, 1), 2.5);
  EXPECT_EQ(Book().NumberRC(2, 1), 7);
  ASSERT_TRUE(Book().Undo());
  EXPECT_EQ(Book().NumberRC(2, 1), 1);
}

TEST_F(SearchReplace, ReplacesTexts) {
  ASSERT_EQ(Replace("Ää", "ß", "0 cells replaced."), "");
  ASSERT_EQ(Replace("Ä", "ss", "1 cell replaced.", false), "");
  EXPECT_EQ(Book().TextRC(5, 1), "ssss-1");
  ASSERT_EQ(Replace("ssss", "\"\"", "1 cell replaced.", false), "");
  EXPECT_EQ(Book().TextRC(5, 1), "-1");
  EXPECT_EQ(Book().TypeRC(5, 1), TextCell);
  ASSERT_EQ(Replace("true", "\"{missing data}\"", "1 cell replaced."), "");
  EXPECT_EQ(Book().TextRC(6, 1), "*");
  // With quotes what looks otherwise is text.
  ASSERT_EQ(Replace("2.5", "\"\\\"x+1\\\"\"", "1 cell replaced."), "");
  EXPECT_EQ(Book().TextRC(3, 1), "x+1");
}

TEST_F(SearchReplace, ReadsNumbersAsTheRegionWritesThem) {
  player.PlayedSession().options.regional = {.decimalSymbol = ",", .groupingSymbol = "."};
  ASSERT_EQ(Replace("\"2.5\"", "3", "0 cells replaced."), "");
  ASSERT_EQ(Replace("\"1.000\"", "\"1,5\"", "1 cell replaced."), "");
  EXPECT_EQ(Book().NumberRC(7, 1), 1.5);
  ASSERT_EQ(Replace("\"x>2,4\"", "\"x*0,5\"", "1 cell replaced."), "");
  EXPECT_EQ(Book().NumberRC(3, 1), 1.25);
  ASSERT_EQ(Replace("\"x>1.000\"", "1", "You must not use digit grouping symbols in the expression"), "");
}

TEST_F(SearchReplace, WhatCannotBeDoneLeavesTheSheet) {
  const std::uint64_t before = Book().Revision();
  EXPECT_EQ(Play("run M_Datax(8)\npress OK\nexpect message \"Please enter what to search for.\"\npress Close\n"), "");
  EXPECT_EQ(Replace("x>0", "x+(", "The expression has no value for any of the numbers found."), "");
  EXPECT_EQ(Replace("none", "y", "0 cells replaced."), "");
  EXPECT_EQ(Book().Revision(), before);
  Book().LockSheet(true);
  EXPECT_EQ(Replace("1", "2", "The worksheet is locked."), "");
  EXPECT_EQ(Book().NumberRC(2, 1), 1);
}

TEST_F(SearchReplace, SearchesTheMarkedCells) {
  // Ranges that overlap count once; empty cells among the marked ones are missing data.
  ASSERT_EQ(
      Play("cells C1 1 1 / 1 1 / \"\" \"\"\nmark C1:D2 C2:D3\nrun M_Datax(8)\nset #find 1\npress \"Count\"\n"
           "expect message \"4 cells found.\"\nset #find \"{Missing Data}\"\nset #replace 0\npress \"Replace All\"\n"
           "expect message \"2 cells replaced.\"\nset #sheet on\npress \"Count\"\n"
           "expect message \"0 cells found.\"\ncancel\n"),
      "");
  EXPECT_EQ(Book().NumberRC(3, 4), 0);
  EXPECT_EQ(Book().TypeRC(3, 4), NumberCell);
}

TEST_F(SearchReplace, FindsTheNextCellRoundTheEnd) {
  ASSERT_EQ(Play("run M_Datax(8)\nset #find 1\npress \"Find Next\"\npress \"Find Next\"\npress \"Find Next\"\n"
                 "press \"Find Next\"\nset #find 1000\npress \"Find Next\"\ncancel\n"),
            "");
  EXPECT_EQ(Book().ActiveRow(), 7);
  EXPECT_EQ(Book().ActiveColumn(), 1);
  EXPECT_EQ(Book().Selection(), "A7");
}

}  // namespace
}  // namespace tellurix
