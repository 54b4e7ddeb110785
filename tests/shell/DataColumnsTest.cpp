// The commands that transform, rank, sort and pair columns, as a person meets them: cancels, refusals, undo. Their
// figures are checked by tests/validation.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>

#include "tests/shell/Played.h"

namespace tellurix {
namespace {

// The answers of each command up to the one that asks where to write.
struct Command {
  const char* name;
  const char* answers;
};

constexpr Command Commands[] = {{"M_Transform(0)", "select A:A\ntype 5\n"},
                                {"M_Transform(1)", "select A:A\ntype 5\n"},
                                {"M_Transform(2)", "select A:A\npress OK\nselect B:B\n"},
                                {"M_Transform(3)", "select A:A\npress OK\nselect B:B\n"},
                                {"M_Transform(4)", "select A:A\npress OK\nselect B:B\n"},
                                {"M_Transform(5)", "select A:A\n"},
                                {"M_Transform(6)", "select A:A\ntype 5\n"},
                                {"M_Sort(0)", "select A:B\nset \"Link to other variable\" on\npress OK\nselect B:B\n"},
                                {"M_Pairwise(0)", "select A:A\nselect B:B\n"},
                                {"M_Pairwise(1)", "select A:A\n"},
                                {"M_Pairwise(2)", "select A:A\nselect B:B\nanswer Yes\n"},
                                {"M_Datax(1)", "select A:B\n"},
                                {"M_Datax(5)", "select A:B\npress OK\n"},
                                {"M_Datax(6)", "select A:B\npress OK\n"},
                                {"M_Datax(9)", "select A:A\npress OK\n"}};

class DataColumns : public Played {
 protected:
  // A sheet with two columns of numbers and one of words in use.
  void SetUp() override {
    ASSERT_EQ(Play("new workbook\ncells A1 \"x\" \"y\" \"w\" / 1 2 \"a\" / -2 4 \"b\" / 3 6 \"c\" / 0 5 \"d\"\n"), "");
  }

