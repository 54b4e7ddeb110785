// Expected results are the documented behaviour of spreadsheets, worked out by hand; the standard deviation with many
// digits is from R 4.2.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "workbook/DelimitedText.h"
#include "workbook/Workbook.h"

namespace tellurix {
namespace {

class Formulas : public testing::Test {
 protected:
  void Enter(const std::string& cell, const std::string& text) {
    CellRange at;
    ASSERT_TRUE(ReadRange(cell, at)) << cell;
    book.Enter(at.firstRow, at.firstColumn, text, Regional());
  }
  std::string Shown(const std::string& cell) const {
    CellRange at;
    EXPECT_TRUE(ReadRange(cell, at)) << cell;
    return book.FormattedTextRC(at.firstRow, at.firstColumn);
  }
  std::string Text(const std::string& cell) const {
    CellRange at;
    EXPECT_TRUE(ReadRange(cell, at)) << cell;
    return book.FormulaText(at.firstRow, at.firstColumn);
  }

  Workbook book;
};

TEST_F(Formulas, ComeToWhatSpreadsheetsGive) {
  // A: 1 2 3 "x" (empty) TRUE 10;  B1 "5" as text, B2 an error, B3 -4, B4 FALSE
  for (const auto& [cell, text] : std::vector<std::pair<const char*, const char*>>{{"A1", "1"},
                                                                                   {"A2", "2"},
                                                                                   {"A3", "3"},
                                                                                   {"A4", "x"},
                                                                                   {"A6", "TRUE"},
                                                                                   {"A7", "10"},
                                                                                   {"B1", "'5"},
                                                                                   {"B2", "=1/0"},
                                                                                   {"B3", "-4"},
                                                                                   {"B4", "FALSE"},
                                                                                   {"C1", "two  words "},
                                                                                   {"C2", "caf\xc3\xa9"}}) {
    Enter(cell, text);
  }
  book.AddSheet("Other one");
  Enter("A1", "7");
  Enter("B2", "8");
  book.Sheet(1);
  const std::pair<const char*, const char*> table[] = {// operators and their order
                                                       {"=1+2*3", "7"},
                                                       {"=(1+2)*3", "9"},
                                                       {"=-2^2", "4"},
                                                       {"=0-2^2", "-4"},
                                                       {"=2^-1", "0.5"},
                                                       {"=2^3^2", "64"},
                                                       {"=--3", "3"},
                                                       {"=+-+3", "-3"},
                                                       {"=50%", "0.5"},
                                                       {"=-50%", "-0.5"},
                                                       {"=200%%", "0.02"},
                                                       {"=10%^2", "0.01"},
                                                       {"=7-2-1", "4"},
                                                       {"=8/4/2", "1"},
                                                       {"=1+2&3+4", "37"},
                                                       {"=\"a\"&\"b\"=\"AB\"", "TRUE"},
                                                       {"=1<2", "TRUE"},
                                                       {"=1<2=TRUE", "TRUE"},
                                                       {"=2<>2", "FALSE"},
                                                       {"=3>=3", "TRUE"},
                                                       {"=3<=2", "FALSE"},
                                                       {"=\"abc\"<\"ABD\"", "TRUE"},
                                                       {"=99<\"1\"", "TRUE"},
                                                       {"=\"zzz\"<FALSE", "TRUE"},
                                                       {"= 1 +\n2 ", "3"},
                                                       {"=1.5e2+.5", "150.5"},
                                                       {"=1E400", "#NUM!"},
                                                       {"=1e-400", "0"},
                                                       {"=1e308*10", "#NUM!"},
                                                       {"=\"say \"\"hi\"\"\"", "say \"hi\""},
                                                       {"=TRUE+1", "2"},
                                                       {"=TRUE&1", "TRUE1"},
                                                       {"=-0", "0"},
                                                       {"=0^0", "#NUM!"},
                                                       {"=0^-1", "#DIV/0!"},
                                                       {"=(-8)^(1/3)", "#NUM!"},
                                                       {"=1/0", "#DIV/0!"},
                                                       {"=\"a\"+1", "#VALUE!"},
                                                       {"=-\"a\"", "#VALUE!"},
                                                       // references
                                                       {"=A1+A2", "3"},
                                                       {"=$A$1+A$2+$A3", "6"},
                                                       {"=a1", "1"},
                                                       {"=A5", "0"},
                                                       {"=A5&\"\"", ""},
                                                       {"=A5=0", "TRUE"},
                                                       {"=A5=\"\"", "TRUE"},
                                                       {"=A5=FALSE", "TRUE"},
                                                       {"=A4", "x"},
                                                       {"=A4+1", "#VALUE!"},
                                                       {"=A6+1", "2"},
                                                       {"=A6", "TRUE"},
                                                       {"=B1+1", "#VALUE!"},
                                                       {"=B2+1", "#DIV/0!"},
                                                       {"=A1:A3+1", "#VALUE!"},
                                                       {"='Other one'!A1*2", "14"},
                                                       {"=SUM('other ONE'!A1:B2)", "15"},
                                                       {"=Sheet1!A7", "10"},
                                                       {"=Nowhere!A1", "#REF!"},
                                                       {"=#REF!+1", "#REF!"},
                                                       {"=LOG10+1", "1"},
                                                       {"=XFE1", "#NAME?"},
                                                       {"=A1048577", "#NAME?"},
                                                       // functions over many
                                                       {"=SUM(A1:A7)", "16"},
                                                       {"=sum(A:A)", "16"},
                                                       {"=SUM(1:1)", "1"},
                                                       {"=SUM(A3:A1)", "6"},
                                                       {"=SUM(A1;A2,A3)", "6"},
                                                       {"=SUM(TRUE,2)", "3"},
                                                       {"=SUM(A6)", "0"},
                                                       {"=SUM(\"a\")", "#VALUE!"},
                                                       {"=SUM(A4)", "0"},
                                                       {"=SUM(B1:B3)", "#DIV/0!"},
                                                       {"=SUM(A5)", "0"},
                                                       {"=AVERAGE(A1:A7)", "4"},
                                                       {"=AVERAGE(A4:A5)", "#DIV/0!"},
                                                       {"=MIN(A1:A7,B3)", "-4"},
                                                       {"=MAX(A1:A7)", "10"},
                                                       {"=MIN(A4)", "0"},
                                                       {"=COUNT(A1:B7)", "5"},
                                                       {"=COUNT(1,\"a\",TRUE)", "2"},
                                                       {"=COUNTA(A1:B7)", "10"},
                                                       {"=MEDIAN(A1:A7)", "2.5"},
                                                       {"=MEDIAN(3,1,2)", "2"},
                                                       {"=MEDIAN(A5)", "#NUM!"},
                                                       {"=VAR(2,4,4,4,5,5,7,9)*7", "32"},
                                                       {"=STDEV(1,2,3,4,5)^2", "2.5"},
                                                       {"=VAR(A1)", "#DIV/0!"},
                                                       {"=PRODUCT(A1:A7)", "60"},
                                                       {"=PRODUCT(A5)", "0"},
                                                       {"=SUMSQ(A1:A3)", "14"},
                                                       {"=SUM(1e16,1,-1e16)", "1"},
                                                       {"=VAR(1000000001,1000000002,1000000003)", "1"},
                                                       {"=AND(1,TRUE)", "TRUE"},
                                                       {"=AND(A1:A7)", "TRUE"},
                                                       {"=AND(B4,A1)", "FALSE"},
                                                       {"=OR(B4,0)", "FALSE"},
                                                       {"=OR(A4:A5)", "#VALUE!"},
                                                       {"=NOT(0)", "TRUE"},
                                                       // others
                                                       {"=SQRT(16)", "4"},
                                                       {"=SQRT(-1)", "#NUM!"},
                                                       {"=LN(EXP(2))", "2"},
                                                       {"=LN(0)", "#NUM!"},
                                                       {"=LOG10(1000)", "3"},
                                                       {"=LOG10(-1)", "#NUM!"},
                                                       {"=EXP(1000)", "#NUM!"},
                                                       {"=ABS(B3)", "4"},
                                                       {"=INT(-1.5)", "-2"},
                                                       {"=INT(1.9)", "1"},
                                                       {"=MOD(-7,3)", "2"},
                                                       {"=MOD(7,-3)", "-2"},
                                                       {"=MOD(7,0)", "#DIV/0!"},
                                                       {"=ROUND(2.5,0)", "3"},
                                                       {"=ROUND(-2.5,0)", "-3"},
                                                       {"=ROUND(2.675,2)", "2.68"},
                                                       {"=ROUND(1.005,2)", "1.01"},
                                                       {"=ROUND(1234.5,-2)", "1200"},
                                                       {"=ROUND(1250,-2)", "1300"},
                                                       {"=ROUND(99.99,1)", "100"},
                                                       {"=ROUND(49,-2)", "0"},
                                                       {"=ROUND(50,-2)", "100"},
                                                       {"=ROUND(5,-2)", "0"},
                                                       {"=ROUND(1e-20,3)", "0"},
                                                       {"=ROUND(0.1,15)", "0.1"},
                                                       {"=SIN(0)+COS(0)+TAN(0)", "1"},
                                                       {"=COS(PI())", "-1"},
                                                       {"=LEN(C2)", "4"},
                                                       {"=LEN(12.5)", "4"},
                                                       {"=LEN(A5)", "0"},
                                                       {"=TRIM(C1)&\".\"", "two words."},
                                                       {"=ISNUMBER(A1)", "TRUE"},
                                                       {"=ISNUMBER(B1)", "FALSE"},
                                                       {"=ISNUMBER(B2)", "FALSE"},
                                                       {"=ISBLANK(A5)", "TRUE"},
                                                       {"=ISBLANK(A4)", "FALSE"},
                                                       {"=ISBLANK(0)", "FALSE"},
                                                       {"=IF(A1=1,\"yes\",\"no\")", "yes"},
                                                       {"=IF(0,1/0,5)", "5"},
                                                       {"=IF(1,5,1/0)", "5"},
                                                       {"=IF(1,5,1/0)+1", "6"},
                                                       {"=IF(0,1)", "FALSE"},
                                                       {"=IF(1/0,1,2)", "#DIV/0!"},
                                                       {"=1+IF(1/0,1,2)*2", "#DIV/0!"},
                                                       {"=IF(\"a\",1,2)", "#VALUE!"},
                                                       {"=IF(IF(1,0,1),2,IF(TRUE,3,4))", "3"},
                                                       {"=SUM(IF(1,A1:A3,0))", "6"},
                                                       {"=IF(A5,1,2)", "2"},
                                                       // what is no formula
                                                       {"=1+", "#ERR"},
                                                       {"=(1", "#ERR"},
                                                       {"=1)", "#ERR"},
                                                       {"=SUM(", "#ERR"},
                                                       {"=\"open", "#ERR"},
                                                       {"=1 2", "#ERR"},
                                                       {"=A1:B", "#ERR"},
                                                       {"=SQRT()", "#ERR"},
                                                       {"=SQRT(1,2)", "#ERR"},
                                                       {"=IF(1)", "#ERR"},
                                                       {"=12ab", "#ERR"},
                                                       {"=!A1", "#ERR"},
                                                       {"=$", "#ERR"},
                                                       {"=.", "#ERR"},
                                                       {"=foo", "#NAME?"},
                                                       {"=FOO(1,2)", "#NAME?"}};
  for (const auto& [formula, shown] : table) {
    Enter("Z50", formula);
    EXPECT_EQ(Shown("Z50"), shown) << formula;
    EXPECT_EQ(Text("Z50"), formula);
    EXPECT_LT(book.TypeRC(50, 26), 0) << formula;
    EXPECT_EQ(book.IsError(50, 26), shown[0] == '#') << formula;
  }
  // R: sd(c(1.5, 2.25, 8, -3, 0.125))
  Enter("Z50", "=STDEV(1.5,2.25,8,-3,0.125)");
  EXPECT_NEAR(book.NumberRC(50, 26), 4.0179285707936625, 1e-14);
  // Deep nesting is refused, not followed to the end of the stack; a long sum is no nesting.
  Enter("Z50", "=" + std::string(100000, '(') + "1" + std::string(100000, ')'));
  EXPECT_EQ(Shown("Z50"), "#ERR");
  Enter("Z50", "=" + std::string(100000, '-') + "1");
  EXPECT_EQ(Shown("Z50"), "#ERR");
  std::string sum = "=0";
  for (int i = 0; i < 100000; ++i) sum += "+1";
  Enter("Z50", sum);
  EXPECT_EQ(Shown("Z50"), "100000");
}

TEST_F(Formulas, AreMadeByTypingAlone) {
  const std::tuple<const char*, int, const char*> typed[] = {
      {"1.5", NumberCell, "1.5"},    {" -2e3 ", NumberCell, "-2000"},
      {"true", LogicalCell, "TRUE"}, {"FALSE", LogicalCell, "FALSE"},
      {"'=A1", TextCell, "=A1"},     {"'12", TextCell, "12"},
      {"=", TextCell, "="},          {"=2", -NumberCell, "2"},
      {"abc", TextCell, "abc"},      {"*", TextCell, "*"},
      {"", EmptyCell, ""},           {"'", EmptyCell, ""}};
  for (const auto& [text, type, shown] : typed) {
    Enter("B2", text);
    EXPECT_EQ(book.TypeRC(2, 2), type) << text;
    EXPECT_EQ(Shown("B2"), shown) << text;
  }
  book.Enter(2, 2, "1,5", Regional{","});
  EXPECT_EQ(book.NumberRC(2, 2), 1.5);
  book.TextRC(2, 2, "=1+1");
  EXPECT_EQ(book.TypeRC(2, 2), TextCell);
  EXPECT_EQ(Shown("B2"), "=1+1");
  // A result that is given stays until what it refers to changes.
  book.SetFormula(3, 3, "=B9+1", FormulaResult::Number(77));
  EXPECT_EQ(Shown("C3"), "77");
  Enter("B9", "4");
  EXPECT_EQ(Shown("C3"), "5");
}

TEST_F(Formulas, FollowWhatTheyReferTo) {
  Enter("A1", "1");
  Enter("A2", "=A1+1");
  Enter("A3", "=SUM(A1:A2)*10");
  Enter("B1", "=SUM(A:A)");
  EXPECT_EQ(Shown("A3"), "30");
  EXPECT_EQ(Shown("B1"), "33");
  book.MarkSaved();
  std::vector<WorkbookChange> heard;
  book.AddListener([&](const WorkbookChange& change) { heard.push_back(change); });
  Enter("A1", "5");
  EXPECT_EQ(Shown("A3"), "110");
  EXPECT_EQ(Shown("B1"), "121");
  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].range, (CellRange{1, 1, 3, 2}));
  EXPECT_TRUE(book.document.changed);
  EXPECT_TRUE(book.Undo());
  EXPECT_FALSE(book.document.changed);
  EXPECT_EQ(Shown("B1"), "33");
  EXPECT_TRUE(book.Redo());
  EXPECT_EQ(Shown("B1"), "121");
  EXPECT_TRUE(book.Undo());
  EXPECT_TRUE(book.Undo());  // B1 goes
  EXPECT_EQ(Shown("B1"), "");
  EXPECT_EQ(Shown("A3"), "30");
  // Columns at once, clearing, and cells written within one step.
  book.SetColumnNumbers(1, 1, std::vector<double>{7});
  EXPECT_EQ(Shown("A3"), "150");
  book.ClearRange({1, 1, 1, 1});
  EXPECT_EQ(Shown("A3"), "10");
  book.BeginStep("both");
  book.NumberRC(1, 1, 2);
  book.Enter(2, 1, "=A1*2", Regional());
  book.EndStep();
  EXPECT_EQ(Shown("A3"), "60");
}

