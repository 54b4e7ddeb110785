// What a person does to the documents by hand, recorded and played again.
#include <gtest/gtest.h>

#include <random>

#include "shell/ProgramFolder.h"
#include "shell/ScriptEdits.h"
#include "shell/ScriptPlayer.h"

namespace tellurix {
namespace {

const std::filesystem::path Root = TELLURIX_SOURCE_DIR;

std::string Play(ScriptPlayer& player, const std::string& text) {
  ScriptFile script;
  std::string error;
  if (!ReadScript(text, "play.tlx", script, error)) return error;
  return player.Play(script) ? "" : player.Failure();
}

// All that a command can read of a workbook, in words.
std::string Contents(Workbook& workbook) {
  std::string text;
  const int active = workbook.Sheet();
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) {
    workbook.Sheet(sheet);
    text += "[" + workbook.SheetName(sheet) + "]\n";
    for (int column = 1; column <= 12; ++column) text += workbook.ColText(column) + "|";
    for (int row = 1; row <= workbook.LastRow(); ++row) {
      text += "\n" + workbook.RowText(row) + ": ";
      for (int column = 1; column <= workbook.LastCol(); ++column) {
        text += std::to_string(workbook.TypeRC(row, column)) + " " + workbook.FormulaText(row, column) + " " +
                workbook.TextRC(row, column) + " " + workbook.FormattedTextRC(row, column) + "|";
      }
    }
    text += "\n";
  }
  workbook.Sheet(active);
  return text;
}

void ExpectSame(ScriptPlayer& first, ScriptPlayer& second) {
  OpenDocuments& a = first.PlayedDocuments();
  OpenDocuments& b = second.PlayedDocuments();
  ASSERT_EQ(a.WorkbookCount(), b.WorkbookCount());
  for (int i = 0; i < a.WorkbookCount(); ++i) EXPECT_EQ(Contents(a.WorkbookAt(i)), Contents(b.WorkbookAt(i)));
  ASSERT_EQ(a.ActiveWorkbook() != nullptr, b.ActiveWorkbook() != nullptr);
  if (a.ActiveWorkbook()) {
    EXPECT_EQ(a.IndexOf(*a.ActiveWorkbook()), b.IndexOf(*b.ActiveWorkbook()));
    EXPECT_EQ(a.ActiveWorkbook()->Sheet(), b.ActiveWorkbook()->Sheet());
  }
}

TEST(HandEdits, StepsEnterWhatIsWritten) {
  ScriptPlayer player(ScriptPaths(Root));
  EXPECT_EQ(Play(player, R"TLX(new workbook
cells B2 1.5 -2e-300 "text" / "" TRUE "'=not a formula" / "=B2*2" "007"
heading C "Weight (kg)"
heading 3 "third"
format B2:B4 fixed 2 grouping
format D:D text
clear C2
add sheet "More"
rename sheet "More" "Last one"
cells "Last one!A1" 7
move sheet "Last one" 1
new workbook
workbook 1
sheet "Last one"
expect cell A1 7
sheet "Sheet1"
expect cell B4 3
expect cell C4 "007"
expect cell D3 "=not a formula"
)TLX"),
            "");
  Workbook& book = player.PlayedDocuments().WorkbookAt(0);
  EXPECT_EQ(book.SheetName(1), "Last one");
  EXPECT_EQ(book.ColText(3), "Weight (kg)");
  EXPECT_EQ(book.RowText(3), "third");
  EXPECT_EQ(book.FormattedTextRC(2, 2), "1.50");
  EXPECT_EQ(book.TypeRC(2, 3), EmptyCell);
  EXPECT_EQ(book.TypeRC(3, 3), LogicalCell);

  for (const char* wrong : {"cells", "cells A0 1", "cells A1 word", "cells Nowhere!A1 1", "cells XFD1 1 2",
                            "workbook 3", "report 1", "cells A1 12/03/2001", "cells A1 1:40", "rename sheet \"Sheet1\"",
                            "delete sheet \"x\"", "format A1 blue", "heading A", "close report", "sheet 9"}) {
    EXPECT_NE(Play(player, wrong), "") << wrong;
  }
  EXPECT_EQ(book.TypeRC(1, 1), EmptyCell);
}

TEST(HandEdits, AreWrittenBeforeTheCommandAndWithinItsSelection) {
  ScriptPlayer player(ScriptPaths(Root));
  Workbook& book = player.PlayedDocuments().NewWorkbook();
  book.ColText(1, "Dose");
  for (int row = 1; row <= 4; ++row) book.NumberRC(row, 1, row * 0.1);
  player.Record();
  book.NumberRC(2, 1, 9);
  book.NumberRC(3, 1, 8);
  const std::string steps = "run M_t_Single\n  cells A4 7\n  select \"Dose\"\n  press OK\n";
  ASSERT_EQ(Play(player, steps), "");
  EXPECT_EQ(player.Recording(), R"(new workbook
cells A1 0.1 / 0.2 / 0.30000000000000004 / 0.4
heading A "Dose"
cells A2 9 / 8
run "Analysis/Parametric/Single Sample t"
  cells A4 7
  select A1:A4
  press OK
)");
  ScriptPlayer again(ScriptPaths(Root));
  ASSERT_EQ(Play(again, player.Recording()), "");
  ExpectSame(player, again);
  EXPECT_EQ(WriteRtf(again.PlayedDocuments().ReportAt(0).text), WriteRtf(player.PlayedDocuments().ReportAt(0).text));
}

// Typed in one region, played in another.
TEST(HandEdits, DatesAreThoseThatWereTyped) {
  ScriptPlayer player(ScriptPaths(Root));
  Workbook& book = player.PlayedDocuments().NewWorkbook();
  player.Record();
  const Regional german{",", ".", "dd.mm.yyyy"};
  int row = 0;
  for (const char* text : {"12.03.2001", "13.03.2001 06:00", "13.03.2001 08:00:01", "12,5%", "'14.03.2001", "14/3"}) {
    book.Enter(++row, 2, text, german);
  }
  book.Enter(++row, 2, "15.03.2001", german);
  book.SetLook({row, 2, row, 2}, {.number = NumberFormat()});  // as the number that it is
  book.Enter(++row, 2, "12.03.2001", german);
  book.NumberRC(row, 2, 36962.123456789);
  const std::string steps = "run M_t_Single\n  cells A1 7 / 2001-03-12 / 8\n  select A1:A3\n  press OK\n";
  ASSERT_EQ(Play(player, steps), "");
  EXPECT_TRUE(player.Recording().starts_with(R"(new workbook
cells B1 2001-03-12 / 2001-03-13T06:00 / 2001-03-13T08:00:01 / 0.125 / "14.03.2001" / "14/3" / 36965
cells B8 36962.123456789
)")) << player.Recording();
  ScriptPlayer again(ScriptPaths(Root));
  ASSERT_EQ(Play(again, player.Recording()), "");
  ExpectSame(player, again);
  const Workbook& played = again.PlayedDocuments().WorkbookAt(0);
  EXPECT_EQ(played.NumberRC(1, 2), 36962);
  EXPECT_EQ(played.FormattedTextRC(2, 2), "2001-03-13 06:00");
  EXPECT_EQ(played.FormattedTextRC(4, 2), "12.5%");
  EXPECT_EQ(played.FormattedTextRC(7, 2), "36965");
  EXPECT_EQ(played.FormattedTextRC(8, 2), "2001-03-12");
  EXPECT_EQ(played.FormattedTextRC(2, 1), "2001-03-12");
}

// Anything that is done by hand, in any order, undone and redone.
class Hand {
 public:
  Hand(OpenDocuments& documents, unsigned seed) : documents_(documents), random_(seed) {}

  void Act() {
    if (documents_.WorkbookCount() == 0 || Of(40) == 0) documents_.NewWorkbook();
    if (Of(12) == 0) documents_.ActivateWorkbook(Of(documents_.WorkbookCount()));
    Workbook& book = *documents_.ActiveWorkbook();
    const int row = 1 + Of(12), column = 1 + Of(6);
    const CellRange range{row, column, row + Of(4), column + Of(3)};
    switch (Of(20)) {
      case 0:
        return void(book.InsertRows(row, 1 + Of(2)));
      case 1:
        return void(book.DeleteColumns(column, 1));
      case 2:
        return void(book.DeleteCells(range, Of(2) ? Shift::Rows : Shift::Columns));
      case 3:
        return void(book.ClearRange(range));
      case 4:
        return void(book.FillDown(range));
      case 5:
        return void(book.CopyBlock(range, 1 + Of(12), 1 + Of(6)));
      case 6:
        return void(book.Undo());
      case 7:
        return void(book.Redo());
      case 8:
        return book.ColText(column, Of(3) ? "Title " + std::to_string(Of(5)) : "");
      case 9:
        return void(book.SetLook(range, {.number = NumberFormat{static_cast<NumberFormat::Form>(Of(8)), Of(4)}}));
      case 10:
        return void(Of(2) ? book.AddSheet() : book.DeleteSheet(1 + Of(book.SheetCount())));
      case 11:
        return void(book.RenameSheet(1 + Of(book.SheetCount()), "Name " + std::to_string(Of(9))));
      case 12:
        return void(book.MoveSheet(1 + Of(book.SheetCount()), 1 + Of(book.SheetCount())));
      case 13:
        return book.Sheet(1 + Of(book.SheetCount()));
      case 14:
        return book.SetLogical(row, column, Of(2) == 0);
      case 15:
        return book.Enter(row, column, "=A" + std::to_string(row) + "+2", {});
      case 16:
        return book.TextRC(row, column, Of(3) ? "a \"quoted\" word" : "'=007");
      default:
        return book.NumberRC(row, column, std::uniform_real_distribution<>(-1e6, 1e6)(random_));
    }
  }

  int Of(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

 private:
  OpenDocuments& documents_;
  std::mt19937 random_;
};

TEST(HandEdits, AnyEditingPlaysToTheSameWorkbooks) {
  for (unsigned seed = 1; seed <= 150; ++seed) {
    ScriptPlayer first(ScriptPaths(Root));
    Hand hand(first.PlayedDocuments(), seed);
    for (int i = hand.Of(30); i > 0; --i) hand.Act();  // there before the recording
    first.Record();
    for (int i = 0; i < 60; ++i) {
      hand.Act();
      if (hand.Of(10) == 0) first.Recording();  // as a command does
    }
    const std::string script = first.Recording();
    ScriptPlayer second(ScriptPaths(Root));
    ASSERT_EQ(Play(second, script), "") << "seed " << seed << "\n" << script;
    ExpectSame(first, second);
    if (testing::Test::HasFailure()) FAIL() << "seed " << seed << "\n" << script;
  }
}

}  // namespace
}  // namespace tellurix
