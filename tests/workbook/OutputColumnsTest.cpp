#include "workbook/OutputColumns.h"

#include <gtest/gtest.h>

#include <optional>

#include "numeric/Missing.h"
#include "tests/FakeHost.h"

namespace tellurix {
namespace {

class OutputColumnsTest : public ::testing::Test {
 protected:
  // Queues the choice of a row of the list of worksheets.
  void Pick(const char* row) {
    host.forms.push_back([row](Form& form) {
      EXPECT_TRUE(form.Set("List", row)) << row;
      form.Press("Select");
    });
  }
  std::string Cells(const Workbook& book, const CellRange& range) const {
    std::string text;
    for (int row = range.firstRow; row <= range.lastRow; ++row) {
      for (int column = range.firstColumn; column <= range.lastColumn; ++column)
        text += "[" + book.TextRC(row, column) + "]";
    }
    return text;
  }

  FakeHost host;
  FakeDocuments documents;
  Options options;
  ResultsLog results;
  int helpContext = 0;
  Prompts prompts{host, documents, options, helpContext, {}};
};

TEST_F(OutputColumnsTest, WithoutAWorkbookMakesOne) {
  OutputColumns out(host, documents, prompts, results);
  int columns = 2;
  ASSERT_TRUE(out.GetOutputColumns(columns));
  EXPECT_EQ(columns, 0);
  ASSERT_EQ(documents.WorkbookCount(), 1);
  const OutputColumn block[] = {{.title = "Sum", .values = {1, MissingValue, 0.1}},
                                {.title = "Words", .texts = {"a", "*"}}};
  ASSERT_TRUE(out.Write(block, 1));
  EXPECT_EQ(Cells(documents.WorkbookAt(0), {1, 1, 4, 2}), "[Sum][Words][1][a][*][*][0.1][]");
  EXPECT_EQ(documents.WorkbookAt(0).TypeRC(3, 1), TextCell);
  EXPECT_EQ(documents.WorkbookAt(0).Selection(), "A1:B4");
  EXPECT_TRUE(host.formTitles.empty());
}

TEST_F(OutputColumnsTest, TakesFiveBesideTwoHundredAndFiftyButNotSix) {
  Workbook& book = documents.NewWorkbook();
  book.NumberRC(3, 250, 1);
  for (const int wanted : {6, 5}) {
    OutputColumns out(host, documents, prompts, results);
    Pick("Book1: Sheet1");
    if (wanted == 6) host.forms.push_back([](Form& form) { form.Close(); });
    int columns = wanted;
    EXPECT_EQ(out.GetOutputColumns(columns), wanted == 5);
    EXPECT_EQ(host.messages.size(), 1u);
    if (wanted == 5) {
      EXPECT_EQ(columns, 250);
      EXPECT_EQ(Cells(book, {1, 251, 1, 256}), "[        ][        ][        ][        ][        ][]");
    }
  }
  EXPECT_EQ(host.messages[0].text, "The worksheet does not contain enough free columns, please select another.");
  EXPECT_EQ(host.messages[0].title, "Saving Data to Workbook");
  EXPECT_EQ(book.LastCol(), 250);  // reserved and not written: free again
  // Too many for any sheet: no sheet is asked for.
  host.formTitles.clear();
  OutputColumns out(host, documents, prompts, results);
  int columns = 256;
  EXPECT_FALSE(out.GetOutputColumns(columns));
  EXPECT_TRUE(host.formTitles.empty());
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[1].text, "The result needs 256 columns, but a worksheet has room for 255.");
}

TEST_F(OutputColumnsTest, OffersTheSheetThatIsWorkedOnFirst) {
  documents.NewWorkbook();
  Workbook& book = documents.NewWorkbook();
  book.AddSheet("Visits");
  book.Sheet(2);
  OutputColumns out(host, documents, prompts, results);
  host.forms.push_back([](Form& form) { form.Press("Select"); });
  int columns = 1;
  ASSERT_TRUE(out.GetOutputColumns(columns));
  EXPECT_EQ(out.Grid(), &book);
  EXPECT_EQ(book.Sheet(), 2);
}

TEST_F(OutputColumnsTest, RefusesALockedSheet) {
  Workbook& book = documents.NewWorkbook();
  book.LockSheet(true);
  OutputColumns out(host, documents, prompts, results);
  Pick("Book1: Sheet1");
  host.forms.push_back([](Form& form) { form.Close(); });
  int columns = 1;
  EXPECT_FALSE(out.GetOutputColumns(columns));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].text, "The worksheet is locked, please select another.");
  EXPECT_EQ(book.LastCol(), 0);
}

