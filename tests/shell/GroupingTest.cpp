// The Data menu's commands on groups, categories, dates and blocks as a person meets them: properties, refusals, undo.
// Their figures are checked by tests/validation.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "numeric/Missing.h"
#include "tests/shell/Played.h"

namespace tellurix {
namespace {

class Grouping : public Played {
 protected:
  void SetUp() override { player.PlayedDocuments().NewWorkbook(); }

  // All that is shown and all that was typed.
  static std::vector<std::string> Contents(const Workbook& book) {
    std::vector<std::string> cells;
    for (int column = 1; column <= book.LastCol(); ++column) {
      cells.push_back(book.ColText(column));
      for (int row = 1; row <= book.LastRow(); ++row) {
        cells.push_back(fmt::format("{} {} {} {}", book.TypeRC(row, column), book.FormattedTextRC(row, column),
                                    book.FormulaText(row, column), book.LookAt(row, column).bold));
      }
    }
    return cells;
  }

  std::mt19937 random{20260501};
};

// ---------------------------------------------------------------------------------------------------------------------
// What goes forth and back
// ---------------------------------------------------------------------------------------------------------------------

// Pairs of categories with how often they stand side by side in columns A and B from row 2 on; those with a missing one
// left out.
std::map<std::pair<std::string, std::string>, int> Pairs(const Workbook& book) {
  std::map<std::pair<std::string, std::string>, int> counts;
  for (int row = 2; row <= book.LastRow(); ++row) {
    const std::string a = book.FormattedTextRC(row, 1), b = book.FormattedTextRC(row, 2);
    if (a != "*" && !a.empty() && b != "*" && !b.empty()) ++counts[{a, b}];
  }
  return counts;
}

TEST_F(Grouping, DetabulateGivesTabulatedDataBack) {
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    Workbook& book = player.PlayedDocuments().NewWorkbook();
    book.TextRC(1, 1, "First classifier");
    book.TextRC(1, 2, "Second classifier");
    const int n = 20 + static_cast<int>(random() % 200);
    for (int row = 2; row <= n + 1; ++row) {
      const unsigned a = random() % 7, b = random() % 5;
      a == 6 ? book.TextRC(row, 1, "*") : book.TextRC(row, 1, fmt::format("{} & a {{{}}}", "group", a));
      if (b < 4) book.NumberRC(row, 2, b == 3 ? 0.5 : b * 10.0);
    }
    const auto before = Pairs(book);
    const int last = player.PlayedDocuments().WorkbookCount();
    ASSERT_EQ(Play(fmt::format("run M_Grouping(4)\nselect A1:A{0}\nselect B1:B{0}\nanswer {1}\npick \"New Book\"\n",
                               n + 1, round % 2 ? "Yes" : "No")),
              "");
    Workbook& table = Book(last);
    // With its row names marked, or these to the left of the marks.
    ASSERT_EQ(Play(fmt::format("run M_Grouping(5)\nselect {}1:{}{}\npick \"New Book\"\n", round % 3 ? "A" : "B",
                               ColumnLetters(table.LastCol()), table.LastRow())),
              "");
    EXPECT_EQ(Pairs(Book(last + 1)), before);
    EXPECT_EQ(Book(last + 1).TypeRC(2, 2), NumberCell);  // numbers come back as numbers
  }
}

TEST_F(Grouping, SplitTakesCombineBack) {
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    Workbook& book = player.PlayedDocuments().NewWorkbook();
    const int columns = 1 + static_cast<int>(random() % 5);
    std::vector<std::vector<double>> data;
    for (int column = 1; column <= columns; ++column) {
      book.TextRC(1, column, round % 2 ? "Same title" : fmt::format("Title {}", column));
      data.emplace_back();
      const int n = 2 + static_cast<int>(random() % 30);
      for (int row = 2; row <= n + 1; ++row) {
        const bool isMissing = row % 7 == 3;
        data.back().push_back(isMissing ? MissingValue : static_cast<double>(random()) / 1024);
        isMissing ? book.TextRC(row, column, "*") : book.NumberRC(row, column, data.back().back());
      }
    }
    const int last = player.PlayedDocuments().WorkbookCount();
    ASSERT_EQ(Play(fmt::format("run M_Grouping(2)\nselect A1:{}{}\npick \"New Book\"\n", ColumnLetters(columns),
                               book.LastRow())),
              "");
    const int rows = Book(last).LastRow();
    ASSERT_EQ(Play(fmt::format("run M_Grouping(3)\nselect B1:B{0}\nexpect message \"Number of groups = {1}\"\n"
                               "select A1:A{0}\npick \"New Book\"\n",
                               rows, columns)),
              "");
    ASSERT_EQ(Run().columns.size(), data.size());
    for (std::size_t k = 0; k < data.size(); ++k) EXPECT_EQ(Run().columns[k].values, data[k]);
    EXPECT_EQ(Run().columns.back().title, round % 2 == 0 ? fmt::format("Data~Title {}", columns)
                                          : columns == 1 ? "Data~Same title"
                                                         : fmt::format("Data~Same title ({})", columns));
  }
}