TEST_F(Formulas, ReferencesFollowTheirCells) {
  Enter("A1", "=B5+$B$5+SUM(B2:B8)+SUM(B:B)-SUM(2:3)");
  Enter("A2", "=SUM(B5:B6)");
  book.InsertRows(5, 2);
  EXPECT_EQ(Text("A1"), "=B7+$B$7+SUM(B2:B10)+SUM(B:B)-SUM(2:3)");
  EXPECT_EQ(Text("A2"), "=SUM(B7:B8)");
  book.DeleteRows(7, 1);
  EXPECT_EQ(Text("A1"), "=#REF!+#REF!+SUM(B2:B9)+SUM(B:B)-SUM(2:3)");
  EXPECT_EQ(Text("A2"), "=SUM(B7:B7)");
  EXPECT_EQ(Shown("A1"), "#REF!");
  book.Undo();
  EXPECT_EQ(Text("A1"), "=B7+$B$7+SUM(B2:B10)+SUM(B:B)-SUM(2:3)");
  book.InsertColumns(2, 1);
  EXPECT_EQ(Text("A1"), "=C7+$C$7+SUM(C2:C10)+SUM(C:C)-SUM(2:3)");
  book.DeleteColumns(3, 1);
  EXPECT_EQ(Text("A2"), "=SUM(#REF!)");
  book.Undo();
  book.DeleteRows(2, 1);
  EXPECT_EQ(Text("A1"), "=C6+$C$6+SUM(C2:C9)+SUM(C:C)-SUM(2:2)");
  // Cells alone: only references that lie within what moves.
  Enter("A1", "=C3+D3+SUM(C3:D3)+SUM(C1:C9)");
  book.InsertCells({2, 3, 3, 3}, Shift::Rows);
  EXPECT_EQ(Text("A1"), "=C5+D3+SUM(C3:D3)+SUM(C1:C11)");
  Enter("E5", "=A1");
  book.InsertCells({5, 2, 5, 2}, Shift::Columns);
  EXPECT_EQ(Text("A1"), "=D5+D3+SUM(C3:D3)+SUM(C1:C11)");
  EXPECT_EQ(Text("F5"), "=A1");
  book.DeleteCells({5, 2, 5, 2}, Shift::Columns);
  EXPECT_EQ(Text("A1"), "=C5+D3+SUM(C3:D3)+SUM(C1:C11)");
  book.DeleteCells({5, 3, 5, 3}, Shift::Rows);
  EXPECT_EQ(Text("A1"), "=#REF!+D3+SUM(C3:D3)+SUM(C1:C10)");
  // Pushed beyond the end.
  Enter("A1", "=B1048576+SUM(B1048570:B1048576)");
  book.InsertRows(1000, 3);
  EXPECT_EQ(Text("A1"), "=#REF!+SUM(B1048573:B1048576)");
}