TEST_F(OutputColumnsTest, WritesUnderHeadingsInOneStepOfUndo) {
  Workbook& book = documents.NewWorkbook();
  documents.NewWorkbook();
  book.NumberRC(1, 1, 7);
  {
    OutputColumns out(host, documents, prompts, results);
    Pick("Book1: Sheet1");
    int columns = 2;
    ASSERT_TRUE(out.GetOutputColumns(columns));
    EXPECT_EQ(columns, 1);
    EXPECT_EQ(documents.ActiveWorkbook(), &book);
    const OutputColumn block[] = {{.title = "Std: x", .values = {1, MissingValue}}, {.title = "Std: y", .values = {3}}};
    ASSERT_TRUE(out.Write(block, 0));
  }
  EXPECT_EQ(book.ColText(2) + "|" + book.ColText(3), "Std: x|Std: y");
  EXPECT_EQ(Cells(book, {1, 1, 2, 3}), "[7][1][3][][*][]");
  EXPECT_EQ(book.Selection(), "B1:C2");
  const auto& logged = results.Current().columns;
  ASSERT_EQ(logged.size(), 2u);
  EXPECT_EQ(logged[0].sheet + logged[0].title, "Sheet1Std: x");
  EXPECT_EQ(logged[0].values, (std::vector<double>{1, MissingValue}));
  EXPECT_TRUE(results.Current().delivered);
  ASSERT_TRUE(book.Undo());
  EXPECT_EQ(Cells(book, {1, 1, 2, 3}), "[7][][][][][]");
  EXPECT_EQ(book.ColText(2) + book.ColText(3), "");
  EXPECT_EQ(book.LastCol(), 1);
}

TEST_F(OutputColumnsTest, MakesSheetsAndBooksOnRequest) {
  Workbook& book = documents.NewWorkbook();
  book.NumberRC(1, 1, 7);
  const OutputColumn block[] = {{.title = "x", .values = {1}}};
  {
    OutputColumns out(host, documents, prompts, results);
    Pick("New Sheet in Book1");
    int columns = 1;
    ASSERT_TRUE(out.GetOutputColumns(columns));
    EXPECT_EQ(columns, 0);
    ASSERT_TRUE(out.Write(block, 1));
  }
  EXPECT_EQ(book.SheetCount(), 2);
  EXPECT_EQ(book.Sheet(), 2);
  EXPECT_EQ(Cells(book, {1, 1, 2, 1}), "[x][1]");
  ASSERT_TRUE(book.Undo());
  EXPECT_EQ(book.SheetCount(), 1);
  OutputColumns out(host, documents, prompts, results);
  Pick("New Book");
  int columns = 1;
  ASSERT_TRUE(out.GetOutputColumns(columns));
  EXPECT_EQ(columns, 0);
  ASSERT_EQ(documents.WorkbookCount(), 2);
  EXPECT_EQ(documents.ActiveWorkbook(), &documents.WorkbookAt(1));
  ASSERT_TRUE(out.Write(block, 1));
  EXPECT_EQ(Cells(documents.WorkbookAt(1), {1, 1, 2, 1}), "[x][1]");
}

TEST_F(OutputColumnsTest, WhatDoesNotFitLeavesTheSheetAsItWas) {
  Workbook& book = documents.NewWorkbook();
  book.NumberRC(1, 1, 7);
  {
    OutputColumns out(host, documents, prompts, results);
    Pick("Book1: Sheet1");
    int columns = 1;
    ASSERT_TRUE(out.GetOutputColumns(columns));
    const OutputColumn block[] = {{.title = "x", .values = std::vector<double>(GridStore::MaxRows, 1.0)}};
    EXPECT_FALSE(out.Write(block, 1));
  }
  EXPECT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(book.LastCol(), 1);
  EXPECT_EQ(book.LastRow(), 1);
  EXPECT_FALSE(results.Current().delivered);
}

}  // namespace
}  // namespace tellurix