TEST_F(Grouping, RotatingTwiceIsTheIdentity) {
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    Workbook& book = player.PlayedDocuments().NewWorkbook();
    const int rows = 2 + static_cast<int>(random() % 20), columns = 2 + static_cast<int>(random() % 20);
    for (int row = 1; row <= rows; ++row) {
      for (int column = 1; column <= columns; ++column) {
        const auto cell = [&] {
          return ColumnLetters(1 + static_cast<int>(random() % columns)) + std::to_string(1 + random() % rows);
        };
        switch (random() % 6) {
          case 0:
            book.TextRC(row, column, fmt::format("text {}", random() % 10));
            break;
          case 1:
            book.SetLogical(row, column, random() % 2);
            break;
          case 2:
            book.Enter(row, column, fmt::format("=SUM($A$1:{},2)*COUNT({})", cell(), cell()), Regional());
            break;
          case 3:
            break;
          default:
            book.NumberRC(row, column, static_cast<double>(random() % 1000) / 8);
        }
        if (random() % 4 == 0) book.SetLook({row, column, row, column}, {.bold = true});
      }
    }
    book.NumberRC(rows, columns, 1);
    const int last = player.PlayedDocuments().WorkbookCount();
    const auto rotate = [&](int height, int width) {
      return Play(
          fmt::format("run M_Datax(7)\nselect A1:{}{}\npress OK\npick \"New Book\"\n", ColumnLetters(width), height));
    };
    ASSERT_EQ(rotate(rows, columns), "");
    EXPECT_EQ(Book(last).FormattedTextRC(columns, rows), "1");
    ASSERT_EQ(rotate(columns, rows), "");
    EXPECT_EQ(Contents(Book(last + 1)), Contents(Book(last - 1)));
  }
}

TEST_F(Grouping, RotatedFormulasReferToWhatTheyReferredTo) {
  ASSERT_EQ(Play("cells A1 1 2 3 / 4 5 6 / \"=A1+$B2\" \"=SUM(A1:B2)\" \"=SUM(A1:A9)+D1\"\ncells D1 100\n"
                 "add sheet \"Other sheet\"\nsheet \"Sheet1\"\n"
                 "run M_Datax(7)\nselect A1:C3\npress OK\npick \"Book 01: Other\"\n"),
            "");
  EXPECT_EQ(Book().FormulaText(1, 3), "=A1+B$2");
  EXPECT_EQ(Book().FormulaText(2, 3), "=SUM(A1:B2)");
  EXPECT_EQ(Book().FormulaText(3, 3), "=SUM(Sheet1!A1:A9)+Sheet1!D1");  // only partly in the block, and outside
  EXPECT_EQ(Book().NumberRC(3, 3), 111);
  ASSERT_EQ(Play("sheet \"Sheet1\"\nrun M_Datax(7)\nselect A1:C3\npress OK\npick \"New Book\"\n"), "");
  EXPECT_EQ(Book(1).FormulaText(1, 3), "=A1+B$2");
  EXPECT_EQ(Book(1).FormulaText(3, 3), "");
  EXPECT_EQ(Book(1).NumberRC(3, 3), 111);
}