TEST_F(Formulas, CopiesMoveTheirRelativeReferences) {
  for (int row = 1; row <= 5; ++row) Enter("A" + std::to_string(row), std::to_string(row));
  Enter("B1", "=A1+$A$1+A$1+$A1+SUM($A$1:A1)");
  EXPECT_TRUE(book.FillDown({1, 2, 5, 2}));
  EXPECT_EQ(Text("B5"), "=A5+$A$1+A$1+$A5+SUM($A$1:A5)");
  EXPECT_EQ(Shown("B5"), "27");
  EXPECT_EQ(book.UndoCaption(), "Fill down");
  EXPECT_TRUE(book.FillRight({1, 2, 1, 3}));
  EXPECT_EQ(Text("C1"), "=B1+$A$1+B$1+$A1+SUM($A$1:B1)");
  EXPECT_TRUE(book.CopyBlock({5, 2, 5, 2}, 4, 4));
  EXPECT_EQ(Text("D4"), "=C4+$A$1+C$1+$A4+SUM($A$1:C4)");
  EXPECT_TRUE(book.CopyBlock({5, 2, 5, 2}, 1, 1));
  EXPECT_EQ(Text("A1"), "=#REF!+$A$1+#REF!+$A1+SUM(#REF!)");
  EXPECT_EQ(Shown("A1"), "#CIRC!");  // $A$1 is itself
  book.Undo();
  EXPECT_EQ(Shown("B5"), "27");
  // Each copy lives its own life, in columns of whole shared segments too.
  Enter("F1", "=E1*2");
  book.FillDown({1, 6, 9000, 6});
  book.CopyBlock({1, 6, 9000, 6}, 1, 8);
  book.NumberRC(5000, 5, 21);
  book.NumberRC(5000, 7, 4);
  EXPECT_EQ(Shown("F5000"), "42");
  EXPECT_EQ(Shown("H5000"), "8");
  Enter("J1", "text");
  Enter("J2", "9");
  book.FillDown({1, 10, 2, 11});
  EXPECT_EQ(Shown("J2"), "text");
  Enter("K1", "TRUE");
  book.FillDown({1, 11, 3, 11});
  EXPECT_EQ(Shown("K3"), "TRUE");
  EXPECT_FALSE(book.FillDown({3, 1, 1, 1}));
}

