#include "workbook/Workbook.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <vector>

namespace tellurix {
namespace {

using Kind = WorkbookChange::Kind;

TEST(GridNames, ColumnsAndRangesReadAndWrite) {
  const std::pair<int, const char*> columns[] = {{1, "A"},   {26, "Z"},   {27, "AA"},   {52, "AZ"},
                                                 {53, "BA"}, {702, "ZZ"}, {703, "AAA"}, {16384, "XFD"}};
  for (const auto& [number, letters] : columns) {
    EXPECT_EQ(ColumnLetters(number), letters);
    EXPECT_EQ(ColumnNumber(letters), number);
  }
  EXPECT_EQ(ColumnNumber("aa"), 27);
  EXPECT_EQ(ColumnNumber("A1"), 0);
  EXPECT_EQ(ColumnNumber("ZZZZZZZZZZZZZZ"), 0);

  const std::pair<const char*, CellRange> ranges[] = {{"A1", {1, 1, 1, 1}},
                                                      {"a1:b9", {1, 1, 9, 2}},
                                                      {"B9:A1", {1, 1, 9, 2}},
                                                      {"C:D", {1, 3, GridStore::MaxRows, 4}},
                                                      {" 3:7 ", {3, 1, 7, GridStore::MaxColumns}},
                                                      {"XFD1048576", {1048576, 16384, 1048576, 16384}}};
  for (const auto& [text, expected] : ranges) {
    CellRange range;
    EXPECT_TRUE(ReadRange(text, range)) << text;
    EXPECT_EQ(range, expected) << text;
  }
  for (const char* text : {"", ":", "A", "7", "A1:", ":A1", "A1:B", "A:7", "A0", "XFE1", "A1048577", "1A", "A1B", "A-1",
                           "A1:B2:C3", "A99999999999", "A 1"}) {
    CellRange range{5, 5, 5, 5};
    EXPECT_FALSE(ReadRange(text, range)) << text;
    EXPECT_EQ(range, (CellRange{5, 5, 5, 5})) << text;
  }
  EXPECT_EQ(RangeText({1, 1, 9, 2}), "A1:B9");
  EXPECT_EQ(RangeText({4, 28, 4, 28}), "AB4");
}

TEST(WorkbookCells, KeepTheirKindAndShowIt) {
  Workbook book;
  book.NumberRC(1, 1, 0.1);
  book.TextRC(2, 1, "caf\xc3\xa9");
  book.SetLogical(3, 1, true);
  book.SetFormula(4, 1, "=A1*2", FormulaResult::Number(0.2));
  book.SetFormula(5, 1, "=A1>0", FormulaResult::Logical(true));
  book.SetFormula(6, 1, "=1/0", FormulaResult::Error("#ERR"));
  book.NumberRC(7, 1, std::nan(""));
  book.NumberRC(8, 1, -std::numeric_limits<double>::infinity());
  book.SetFormula(9, 1, "=LN(-1)", FormulaResult::Number(std::nan("")));

  const std::tuple<int, int, double, const char*> expected[] = {
      {1, NumberCell, 0.1, "0.1"},  {2, TextCell, 0, "caf\xc3\xa9"}, {3, LogicalCell, -1, "TRUE"},
      {4, -NumberCell, 0.2, "0.2"}, {5, -LogicalCell, -1, "TRUE"},   {6, -TextCell, 0, "#ERR"},
      {7, TextCell, 0, "*"},        {8, TextCell, 0, "*"},           {9, -TextCell, 0, "*"},
      {10, EmptyCell, 0, ""}};
  const GridStore& grid = book;
  for (const auto& [row, type, number, shown] : expected) {
    EXPECT_EQ(grid.TypeRC(row, 1), type) << row;
    EXPECT_EQ(grid.NumberRC(row, 1), number) << row;
    EXPECT_EQ(grid.FormattedTextRC(row, 1), shown) << row;
    EXPECT_EQ(grid.TextRC(row, 1), shown) << row;
    EXPECT_EQ(grid.ReadRC(row, 1).type, type) << row;
    EXPECT_EQ(grid.ReadRC(row, 1).number, number) << row;
    EXPECT_EQ(grid.ReadRC(row, 1).text, std::abs(type) == TextCell ? shown : "") << row;
  }
  EXPECT_EQ(book.FormulaText(4, 1), "=A1*2");
  EXPECT_EQ(book.FormulaText(1, 1), "");
  EXPECT_TRUE(book.IsError(6, 1));
  EXPECT_FALSE(book.IsError(2, 1));

  // A cell's own text may be written back to it, and a text written over by a number is gone.
  book.TextRC(2, 1, book.ReadRC(2, 1).text);
  EXPECT_EQ(book.TextRC(2, 1), "caf\xc3\xa9");
  book.NumberRC(2, 1, 5);
  EXPECT_EQ(book.ReadRC(2, 1).text, "");
}

TEST(WorkbookCells, BeyondTheSheetNothingHappens) {
  Workbook book;
  const std::pair<int, int> outside[] = {{0, 1},
                                         {-1, 1},
                                         {1, 0},
                                         {1, -5},
                                         {GridStore::MaxRows + 1, 1},
                                         {1, GridStore::MaxColumns + 1},
                                         {std::numeric_limits<int>::max(), 1},
                                         {1, std::numeric_limits<int>::min()}};
  book.NumberRC(1, 1, 7);
  for (const auto& [row, column] : outside) {
    EXPECT_FALSE(Workbook::Fits(row, column));
    book.NumberRC(row, column, 1);
    book.TextRC(row, column, "x");
    book.SetLogical(row, column, true);
    book.SetFormula(row, column, "=1", FormulaResult::Number(1));
    EXPECT_EQ(book.TypeRC(row, column), EmptyCell);
    EXPECT_EQ(book.NumberRC(row, column), 0);
    EXPECT_EQ(book.FormattedTextRC(row, column), "");
  }
  EXPECT_EQ(book.LastRow(), 1);
  EXPECT_EQ(book.LastCol(), 1);
  const std::vector<double> two{1, 2};
  EXPECT_FALSE(book.SetColumnNumbers(1, GridStore::MaxRows, two));
  EXPECT_FALSE(book.SetColumnNumbers(0, 1, two));
  EXPECT_TRUE(book.Undo());
  EXPECT_FALSE(book.Undo());

  book.NumberRC(GridStore::MaxRows, GridStore::MaxColumns, 3);
  EXPECT_EQ(book.NumberRC(GridStore::MaxRows, GridStore::MaxColumns), 3);
  EXPECT_EQ(book.LastRow(), GridStore::MaxRows);
  EXPECT_EQ(book.LastCol(), GridStore::MaxColumns);
}

TEST(WorkbookCells, UsedExtentFollowsDeletes) {
  Workbook book;
  const auto expectExtent = [&](int row, int column) {
    EXPECT_EQ(book.LastRow(), row);
    EXPECT_EQ(book.LastCol(), column);
  };
  expectExtent(0, 0);
  book.NumberRC(10, 2, 1);
  book.NumberRC(5000, 4, 1);
  book.TextRC(9000, 3, "x");
  book.ColText(9, "a heading is no cell");
  expectExtent(9000, 4);
  book.TextRC(9000, 3, "");
  expectExtent(5000, 4);
  book.ClearRange({1, 4, GridStore::MaxRows, 4});
  expectExtent(10, 2);
  book.DeleteRows(3, 4);
  expectExtent(6, 2);
  book.DeleteColumns(1, 1);
  expectExtent(6, 1);
  book.InsertRows(6, 4090);
  expectExtent(4096, 1);
  book.InsertRows(1, 1);
  expectExtent(4097, 1);
  book.ClearRange({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
  expectExtent(0, 0);
  book.Undo();
  expectExtent(4097, 1);
}

TEST(WorkbookCells, ColumnsFillAtOnce) {
  Workbook book;
  std::vector<double> numbers(10000);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<double>(i);
  numbers[5000] = std::nan("");
  EXPECT_TRUE(book.SetColumnNumbers(2, 3, numbers));
  EXPECT_EQ(book.LastRow(), 10002);
  EXPECT_EQ(book.NumberRC(10002, 2), 9999);
  EXPECT_EQ(book.TextRC(5003, 2), "*");
  EXPECT_EQ(book.NumberRC(5004, 2), 5001);
  const std::vector<std::string> texts{"a", "", "c"};
  EXPECT_TRUE(book.SetColumnTexts(2, 10001, texts));
  EXPECT_EQ(book.TextRC(10001, 2), "a");
  EXPECT_EQ(book.TypeRC(10002, 2), EmptyCell);
  EXPECT_EQ(book.LastRow(), 10003);
}

TEST(WorkbookEditing, WhatWouldBePushedOffIsRefused) {
  Workbook book;
  book.NumberRC(GridStore::MaxRows, 2, 1);
  book.NumberRC(3, GridStore::MaxColumns, 2);
  EXPECT_FALSE(book.InsertRows(1, 1));
  EXPECT_FALSE(book.InsertColumns(1, 1));
  EXPECT_FALSE(book.InsertCells({1, 2, 1, 2}, Shift::Rows));
  EXPECT_FALSE(book.InsertCells({3, 1, 3, 1}, Shift::Columns));
  EXPECT_FALSE(book.CopyBlock({1, 1, 2, 2}, GridStore::MaxRows, 1));
  EXPECT_FALSE(book.ClearRange({0, 1, 2, 2}));
  EXPECT_FALSE(book.DeleteRows(GridStore::MaxRows, 2));
  EXPECT_TRUE(book.InsertCells({1, 1, 1, 1}, Shift::Rows));
  EXPECT_TRUE(book.InsertCells({2, 1, 2, 1}, Shift::Columns));
  EXPECT_EQ(book.NumberRC(GridStore::MaxRows, 2), 1);
  EXPECT_EQ(book.NumberRC(3, GridStore::MaxColumns), 2);
  EXPECT_EQ(book.UndoCaption(), "Enter");

  Workbook headings;
  headings.RowText(GridStore::MaxRows, "last");
  headings.ColText(GridStore::MaxColumns, "last");
  EXPECT_FALSE(headings.InsertRows(1, 1));
  EXPECT_FALSE(headings.InsertColumns(1, 1));
}

TEST(WorkbookSheets, NamesAreUniqueAndEachHasItsOwn) {
  Workbook book;
  book.NumberRC(1, 1, 1);
  book.ColText(1, "first");
  book.SetColumnWidth(1, 20);
  book.SetSelection({2, 2, 3, 3});
  EXPECT_EQ(book.AddSheet("Donn\xc3\xa9"
                          "es"),
            2);
  EXPECT_EQ(book.Sheet(), 2);
  EXPECT_EQ(book.LastRow(), 0);
  EXPECT_EQ(book.ColText(1), "");
  EXPECT_EQ(book.ColumnWidth(1), Workbook::DefaultColumnWidth);
  EXPECT_EQ(book.Selection(), "A1");
  EXPECT_EQ(book.FindSheet("DONN\xc3\x89"
                           "ES"),
            2);
  EXPECT_EQ(book.AddSheet("sheet1"), 0);
  EXPECT_EQ(book.AddSheet(" "), 0);
  EXPECT_EQ(book.AddSheet(std::string(32, 'x')), 0);
  EXPECT_FALSE(book.RenameSheet(1,
                                "donn\xc3\xa9"
                                "es"));
  EXPECT_FALSE(book.RenameSheet(1, ""));
  EXPECT_TRUE(book.RenameSheet(1, "SHEET1"));
  EXPECT_EQ(book.AddSheet(), 3);
  EXPECT_EQ(book.SheetName(3), "Sheet3");
  EXPECT_TRUE(book.MoveSheet(3, 1));
  EXPECT_EQ(book.Sheet(), 1);  // it stays the active one
  EXPECT_EQ(book.SheetName(2), "SHEET1");
  book.Sheet(2);
  EXPECT_EQ(book.NumberRC(1, 1), 1);
  EXPECT_EQ(book.Selection(), "B2:C3");
  book.Sheet(9);
  EXPECT_EQ(book.Sheet(), 2);
  EXPECT_TRUE(book.DeleteSheet(2));
  EXPECT_TRUE(book.DeleteSheet(1));
  EXPECT_FALSE(book.DeleteSheet(1));
  EXPECT_EQ(book.SheetName(1),
            "Donn\xc3\xa9"
            "es");
  EXPECT_TRUE(book.Undo());
  EXPECT_TRUE(book.Undo());
  EXPECT_EQ(book.SheetCount(), 3);
  book.Sheet(2);
  EXPECT_EQ(book.NumberRC(1, 1), 1);
  EXPECT_EQ(book.ColText(1), "first");
  EXPECT_EQ(book.ColumnWidth(1), 20);
}

TEST(WorkbookSelection, KeepsRectanglesInTheOrderOfMarking) {
  Workbook book;
  EXPECT_EQ(book.Selection(), "A1");
  EXPECT_EQ(book.SelectionCount(), 1);
  book.SetSelection({9, 2, 1, 1});
  book.AddSelection({1, 4, 9, 4});
  EXPECT_EQ(book.Selection(), "A1:B9,D1:D9");
  EXPECT_EQ(book.GetSelection(1), (CellRange{1, 4, 9, 4}));
  book.SetActiveCell(5, 6);
  EXPECT_EQ(book.ActiveRow(), 5);
  EXPECT_EQ(book.ActiveColumn(), 6);
  EXPECT_EQ(book.SelectionCount(), 2);
  book.SetActiveCell(0, 1);
  EXPECT_EQ(book.ActiveRow(), 5);
  book.SetSelection({3, 2, GridStore::MaxRows + 10, 2});
  EXPECT_EQ(book.Selection(), "B3:B1048576");
  EXPECT_EQ(book.ActiveRow(), 3);
  EXPECT_EQ(book.ActiveColumn(), 2);
  EXPECT_FALSE(book.CanUndo());
}

TEST(WorkbookLooks, WidthsFitWhatIsShown) {
  Workbook book;
  book.TextRC(1, 1, "x");
  book.TextRC(2, 2, "\xe6\x97\xa5\xe6\x9c\xac\xe6\x97\xa5\xe6\x9c\xac\xe6\x97\xa5\xe6\x9c\xac");  // 6 wide characters
  book.TextRC(3, 3, std::string(200, 'w'));
  book.ColText(4, "a heading of 24 letters.");
  book.SetColumnWidth(5, 33);
  book.SetColumnWidth(6, 34);
  book.SetColWidthAuto({1, 1, GridStore::MaxRows, 5}, false);
  EXPECT_EQ(book.ColumnWidth(1), 8);
  EXPECT_EQ(book.ColumnWidth(2), 12);
  EXPECT_EQ(book.ColumnWidth(3), 60);
  EXPECT_EQ(book.ColumnWidth(4), 24);
  EXPECT_EQ(book.ColumnWidth(5), 33);
  book.SetColWidthAuto({1, 5, GridStore::MaxRows, GridStore::MaxColumns}, true);
  EXPECT_EQ(book.ColumnWidth(5), Workbook::DefaultColumnWidth);
  book.Undo();
  EXPECT_EQ(book.ColumnWidth(6), 34);
}

TEST(WorkbookUndo, AStepOfManyColumnsIsUndoneAsOne) {
  Workbook book;
  book.NumberRC(1, 3, -1);
  book.BeginStep("Write columns");
  for (int column = 1; column <= 20; ++column) {
    book.BeginStep("inner");
    for (int row = 1; row <= 5000; ++row) book.NumberRC(row, column, row * column);
    book.ColText(column, "c");
    book.EndStep();
    EXPECT_FALSE(book.Undo());  // not within a step
  }
  book.EndStep();
  EXPECT_EQ(book.UndoCaption(), "Write columns");
  EXPECT_TRUE(book.Undo());
  EXPECT_EQ(book.LastRow(), 1);
  EXPECT_EQ(book.LastCol(), 3);
  EXPECT_EQ(book.NumberRC(1, 3), -1);
  EXPECT_EQ(book.ColText(20), "");
  EXPECT_EQ(book.RedoCaption(), "Write columns");
  EXPECT_TRUE(book.Redo());
  EXPECT_EQ(book.NumberRC(5000, 20), 100000);
  EXPECT_TRUE(book.Undo());
  book.BeginStep("nothing");
  book.EndStep();
  EXPECT_TRUE(book.CanRedo());  // an empty step is none
  book.NumberRC(1, 1, 1);
  EXPECT_FALSE(book.CanRedo());
  book.EndStep();  // one too many is ignored
  EXPECT_TRUE(book.Undo());
}

TEST(WorkbookUndo, HistoryIsBounded) {
  Workbook book;
  for (int i = 1; i <= 250; ++i) book.NumberRC(i, 1, i);
  std::size_t undone = 0;
  while (book.Undo()) ++undone;
  EXPECT_EQ(undone, Workbook::HistorySteps);
  EXPECT_EQ(book.LastRow(), 50);
  EXPECT_TRUE(book.document.changed);

  // Contents of 8 MB a step: by memory long before their number.
  std::vector<double> column(1000000, 1.5);
  for (int i = 0; i < 60; ++i) {
    column[0] = i;
    book.SetColumnNumbers(1, 1, column);
  }
  undone = 0;
  while (book.Undo()) ++undone;
  EXPECT_GE(undone, 20u);
  EXPECT_LE(undone, Workbook::HistoryBytes / 8000000 + 1);

  // The same when the cells are written one by one, few enough to be logged as cells, all over the column.
  book.ClearHistory();
  book.SetColumnNumbers(1, 1, column);
  for (int i = 0; i < 100; ++i) {
    book.BeginStep("scattered");
    for (int n = 0; n < 400; ++n) book.NumberRC(n * 2500 + i + 1, 1, i);
    book.EndStep();
  }
  undone = 0;
  while (book.Undo()) ++undone;
  EXPECT_GE(undone, 10u);
  EXPECT_LE(undone, Workbook::HistoryBytes / 8000000 + 1);
}

TEST(WorkbookUndo, ChangedFollowsTheSavedState) {
  Workbook book;
  EXPECT_FALSE(book.document.changed);
  book.NumberRC(1, 1, 1);
  EXPECT_TRUE(book.document.changed);
  book.Undo();
  EXPECT_FALSE(book.document.changed);
  book.Redo();
  book.MarkSaved();
  book.NumberRC(1, 1, 2);
  book.Undo();
  EXPECT_FALSE(book.document.changed);
  book.Undo();
  EXPECT_TRUE(book.document.changed);
  book.NumberRC(1, 1, 1);  // the saved state cannot be reached any more, even by the same value
  EXPECT_TRUE(book.document.changed);
  book.Undo();
  EXPECT_TRUE(book.document.changed);
  book.MarkSaved();
  book.BeginStep("s");
  book.NumberRC(2, 2, 2);
  EXPECT_TRUE(book.document.changed);
  book.EndStep();
}

TEST(WorkbookUndo, ListenersHearOneChangeAStep) {
  Workbook book;
  std::vector<WorkbookChange> heard;
  const int number = book.AddListener([&](const WorkbookChange& change) { heard.push_back(change); });
  book.BeginStep("s");
  book.NumberRC(3, 2, 1);
  book.NumberRC(7, 5, 1);
  book.TextRC(1, 4, "x");
  book.ColText(2, "h");
  EXPECT_TRUE(heard.empty());
  book.EndStep();
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_EQ(heard[0].kind, Kind::Cells);
    EXPECT_EQ(heard[0].sheet, 1);
    EXPECT_EQ(heard[0].range, (CellRange{1, 2, 7, 5}));
    EXPECT_EQ(heard[1].kind, Kind::Headings);
    EXPECT_EQ(heard[1].range, (CellRange{0, 2, 0, 2}));
    heard.clear();
    if (round == 0) book.Undo();
  }
  book.AddSheet("other");
  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].kind, Kind::Sheets);
  book.RemoveListener(number);
  book.NumberRC(1, 1, 1);
  EXPECT_EQ(heard.size(), 1u);
}

TEST(WorkbookUndo, LoadingLeavesNoHistoryOrNoTrace) {
  Workbook book;
  book.NumberRC(1, 1, 1);
  book.TextRC(2, 1, "kept");
  {
    const Workbook::Loading loading(book);
    book.NumberRC(1, 1, 99);
    book.ClearRange({2, 1, 2, 1});
    book.AddSheet("new");
    book.NumberRC(5, 5, 5);
  }
  EXPECT_EQ(book.SheetCount(), 1);
  EXPECT_EQ(book.NumberRC(1, 1), 1);
  EXPECT_EQ(book.TextRC(2, 1), "kept");
  EXPECT_EQ(book.LastRow(), 2);
  EXPECT_TRUE(book.CanUndo());
  {
    Workbook::Loading loading(book);
    book.NumberRC(1, 1, 99);
    loading.Accept();
  }
  EXPECT_FALSE(book.CanUndo());
  EXPECT_FALSE(book.document.changed);
  EXPECT_EQ(book.NumberRC(1, 1), 99);
  book.NumberRC(1, 1, 3);
  EXPECT_TRUE(book.Undo());
  EXPECT_EQ(book.NumberRC(1, 1), 99);
  EXPECT_FALSE(book.document.changed);
}

}  // namespace
}  // namespace tellurix