TEST_F(Grouping, RotatesUpTo256Rows) {
  for (int column = 1; column <= 200; ++column) {
    for (int row = 1; row <= 257; ++row) Book().NumberRC(row, column, row * 1000 + column);
  }
  const auto before = Contents(Book());
  ASSERT_EQ(Play("run M_Datax(7)\nselect A1:GR257\nexpect message \"Error: you must select fewer than 257 rows.\"\n"),
            "");
  EXPECT_EQ(Contents(Book()), before);
  ASSERT_EQ(Play("run M_Datax(7)\nselect A1:GR256\npress OK\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Book().LastCol(), 456);
  EXPECT_EQ(Book().NumberRC(200, 456), 256200);
  EXPECT_EQ(Book().NumberRC(1, 201), 1001);
  ASSERT_TRUE(Book().Undo());
  EXPECT_EQ(Contents(Book()), before);
  Book().NumberRC(1, GridStore::MaxColumns - 255, 1);
  ASSERT_EQ(Play("run M_Datax(7)\nselect A1:GR256\npress OK\npick \"Book 01\"\n"
                 "expect message \"Error: not enough room in this sheet for rotation.\"\n"),
            "");
}

// ---------------------------------------------------------------------------------------------------------------------
// Refusals and undo
// ---------------------------------------------------------------------------------------------------------------------

constexpr const char* Sample =
    "cells A1 \"Group\" \"Value\" \"Count\" \"Date\" / \"a\" 1 2 \"2020-01-01\" / \"b\" 2 0 \"2020-02-01\" / \"a\" 3 1 "
    "\"x\" / \"c\" 4 5 \"2021-01-01\"\n";

TEST_F(Grouping, ARefusalOrCancelLeavesTheSheet) {
  ASSERT_EQ(Play(Sample), "");
  ASSERT_EQ(
      Play(
          "cells F1 \"Same\" \"Part\" \"Minus\" / \"z\" 1.5 -1 / \"z\" 1 2\ncells I1 \"Big\" \"Bigger\" / 1048575 1\n"),
      "");
  const auto before = Contents(Book());
  const std::uint64_t revision = Book().Revision();
  const char* scripts[] = {
      // Categorise
      "run M_Grouping(0)\ncancel\n",
      "run M_Grouping(0)\nselect \"Group\"\nexpect message \"You must select numerical data for this function\"\n",
      "run M_Grouping(0)\nselect \"Value\"\npress OK\nexpect message \"upper bound of at least one\"\n"
      "enter #cuts x\npress OK\nexpect message \"Error: invalid data input.\"\n"
      "enter #cuts 2 / 2\npress OK\nexpect message \"same upper bound\"\n"
      "set \"Number of classes\" 1\npress \"Suggest\"\nexpect message \"Error: invalid data input.\"\ncancel\n",
      "run M_Grouping(0)\nselect \"Value\"\nenter #cuts 2\npress OK\ncancel\n",
      // Combine, Split
      "run M_Grouping(2)\nselect \"Group\"\nexpect message \"You must select numerical data for this function\"\n",
      "run M_Grouping(2)\nselect \"Value\" \"Group\"\nexpect message \"You must select numerical data for this "
      "function\"\n",
      "run M_Grouping(2)\nselect \"Value\" \"Count\"\ncancel\n",
      "run M_Grouping(3)\nselect \"Group\"\nexpect message \"Number of groups = 3\"\ncancel\n",
      "run M_Grouping(3)\nselect \"Group\"\nexpect message \"Number of groups = 3\"\nselect B3:B4\n"
      "expect message \"Error: all columns selected must be 4 rows long.\"\nselect \"Value\"\ncancel\n",
      // Tabulate, Detabulate
      "run M_Grouping(4)\nselect \"Group\"\ncancel\n",
      "run M_Grouping(4)\nselect \"Group\"\nselect \"Value\"\nanswer Cancel\n",
      "run M_Grouping(4)\nselect \"Group\"\nselect \"Value\"\nanswer No\ncancel\n",
      "run M_Grouping(5)\nselect \"Group\" \"Date\"\nexpect message \"You must select numerical data for this "
      "function\"\n",
      "run M_Grouping(5)\nselect G1:H3\nexpect message \"Error: invalid data input.\"\n",
      "run M_Grouping(5)\nselect I1:J2\nexpect message \"Number of observations exceeds row limit of worksheet.\"\n",
      "run M_Grouping(5)\nselect A1:C5\ncancel\n",
      // Dates
      "run M_Datax(2)\nselect \"Value\"\nexpect message \"No date data was found.\"\n",
      "run M_Datax(2)\nselect \"Date\"\nset #reference \"2020-13-01\"\npress OK\n"
      "expect message \"Error: invalid data input.\"\ncancel\n",
      "run M_Datax(2)\nselect \"Date\"\nset #column on\npress OK\nselect \"Group\"\n"
      "expect message \"No date data was found.\"\n",
      // Dummy variables, text to numbers
      "run M_Datax(3)\nselect F2:F3\nexpect message \"You must have more than one category in your data\"\n",
      "run M_Datax(3)\nselect \"Group\"\ncancel\n",
      "run M_Datax(3)\nselect \"Group\"\npress OK\ncancel\n",
      "run M_Datax(10)\nselect \"Group\"\nanswer Cancel\n",
      "run M_Datax(10)\nselect \"Group\"\nanswer Yes\nenter #codes a \"\"\npress OK\n"
      "expect message \"Error: invalid data input.\"\ncancel\n",
      // Rotate
      "run M_Datax(7)\nselect A1:B3 D2:D4\nexpect message \"Error: invalid data input.\"\n",
      "run M_Datax(7)\nselect A1:D5\ncancel\n",
      "run M_Datax(7)\nselect A1:D5\npress OK\ncancel\n",
  };
  for (const char* script : scripts) {
    SCOPED_TRACE(script);
    EXPECT_EQ(Play(script), "");
    EXPECT_EQ(Contents(Book()), before);
    EXPECT_EQ(Book().Revision(), revision);
    EXPECT_EQ(player.PlayedDocuments().WorkbookCount(), 1);
    EXPECT_FALSE(Run().delivered);
    EXPECT_FALSE(player.PlayedSession().host.IsBusy());
  }
}

TEST_F(Grouping, IsOneUndoStep) {
  ASSERT_EQ(Play(Sample), "");
  const auto before = Contents(Book());
  const char* scripts[] = {
      "run M_Grouping(0)\nselect \"Value\"\nenter #cuts 2\npress OK\n",
      "run M_Grouping(2)\nselect \"Value\" \"Count\"\n",
      "run M_Grouping(3)\nselect \"Group\"\nexpect message \"Number of groups = 3\"\nselect \"Value\"\n",
      "run M_Grouping(4)\nselect \"Group\"\nselect \"Value\" \"Count\"\nanswer No\n",
      "run M_Grouping(5)\nselect B1:C5\n",
      "run M_Datax(2)\nselect \"Date\"\npress OK\n",
      "run M_Datax(3)\nselect \"Group\"\npress OK\n",
      "run M_Datax(7)\nselect A1:D5\npress OK\n",
      "run M_Datax(10)\nselect \"Group\"\nanswer No\n",
  };
  for (const char* script : scripts) {
    SCOPED_TRACE(script);
    ASSERT_EQ(Play(std::string(script) + "pick \"Book 01\"\n"), "");
    EXPECT_TRUE(Run().delivered);
    EXPECT_FALSE(player.PlayedSession().host.IsBusy());
    EXPECT_NE(Contents(Book()), before);
    ASSERT_TRUE(Book().Undo());
    EXPECT_EQ(Contents(Book()), before);
  }
}

// What goes with the rows of the data stands beside them.
TEST_F(Grouping, ColumnsKeepTheirRows) {
  ASSERT_EQ(Play("cells B5 \"Sex\" \"Born\" / \"female\" \"2000-01-01\" / \"male\" \"2000-01-02\" / \"male\" \"\"\n"
                 "run M_Datax(10)\nselect B5:B8\nanswer No\npick \"Book 01\"\n"
                 "expect cell D5 \"Coded: Sex\"\nexpect cell D6 1\nexpect cell D8 2\n"
                 "run M_Datax(2)\nselect C5:C8\nset #reference \"2000-01-03\"\npress OK\npick \"Book 01\"\n"
                 "expect cell E5 \"Days from Born\"\nexpect cell E6 2\nexpect cell E7 1\nexpect cell E8 *\n"
                 "run M_Datax(3)\nselect B5:B8\npress OK\npick \"Book 01\"\n"
                 "expect cell F5 \"Sex = male\"\nexpect cell F6 0\nexpect cell F8 1\n"),
            "");
}

TEST_F(Grouping, TheSheetHasNoRoomForDummies) {
  for (int row = 1; row <= 100; ++row) Book().NumberRC(row, 1, row);
  Book().NumberRC(1, 180, 1);
  ASSERT_EQ(Play("run M_Datax(3)\nselect A1:A100\nanswer No\npress OK\npick \"Book 01\"\n"
                 "expect message \"Not enough column space in this sheet, try again but select a new sheet.\"\n"),
            "");
  EXPECT_EQ(Book().LastCol(), 180);
  EXPECT_FALSE(Run().delivered);
}

}  // namespace
}  // namespace tellurix