TEST_F(Formulas, KnowTheSheets) {
  book.AddSheet("Data");
  Enter("A1", "3");
  book.Sheet(1);
  Enter("A1", "=data!A1*2");
  Enter("A2", "=Later!A1");
  Enter("A3", "=SUM('Data'!A:A)");
  EXPECT_EQ(Shown("A1"), "6");
  EXPECT_EQ(Shown("A2"), "#REF!");
  book.RenameSheet(2, "It's new");
  EXPECT_EQ(Text("A1"), "='It''s new'!A1*2");
  EXPECT_EQ(Shown("A1"), "6");
  book.Sheet(2);
  Enter("A1", "4");
  book.InsertRows(1, 1);
  book.Sheet(1);
  EXPECT_EQ(Text("A1"), "='It''s new'!A2*2");
  EXPECT_EQ(Shown("A1"), "8");
  book.MoveSheet(2, 1);
  book.Sheet(1);
  Enter("A2", "5");
  book.Sheet(2);
  EXPECT_EQ(Shown("A1"), "10");
  EXPECT_EQ(Shown("A3"), "5");
  book.DeleteSheet(1);
  EXPECT_EQ(Text("A1"), "=#REF!*2");
  EXPECT_EQ(Shown("A3"), "#REF!");
  book.Undo();
  book.Sheet(2);
  EXPECT_EQ(Shown("A1"), "10");
  book.AddSheet("LATER");
  Enter("A1", "8");
  book.Sheet(2);
  EXPECT_EQ(Shown("A2"), "8");
}

