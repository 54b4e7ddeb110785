// Formulas in the worksheet window, typed, filled, copied and pasted.

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <cstring>
#include <vector>

#include "desktop/WorksheetView.h"

namespace tellurix {
namespace {

class SheetFormulas : public testing::Test {
 protected:
  SheetFormulas() {
    view.resize(900, 600);
    view.show();
    view.activateWindow();
    grid->setFocus();
    QApplication::processEvents();
    for (int row = 1; row <= 4; ++row) book.NumberRC(row, 1, 10 * row);
  }

  void Click(int row, int column) {
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->CellRect(row, column).center());
  }
  void Enter(int row, int column, const char* text) {
    Click(row, column);
    QTest::keyClicks(grid, text);
    QTest::keyClick(grid->Editor(), Qt::Key_Return);
  }
  std::string Formula(int row, int column) { return book.FormulaText(row, column); }
  void CopyTo(const char* from, const char* to) {
    grid->GoTo(from);
    ASSERT_TRUE(grid->Copy());
    grid->GoTo(to);
    ASSERT_TRUE(grid->Paste());
  }

  Regional regional;
  Workbook book;
  WorksheetView view{book, regional};
  GridView* grid = view.Grid();
};

TEST_F(SheetFormulas, TypedOnesShowTheirResultAndAreEditedAsTheirText) {
  Enter(1, 2, "=A1*2");
  EXPECT_EQ(Formula(1, 2), "=A1*2");
  EXPECT_EQ(book.NumberRC(1, 2), 20);
  Click(1, 2);
  EXPECT_EQ(view.FormulaLine()->text(), "=A1*2");
  QTest::keyClick(grid, Qt::Key_F2);
  EXPECT_EQ(grid->Editor()->text(), "=A1*2");
  QTest::keyClicks(grid->Editor(), "+1");
  QTest::keyClick(grid->Editor(), Qt::Key_Return);
  EXPECT_EQ(book.NumberRC(1, 2), 21);
  Enter(1, 1, "100");
  EXPECT_EQ(book.FormattedTextRC(1, 2), "201");
  Click(5, 2);
  QTest::mouseClick(view.FormulaLine(), Qt::LeftButton);
  QTest::keyClicks(view.FormulaLine(), "=SUM(A1:A4)");
  QTest::keyClick(view.FormulaLine(), Qt::Key_Return);
  EXPECT_EQ(book.NumberRC(5, 2), 190);
  Enter(6, 2, "=1/0");
  EXPECT_EQ(book.FormattedTextRC(6, 2), "#DIV/0!");
  grid->Undo();
  EXPECT_EQ(book.TypeRC(6, 2), EmptyCell);
}

// Opening and closing an edit must not make anything else of a text.
TEST_F(SheetFormulas, TextsThatLookLikeOtherThingsStayTexts) {
  for (const char* text : {"=A1", "12", "TRUE", "'tis"}) {
    book.TextRC(1, 3, text);
    Click(1, 3);
    QTest::keyClick(grid, Qt::Key_F2);
    EXPECT_EQ(grid->Editor()->text(), QString("'") + text);
    QTest::keyClick(grid->Editor(), Qt::Key_Backspace);
    QTest::keyClick(grid->Editor(), text[std::strlen(text) - 1]);
    QTest::keyClick(grid->Editor(), Qt::Key_Return);
    EXPECT_EQ(book.TypeRC(1, 3), TextCell) << text;
    EXPECT_EQ(book.TextRC(1, 3).size(), std::strlen(text));
  }
  LookChange asText;
  asText.number = NumberFormat{NumberFormat::Form::Text};
  book.SetLook({1, 4, 1, 4}, asText);
  Enter(1, 4, "007");
  EXPECT_EQ(book.TextRC(1, 4), "007");
  Click(1, 4);
  EXPECT_EQ(view.FormulaLine()->text(), "007");
}

TEST_F(SheetFormulas, FillsMoveTheirReferences) {
  Enter(1, 2, "=A1+$A$2");
  grid->GoTo("B1:B4");
  grid->FillDown();
  EXPECT_EQ(Formula(4, 2), "=A4+$A$2");
  EXPECT_EQ(book.NumberRC(4, 2), 60);
  grid->GoTo("B1:C4");
  grid->FillRight();
  EXPECT_EQ(Formula(4, 3), "=B4+$A$2");
  EXPECT_EQ(book.NumberRC(4, 3), 80);
  grid->Undo();
  grid->Undo();
  EXPECT_EQ(book.TypeRC(2, 2), EmptyCell);
}

TEST_F(SheetFormulas, CopiesMoveTheirReferencesAndCutOnesDoNot) {
  Enter(1, 2, "=A1");
  CopyTo("B1", "C2:D3");
  EXPECT_EQ(Formula(2, 3), "=B2");
  EXPECT_EQ(Formula(3, 4), "=C3");
  CopyTo("A1:B1", "A6");
  EXPECT_EQ(book.NumberRC(6, 1), 10);
  EXPECT_EQ(Formula(6, 2), "=A6");
  // Side by side from two ranges.
  Enter(1, 5, "=A1+B1");
  grid->GoTo("B1");
  book.AddSelection({1, 5, 1, 5});
  ASSERT_TRUE(grid->Copy());
  grid->GoTo("F2");
  ASSERT_TRUE(grid->Paste());
  EXPECT_EQ(Formula(2, 6), "=E2");
  EXPECT_EQ(Formula(2, 7), "=C2+D2");

  grid->GoTo("B1");
  ASSERT_TRUE(grid->Cut());
  grid->GoTo("H9");
  ASSERT_TRUE(grid->Paste());
  EXPECT_EQ(Formula(9, 8), "=A1");
  EXPECT_EQ(book.TypeRC(1, 2), EmptyCell);
}

TEST_F(SheetFormulas, FromElsewhereTheyGoAsTheyRead) {
  Enter(2, 2, "=A2");
  grid->GoTo("B2");
  ASSERT_TRUE(grid->Copy());
  EXPECT_EQ(QApplication::clipboard()->text(), "20\n");  // for other programs what shows
  Workbook other;
  other.NumberRC(2, 1, 7);
  WorksheetView otherView(other, regional);
  otherView.Grid()->GoTo("D9");
  ASSERT_TRUE(otherView.Grid()->Paste());
  EXPECT_EQ(other.FormulaText(9, 4), "=A2");
  EXPECT_EQ(other.NumberRC(9, 4), 7);

  QApplication::clipboard()->setText("=A1+1\tx\n\"quoted\"\t=\n");
  grid->GoTo("C5");
  ASSERT_TRUE(grid->Paste());
  EXPECT_EQ(book.NumberRC(5, 3), 11);
  EXPECT_EQ(book.TextRC(6, 3), "quoted");
  EXPECT_EQ(book.TypeRC(6, 4), TextCell);  // a lone "=" is no formula
  ASSERT_TRUE(grid->PasteSpecial(true, false));
  EXPECT_EQ(book.TypeRC(5, 3), TextCell);
  EXPECT_EQ(book.TextRC(5, 3), "=A1+1");
}

TEST_F(SheetFormulas, CopiesTakeTheirLooksAlong) {
  LookChange red, bold;
  red.fillColour = 0xFF0000;
  bold.bold = true;
  book.SetLook({1, 1, 2, 2}, red);
  book.SetLook({2, 2, 2, 2}, bold);
  CopyTo("A1:B3", "D1:G6");  // twice across and down
  for (int row = 1; row <= 6; ++row) {
    for (int column = 4; column <= 7; ++column) {
      EXPECT_EQ(book.LookAt(row, column), book.LookAt((row - 1) % 3 + 1, (column - 4) % 2 + 1)) << row << ' ' << column;
    }
  }
  EXPECT_TRUE(book.LookAt(5, 7).bold);
  ASSERT_TRUE(grid->Undo());  // with the cells
  EXPECT_EQ(book.LookAt(1, 4), CellLook());
  EXPECT_EQ(book.TypeRC(1, 4), EmptyCell);
}

}  // namespace
}  // namespace tellurix