  void ExpectSheetAsItWas() {
    ExpectNothingDone(3, 5);
    EXPECT_EQ(Book().NumberRC(3, 1), -2);
  }
};

TEST_F(DataColumns, IsOneUndoStep) {
  for (const Command& command : Commands) {
    SCOPED_TRACE(command.name);
    ASSERT_EQ(Play(fmt::format("run {}\n{}pick \"Book 01\"\n", command.name, command.answers)), "");
    EXPECT_EQ(Book().LastCol(), 3 + static_cast<int>(Run().columns.size()));
    ASSERT_TRUE(Book().Undo());
    EXPECT_EQ(Book().LastCol(), 3);
    ASSERT_TRUE(Book().Redo());
    EXPECT_GT(Book().LastCol(), 3);
    ASSERT_TRUE(Book().Undo());
  }
}

TEST_F(DataColumns, CancelWhereToWriteLeavesTheSheet) {
  for (const Command& command : Commands) {
    SCOPED_TRACE(command.name);
    EXPECT_EQ(Play(fmt::format("run {}\ncancel\n", command.name)), "");
    ExpectSheetAsItWas();
    EXPECT_EQ(Play(fmt::format("run {}\n{}cancel\n", command.name, command.answers)), "");
    ExpectSheetAsItWas();
  }
}

TEST_F(DataColumns, WordsAreNoNumbers) {
  for (const Command& command : Commands) {
    SCOPED_TRACE(command.name);
    EXPECT_EQ(
        Play(fmt::format("run {}\nselect C:C\nexpect message \"You must select numerical data\"\n", command.name)), "");
    ExpectSheetAsItWas();
  }
}

// The other radio of the bar begins the command anew, also where a cancel would go on without linked columns.
TEST_F(DataColumns, FlippingTheRadiosAtTheLinkStartsAgain) {
  const std::string asked = "set \"Link to other variable\" on\npress OK\n";
  EXPECT_EQ(Play("run M_Sort(0)\nselect A:A\n" + asked + "groups by identifier\nselect A:A\n" + asked +
                 "cancel\npick \"Book 01\"\n"),
            "");
  EXPECT_EQ(Book().LastCol(), 4);
}

// Words to be linked are refused and others asked for: the sorted column is not written without its link.
TEST_F(DataColumns, WordsAreNotLinked) {
  EXPECT_EQ(Play("run M_Sort(0)\nselect A:A\nset \"Link to other variable\" on\npress OK\nselect C:C\n"
                 "expect message \"You must select numerical data\"\nselect B:B\npick \"Book 01\"\n"),
            "");
  EXPECT_EQ(Book().LastCol(), 5);
}

TEST_F(DataColumns, PairsHaveToFitTheSheet) {
  // 1448 * 1447 / 2 = 1 047 628 pairs fit, 1449 * 1448 / 2 = 1 049 076 do not.
  for (int row = 1; row <= 1449; ++row) Book().NumberRC(row, 5, row);
  EXPECT_EQ(Play("run M_Pairwise(1)\nselect E1:E1449\nexpect message \"Error: too many data.\"\n"), "");
  EXPECT_FALSE(Run().delivered);
  EXPECT_EQ(Play("run M_Pairwise(1)\nselect E1:E1448\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Run().columns.at(0).values.size(), 1047628u);
  EXPECT_EQ(Book().TextRC(1, 6), "Means within E");
  EXPECT_EQ(Book().NumberRC(1047629, 6), 1447.5);
  EXPECT_EQ(Play("run M_Pairwise(1)\nselect E1:E2\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Play("run M_Pairwise(1)\nselect A2\ncancel\n"), "");
}

// Totals of another length than the counts, and on other rows, are asked for again.
TEST_F(DataColumns, TotalsMatchTheCounts) {
  ASSERT_EQ(Play("cells E7 \"n\" / 9 / 9\n"), "");
  EXPECT_EQ(Play("run M_Transform(2)\nselect B:B\npress OK\nselect E7:E9\n"
                 "expect message \"Error: all columns selected must be 4 rows long.\"\n"
                 "cancel\ntype 10\npick \"Book 01\"\n"),
            "");
  EXPECT_EQ(Run().columns.at(0).title, "Logit: y");
}

TEST_F(DataColumns, SortedRowsTakeTheirLooksAlongAndComeBack) {
  LookChange bold;
  bold.bold = true;
  ASSERT_TRUE(Book().SetLook({2, 1, 2, 3}, bold));  // the row of 1, 2, a
  ASSERT_EQ(Play("run M_Sort(1)\nselect A1:C5\nset #Descending0 on\npress OK\n"), "");
  EXPECT_TRUE(Run().delivered);
  const double expected[] = {3, 1, 0, -2};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Book().NumberRC(i + 2, 1), expected[i]);
  EXPECT_EQ(Book().TextRC(3, 3), "a");
  EXPECT_TRUE(Book().LookAt(3, 3).bold);
  EXPECT_FALSE(Book().LookAt(2, 3).bold);
  ASSERT_TRUE(Book().Undo());
  EXPECT_EQ(Book().NumberRC(2, 1), 1);
  EXPECT_TRUE(Book().LookAt(2, 3).bold);
  EXPECT_FALSE(Book().LookAt(3, 3).bold);
}

TEST_F(DataColumns, SortRefusesWhatIsNoBlock) {
  EXPECT_EQ(Play("run M_Sort(1)\nselect A1:A5 B2:B5\nexpect message \"must have the same rows\"\n"), "");
  ExpectSheetAsItWas();
  EXPECT_EQ(Play("run M_Sort(1)\nselect A1:C5\ncancel\n"), "");
  ExpectSheetAsItWas();
  Book().LockSheet(true);
  EXPECT_EQ(Play("run M_Sort(1)\nselect A1:C5\nexpect message \"The worksheet is locked.\"\n"), "");
  ExpectSheetAsItWas();
}

TEST_F(DataColumns, SortMovesNothingThatIsNotMarked) {
  ASSERT_EQ(Play("run M_Sort(1)\nselect A1:A5 C1:C5\nanswer No\npress OK\n"), "");
  const char* words[] = {"b", "d", "a", "c"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(Book().TextRC(i + 2, 3), words[i]);
    EXPECT_EQ(Book().NumberRC(i + 2, 2), (std::array{2.0, 4.0, 6.0, 5.0}[static_cast<std::size_t>(i)]));
  }
}

TEST_F(DataColumns, TitlesAndConstantsFollowTheDecimalSymbol) {
  player.PlayedSession().options.regional.decimalSymbol = ",";
  EXPECT_EQ(Play("run M_Transform(0)\nselect A:A\ntype \"2,5\"\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Run().columns.at(0).title, "Log(natural): (x + 2,5)");
}

}  // namespace
}  // namespace tellurix