TEST_F(Formulas, CirclesAreToldAndBroken) {
  Enter("A1", "=A1");
  EXPECT_EQ(Shown("A1"), "#CIRC!");
  Enter("A1", "=B1+1");
  Enter("B1", "=C1");
  Enter("C1", "=IF(FALSE,SUM(A:A),7)");
  Enter("D1", "=A1");
  Enter("E1", "=ISNUMBER(B1)");
  for (const char* cell : {"A1", "B1", "C1", "D1"}) EXPECT_EQ(Shown(cell), "#CIRC!") << cell;
  EXPECT_EQ(Shown("E1"), "FALSE");
  Enter("C1", "7");
  EXPECT_EQ(Shown("D1"), "8");
  book.Undo();
  EXPECT_EQ(Shown("D1"), "#CIRC!");
  book.Redo();
  EXPECT_EQ(Shown("E1"), "TRUE");
  // One of 100 000 cells.
  book.BeginStep("ring");
  const int length = 100000;
  for (int row = 2; row <= length; ++row) {
    book.Enter(row, 7, "=G" + std::to_string(row - 1) + "+1", Regional());
  }
  book.Enter(1, 7, "=G" + std::to_string(length), Regional());
  book.EndStep();
  EXPECT_EQ(Shown("G50000"), "#CIRC!");
  Enter("G1", "1");
  EXPECT_EQ(book.NumberRC(length, 7), length);
}

TEST_F(Formulas, LoadingMakesNone) {
  Enter("A1", "=B1");
  {
    const Workbook::Loading loading(book);
    book.TextRC(1, 1, "x");
    book.NumberRC(1, 2, 5);
  }
  EXPECT_EQ(Text("A1"), "=B1");
  Enter("B1", "6");
  EXPECT_EQ(Shown("A1"), "6");
  {
    Workbook::Loading loading(book);
    book.SetFormula(1, 3, "=B1*2", FormulaResult::Number(1));
    book.TextRC(1, 4, "=B1");
    book.NumberRC(1, 2, 8);
    loading.Accept();
  }
  EXPECT_EQ(book.TypeRC(1, 4), TextCell);
  EXPECT_EQ(Shown("C1"), "1");  // as it was read
  Enter("B1", "9");
  EXPECT_EQ(Shown("C1"), "18");
}

}  // namespace
}  // namespace tellurix
