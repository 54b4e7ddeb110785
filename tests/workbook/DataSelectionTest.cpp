#include "workbook/DataSelection.h"

#include <gtest/gtest.h>

#include "numeric/Missing.h"
#include "tests/FakeHost.h"
#include "workbook/CellReading.h"

namespace tellurix {
namespace {

constexpr double M = MissingValue;
using Numbers = std::vector<double>;
using Texts = std::vector<std::string>;

class DataSelectionTest : public ::testing::Test {
 protected:
  // Queues an answer of the selection bar: these ranges marked, then OK.
  void Bar(std::initializer_list<const char*> ranges) {
    host.selections.push_back([this, marks = std::vector<const char*>(ranges)] {
      bool first = true;
      for (const char* mark : marks) {
        CellRange range;
        EXPECT_TRUE(ReadRange(mark, range));
        first ? grid.SetSelection(range) : grid.AddSelection(range);
        first = false;
      }
      return SelectionReply{SelectionReply::Answer::Ok, false};
    });
  }
  void BarReply(SelectionReply::Answer answer, bool batch = false) {
    host.selections.push_back([=] { return SelectionReply{answer, batch}; });
  }
  Texts Prompts() const {
    Texts prompts;
    for (const SelectionRequest& request : host.requests) prompts.push_back(request.prompt);
    return prompts;
  }
  Texts Messages() const {
    Texts texts;
    for (const Message& message : host.messages) texts.push_back(message.text);
    return texts;
  }
  // The stored observations of a column, and that nothing but missing ones follows.
  Numbers Column(std::size_t k) const {
    const auto count = static_cast<std::size_t>(data.ColumnInfo.at(k).Count);
    Numbers column = data.DataMatrix.at(k);
    EXPECT_LE(count, column.size());
    for (std::size_t row = count; row < column.size(); ++row) EXPECT_EQ(column[row], M);
    column.resize(count);
    return column;
  }
  Texts Titles() const {
    Texts titles;
    for (const ColumnDescriptor& info : data.ColumnInfo) titles.push_back(info.Title);
    return titles;
  }
  // Reads marked ranges without the bar.
  bool Read(SelectionMode mode, std::initializer_list<const char*> ranges) {
    Mark(grid, ranges);
    return data.SelectWorksheetData(mode, 1, 200, "Select DATA");
  }

  FakeHost host;
  FakeDocuments documents;
  Workbook& grid = documents.NewWorkbook();
  Options options;
  ResultsLog results;
  int helpContext = 5;
  int saves = 0;
  DataSelection data{host, documents, options, results, helpContext, [this] { ++saves; }};
};

TEST_F(DataSelectionTest, GetCellNumberTellsMarksFromBlanksAndWords) {
  Fill(grid, 1, 1, {{"1.5"}, {"*"}, {"missing"}, {"."}, {"word"}, {""}, {"\"7"}, {" *"}});
  grid.SetLogical(9, 1, true);
  grid.SetFormula(10, 1, "=1+1", FormulaResult::Number(2));
  grid.SetFormula(11, 1, "=\"*\"", FormulaResult::Text("*"));
  grid.SetFormula(12, 1, "=TRUE", FormulaResult::Logical(true));
  grid.SetFormula(13, 1, "=1/0", FormulaResult::Error("#DIV/0!"));
  constexpr double T = TextMissingValue;
  const Numbers expected{1.5, T, T, T, M, M, M, M, -1, 2, T, -1, M};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(GetCellNumber(grid, static_cast<int>(i) + 1, 1), expected[i]) << "row " << i + 1;
  }
  EXPECT_EQ(GetCellNumber(grid, 0, 1), M);
  EXPECT_EQ(GetCellNumber(grid, 1, 0), M);
}

TEST_F(DataSelectionTest, GetCellLabelOfHeadingsAndCells) {
  Fill(grid, 1, 1, {{"  weight "}, {"2.50"}});
  grid.ColText(2, " Heading ");
  grid.ColText(3, "  ");
  const struct {
    int row, column;
    const char* label;
  } cases[] = {{1, 1, "weight"}, {2, 1, "2.5"}, {3, 1, ""},    {0, 2, "Heading"}, {0, 3, "C"}, {0, 26, "Z"},
               {0, 27, "AA"},    {0, 52, "AZ"}, {0, 53, "BA"}, {0, 702, "ZZ"},    {4, 0, "4"}};
  for (const auto& c : cases) EXPECT_EQ(GetCellLabel(grid, c.row, c.column), c.label) << c.row << "," << c.column;
}

TEST_F(DataSelectionTest, FindsTitlesInAboveAndOverTheData) {
  // A: a word on top; B: a number, its title two rows up; C: headed "*"; D: a blank on top; E: nothing but the heading.
  Fill(grid, 1, 1,
       {{"", "", "", "", "far"},
        {"", "Two up", "", "", ""},
        {"", "8", "Mark", "Over", "9"},
        {"Word", "1", "*", "", "1"},
        {"1", "2", "2", "5", "2"},
        {"2", "3", "3", "6", "3"}});
  grid.ColText(5, "Head");
  ASSERT_TRUE(Read(ModeNumericRows, {"A4:E6"}));
  EXPECT_EQ(Titles(), (Texts{"Word", "Two up", "Mark", "Over", "Head"}));
  EXPECT_EQ(Column(0), (Numbers{1, 2}));
  EXPECT_EQ(Column(1), (Numbers{1, 2, 3}));
  EXPECT_EQ(Column(2), (Numbers{M, 2, 3}));
  EXPECT_EQ(Column(3), (Numbers{M, 5, 6}));
  std::vector<int> firstRows;
  for (const auto& info : data.ColumnInfo) firstRows.push_back(info.FirstRow);
  EXPECT_EQ(firstRows, (std::vector<int>{5, 4, 4, 5, 4}));
  EXPECT_EQ(data.ColumnInfo[2].Sum, 5);
  EXPECT_EQ(data.LastColumn, 4);
  EXPECT_EQ(data.MinCount, 2);
  EXPECT_EQ(data.MaxCount, 3);
  // From the top of the sheet the scan ends at the heading.
  Fill(grid, 1, 6, {{"1"}, {"2"}});
  ASSERT_TRUE(Read(ModeNumericRows, {"F1:F2"}));
  EXPECT_EQ(Titles(), Texts{"F"});
}

TEST_F(DataSelectionTest, NumericModesTreatGapsAndEndsInTheirOwnWay) {
  Fill(grid, 1, 1,
       {{"a", "b", "c"}, {"1", "1", "1"}, {"", "word", "*"}, {"3", "3", "3"}, {"*", "word", ""}, {".", "", ""}});
  ASSERT_TRUE(Read(ModeNumericRows, {"A1:C6"}));
  EXPECT_EQ(Column(0), (Numbers{1, M, 3, M, M}));  // marks at the end keep their rows
  EXPECT_EQ(Column(1), (Numbers{1, M, 3}));        // words and blanks do not
  EXPECT_EQ(Column(2), (Numbers{1, M, 3}));
  EXPECT_EQ(data.MinCount, 3);
  EXPECT_EQ(data.MaxCount, 5);
  ASSERT_TRUE(Read(ModeNumericCompact, {"A1:C6"}));
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(Column(k), (Numbers{1, 3}));
    EXPECT_EQ(data.ColumnInfo[k].Sum, 4);
  }
  EXPECT_EQ(results.Current().selection.back().range, "C2:C6");
  // A column of words: nothing for mode 2, refused by mode 1.
  Fill(grid, 1, 4, {{"title"}, {"x"}, {"y"}});
  ASSERT_TRUE(Read(ModeNumericRows, {"D1:D3"}));
  EXPECT_EQ(data.ColumnInfo[0].Count, 0);
  EXPECT_TRUE(host.messages.empty());
  EXPECT_FALSE(Read(ModeNumericCompact, {"D1:D3"}));
  EXPECT_EQ(host.LastMessage(), "You must select numerical data for this function");
  EXPECT_EQ(host.messages.back().title, "Worksheet Data Selection");
  EXPECT_FALSE(host.busy);
  EXPECT_FALSE(host.busyWhenAsked);
}

TEST_F(DataSelectionTest, CategoriesAreNumberedByFirstAppearance) {
  Fill(grid, 1, 1,
       {{"Answer", "Score"}, {"Yes", "2"}, {"no", "10"}, {"YES", "2"}, {"", "*"}, {"yes", ""}, {"*", "* (MISSING)"}});
  for (const SelectionMode mode : {ModeCategorical, ModeCategoricalPlain}) {
    ASSERT_TRUE(Read(mode, {"A1:B7"}));
    EXPECT_EQ(Titles(), (Texts{"Answer", "Score"}));
    EXPECT_EQ(Column(0), (Numbers{1, 2, 1, M, 1, M}));
    EXPECT_EQ(data.ColumnInfo[0].CategoryName, (Texts{"Yes", "no", "* (missing)"}));
    EXPECT_EQ(data.ColumnInfo[0].CategoryFreq, (std::vector<int>{3, 1, 2}));
    EXPECT_EQ(data.ColumnInfo[0].CategoryCount, 3);
    EXPECT_EQ(data.ColumnInfo[0].FirstRow, 2);
    EXPECT_EQ(Column(1), (Numbers{1, 2, 1, M, M, M}));  // a number by its displayed text
    EXPECT_EQ(data.ColumnInfo[1].CategoryName, (Texts{"2", "10", "* (missing)"}));
  }
  ASSERT_TRUE(Read(ModeCategoricalTrimmed, {"A1:B7"}));  // the last filled cells are A6 and B7
  EXPECT_EQ(data.ColumnInfo[0].Count, 6);
  ASSERT_TRUE(Read(ModeCategoricalTrimmed, {"A1:A7"}));
  EXPECT_EQ(Column(0), (Numbers{1, 2, 1, M, 1}));
  ASSERT_TRUE(Read(ModeCategoricalPooled, {"A1:B4"}));
  EXPECT_EQ(Titles(), Texts{"Answer, Score"});
  EXPECT_EQ(Column(0), (Numbers{1, 2, 3, 4, 1, 2}));  // row by row
  EXPECT_EQ(data.ColumnInfo[0].CategoryName, (Texts{"Yes", "2", "no", "10"}));
  EXPECT_EQ(data.LastColumn, 0);
  EXPECT_EQ(data.MinCount, 6);
  EXPECT_EQ(data.MaxCount, 6);
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(DataSelectionTest, AsksAboutTitlesOnlyInDoubt) {
  Fill(grid, 1, 1, {{"a", "Sex", "F"}, {"x", "F", "M"}, {"y", "M", "f"}});
  host.replies = {Reply::Yes, Reply::No, Reply::Cancel};
  ASSERT_TRUE(Read(ModeCategorical, {"A1:B3"}));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.LastMessage(), "Does the top row of your selection contain titles?");
  EXPECT_EQ(host.messages[0].title, "Worksheet Categorical Data Selection");
  EXPECT_EQ(host.messages[0].style, YesNoCancel | QuestionIcon);
  EXPECT_EQ(Titles(), (Texts{"a", "Sex"}));
  EXPECT_EQ(Column(0), (Numbers{1, 2}));
  ASSERT_TRUE(Read(ModeCategorical, {"A1:B3"}));
  EXPECT_EQ(Titles(), (Texts{"A", "B"}));
  EXPECT_EQ(Column(0), (Numbers{1, 2, 3}));
  host.busy = true;
  EXPECT_FALSE(Read(ModeCategorical, {"A1:B3"}));
  EXPECT_FALSE(host.busy);
  EXPECT_FALSE(host.busyWhenAsked);
  // No question: a first cell that recurs is data, one of three characters or more is a title.
  ASSERT_TRUE(Read(ModeCategorical, {"A1:C3"}));
  EXPECT_EQ(Titles(), (Texts{"A", "B", "C"}));
  EXPECT_EQ(Column(2), (Numbers{1, 2, 1}));
  ASSERT_TRUE(Read(ModeCategorical, {"B1:B3"}));
  EXPECT_EQ(Titles(), Texts{"Sex"});
  EXPECT_EQ(host.messages.size(), 3u);
}

TEST_F(DataSelectionTest, SelectRangeTakesMarksInTheirOrder) {
  Fill(grid, 1, 1, {{"1", "2", "3", "4"}, {"1", "2", "3", "4"}, {"1", "2", "3", ""}});
  std::vector<RawColumn> columns;
  const auto shape = [&] {
    Texts texts;
    for (const RawColumn& c : columns)
      texts.push_back(GetCellLabel(grid, 0, c.column) + std::to_string(c.firstRow) + "+" + std::to_string(c.rowCount));
    return texts;
  };
  Mark(grid, {"C1:C3", "A2:B3"});
  ASSERT_TRUE(data.SelectRange(2, 200, "Select DATA", columns));  // no bar
  EXPECT_EQ(shape(), (Texts{"C1+3", "A2+2", "B2+2"}));
  Mark(grid, {"D1", "B1:B3", "A3"});
  ASSERT_TRUE(data.SelectRange(1, 1, "Select DATA", columns));  // single cells beside a column say nothing
  EXPECT_EQ(shape(), Texts{"B1+3"});
  Mark(grid, {"A:A"});
  ASSERT_TRUE(data.SelectRange(1, 1, "Select DATA", columns));
  EXPECT_EQ(shape(), Texts{"A1+3"});
  Mark(grid, {"C2:XFD1048576"});
  ASSERT_TRUE(data.SelectRange(1, 5, "Select DATA", columns));
  EXPECT_EQ(shape(), (Texts{"C2+2", "D2+2"}));
  EXPECT_EQ(host.rangesTaken, 4);
  EXPECT_TRUE(host.requests.empty());
}

TEST_F(DataSelectionTest, TheBarStandsUntilTheNumberOfColumnsIsRight) {
  Fill(grid, 1, 1, {{"1", "2", "3"}, {"1", "2", "3"}});
  std::vector<RawColumn> columns;
  Mark(grid, {"A1"});  // one cell is no selection
  host.busy = true;
  Bar({"A1:C2"});
  Bar({"B2"});
  Bar({"A1:A2"});
  ASSERT_TRUE(data.SelectRange(1, 1, "Select DATA", columns));
  EXPECT_EQ(Prompts(), (Texts(3, "Select DATA (1 column)")));
  EXPECT_EQ(Messages(), Texts{"Error: you must select 1 column but you selected 3."});
  EXPECT_EQ(host.messages[0].title, "Tellurix Data Selection");
  EXPECT_FALSE(host.requests[0].offersGroups);
  EXPECT_EQ(host.requests[0].helpContext, 5);
  EXPECT_TRUE(host.commandsEnabled);
  EXPECT_FALSE(host.busyWhenAsked);

  const struct {
    int min, max;
    const char* prompt;
    const char* message;
  } cases[] = {{2, 2, "x (2 columns)", "Error: you must select 2 columns but you selected 1."},
               {2, 4, "x (Min 2: Max 4)", "Error: you must select 2 columns or more but you selected 1."}};
  for (const auto& c : cases) {
    Mark(grid, {"A1:A2"});
    BarReply(SelectionReply::Answer::Cancel);
    host.busy = true;
    EXPECT_FALSE(data.SelectRange(c.min, c.max, "x", columns));
    EXPECT_EQ(host.requests.back().prompt, c.prompt);
    EXPECT_EQ(host.LastMessage(), c.message);
    EXPECT_TRUE(host.requests.back().offersGroups);
    EXPECT_FALSE(host.busy);  // a cancel ends the hourglass
  }
  host.messages.clear();
  data.CheckColumnCount(0, 1, 3, "t");
  data.CheckColumnCount(1, 2, 3, "t");
  data.CheckColumnCount(1, 5, 0, "t");
  data.CheckColumnCount(1, 3, 3, "t");
  EXPECT_EQ(Messages(), (Texts{"Error: you must select 1 column or fewer but you selected 3.",
                               "Error: you must select 2 columns or fewer but you selected 3.",
                               "Error: you must select 1 column or more but you selected 0."}));
  data.ShowInvalidData();
  EXPECT_EQ(host.LastMessage(), "Error: invalid data input.");
}

TEST_F(DataSelectionTest, MarksLeftOverAnswerOnlyWhereTheHostLetsThem) {
  Fill(grid, 1, 1, {{"1", "2"}, {"1", "2"}});
  std::vector<RawColumn> columns;
  Mark(grid, {"A1:A2"});
  data.BeginCommand();
  ASSERT_TRUE(data.SelectRange(1, 1, "first", columns));
  ASSERT_TRUE(data.SelectRange(1, 1, "second", columns));
  host.leftoverRangeAnswers = false;
  data.BeginCommand();
  ASSERT_TRUE(data.SelectRange(1, 1, "first", columns));  // marked before the command
  Bar({"B1:B2"});
  ASSERT_TRUE(data.SelectRange(1, 1, "second", columns));
  EXPECT_EQ(columns[0].column, 2);
  EXPECT_EQ(Prompts(), Texts{"second (1 column)"});
}

TEST_F(DataSelectionTest, TheOtherRadioRestartsTheSelection) {
  BarReply(SelectionReply::Answer::Restart, true);
  Fill(grid, 1, 1, {{"1"}, {"2"}});
  Mark(grid, {"A1:A2"});
  EXPECT_FALSE(data.SelectGroups(0, 2, 5, ""));
  EXPECT_TRUE(data.SelectionRestart);
  EXPECT_TRUE(data.Batch);
  EXPECT_TRUE(options.UseGroupID);
  EXPECT_EQ(saves, 1);
  EXPECT_EQ(grid.Selection(), "A1");
  BarReply(SelectionReply::Answer::Restart);
  EXPECT_FALSE(data.SelectGroups(0, 2, 5, ""));
  EXPECT_TRUE(host.requests.back().useGroupId);
  EXPECT_TRUE(host.requests.back().batch);
  EXPECT_FALSE(options.UseGroupID);
  EXPECT_EQ(Prompts().back(), "Select GROUP IDENTIFIERS (Min 1: Max 20)");
}

TEST_F(DataSelectionTest, SelectEqualDataHoldsToARequiredLength) {
  Fill(grid, 1, 1, {{"1", "2", "a"}, {"1", "2", "b"}, {"1", "", "c"}});
  Bar({"A1:A3"});
  Mark(grid, {"B1:B3"});
  ASSERT_TRUE(data.SelectEqualData(3, ModeNumericRows, 1, 1, "x"));
  EXPECT_EQ(Messages(),
            Texts{"Error: all columns selected must be 3 rows long.\n\nThe rows must contain numeric data not text."});
  EXPECT_EQ(host.messages[0].title, "Worksheet Data Selection");
  EXPECT_EQ(host.messages[0].style, WarningIcon);
  host.messages.clear();
  host.replies = {Reply::No, Reply::No};
  Bar({"C1:C3"});
  Mark(grid, {"C1:C2"});
  ASSERT_TRUE(data.SelectEqualData(3, ModeCategoricalTrimmed, 1, 1, "x"));
  EXPECT_EQ(Messages()[1], "Error: all columns selected must be 3 rows long.");
  Mark(grid, {"A1:B2"});  // equal, but not as required
  BarReply(SelectionReply::Answer::Cancel);
  EXPECT_FALSE(data.SelectEqualData(3, ModeNumericRows, 1, 2, "x"));
  EXPECT_TRUE(host.AllUsed());
}

TEST_F(DataSelectionTest, SelectEqualDataOffersToPadByWorksheetRow) {
  // B starts two rows below A and ends one below it.
  Fill(grid, 1, 1, {{"", ""}, {"1", ""}, {"2", ""}, {"3", "7"}, {"4", "8"}, {"", "9"}});
  Mark(grid, {"A2:A5", "B4:B6"});
  host.replies = {Reply::Cancel, Reply::Ok};
  Bar({"A2:A5", "B4:B6"});
  ASSERT_TRUE(data.SelectEqualData(0, ModeNumericRows, 2, 2, "x"));
  EXPECT_EQ(Messages(), Texts(2,
                              "Warning: unequal length columns, if you select yes then\n"
                              "the jagged ends of columns will be padded with missing data."));
  EXPECT_EQ(host.messages[0].Buttons(), OkCancel);
  EXPECT_EQ(Prompts(), Texts{"x (2 columns)"});  // a cancel clears the marks and starts again
  EXPECT_EQ(Column(0), (Numbers{1, 2, 3, 4, M}));
  EXPECT_EQ(Column(1), (Numbers{M, M, 7, 8, 9}));  // nothing is lost
  EXPECT_EQ(data.MinCount, 5);
  EXPECT_EQ(data.MaxCount, 5);
  // Equal lengths raise no question.
  Mark(grid, {"A2:A4", "B4:B6"});
  ASSERT_TRUE(data.SelectEqualData(0, ModeNumericRows, 2, 2, "x"));
  EXPECT_EQ(host.messages.size(), 2u);
}

// The identifier in A (with a missing one), data in B, a second column in C, groups by column in D and E.
class GroupSelectionTest : public DataSelectionTest {
 protected:
  GroupSelectionTest() {
    Fill(grid, 1, 1,
         {{"Drug", "Time", "Load", "one", "two"},
          {"new", "1", "10", "1", "4"},
          {"*", "2", "20", "2", "5"},
          {"old", "3", "30", "3", ""},
          {"NEW", "*", "40", "", ""},
          {"old", "5", "50", "", ""},
          {"new", "6", "60", "", ""}});
  }
};

TEST_F(GroupSelectionTest, ByIdentifier) {
  options.UseGroupID = true;
  Mark(grid, {"D1:D4"});  // what is marked before is dropped
  Bar({"A1:A7"});
  Bar({"B1:B7"});
  ASSERT_TRUE(data.SelectGroups(0, 2, 10, "survival"));
  EXPECT_EQ(Prompts(),
            (Texts{"Select GROUP IDENTIFIERS for survival (Min 1: Max 20)", "Select DATA for survival (1 column)"}));
  EXPECT_EQ(Titles(), (Texts{"Time_Drug_new", "Time_Drug_old"}));
  EXPECT_EQ(Column(0), (Numbers{1, M, 6}));
  EXPECT_EQ(Column(1), (Numbers{3, 5}));
  EXPECT_EQ(data.DataMatrix[1].size(), 3u);  // filled up
  EXPECT_EQ(data.ColumnInfo[0].Sum, 7);
  EXPECT_EQ(data.LastColumn, 1);
  EXPECT_EQ(data.MinCount, 2);
  EXPECT_EQ(data.MaxCount, 3);
}

TEST_F(GroupSelectionTest, ByIdentifierWithItsRefusals) {
  options.UseGroupID = true;
  Fill(grid, 1, 6, {{"Kind", "Part"}, {"a", "a"}, {"b", "b"}, {"b", "c"}, {"c", ""}});
  Bar({"A1:A7"});
  Bar({"F1:F5"});
  Bar({"G1:G4"});
  Bar({"B1:B5"});
  Bar({"C2:C4"});
  ASSERT_TRUE(data.SelectGroups(-1, 3, 3, ""));
  EXPECT_EQ(
      Messages(),
      (Texts{"Error: you must select 3 columns but you selected 2.", "Error: all groups must be the same size.",
             "Error: all columns selected must be 3 rows long.\n\nThe rows must contain numeric data not text."}));
  EXPECT_EQ(Titles()[2], "Load_Part_c");
  EXPECT_EQ(Column(2), Numbers{30});
  const auto& logged = results.Current().selection;  // what was refused leaves no record
  ASSERT_EQ(logged.size(), 2u);
  EXPECT_EQ(logged[0].title + logged[1].title, "PartLoad");
  // Several identifiers are read as one, row by row.
  Bar({"F1:G3"});
  Bar({"C1:C5"});
  ASSERT_TRUE(data.SelectGroups(2, 2, 3, ""));
  EXPECT_EQ(Titles(), (Texts{"Load_Kind, Part_a", "Load_Kind, Part_b"}));
  EXPECT_EQ(Column(1), (Numbers{30, 40}));
  EXPECT_TRUE(host.AllUsed());
}

TEST_F(GroupSelectionTest, ByColumn) {
  Bar({"D1:D4"});
  Bar({"D1:E4"});
  Bar({"D1:D3", "E1:E3"});
  ASSERT_TRUE(data.SelectGroups(-1, 2, 5, ""));
  EXPECT_EQ(Prompts(), Texts(3, "Select DATA (Min 1: Max 5)"));
  EXPECT_EQ(Messages(), (Texts{"Error: you must select 2 columns or more but you selected 1.",
                               "Error: all groups must be the same size."}));
  EXPECT_EQ(Titles(), (Texts{"one", "two"}));
  Mark(grid, {"D1:E4"});  // marked before: no bar
  ASSERT_TRUE(data.SelectGroups(0, 2, 5, ""));
  EXPECT_EQ(Column(0), (Numbers{1, 2, 3}));
  EXPECT_EQ(Column(1), (Numbers{4, 5}));
  Bar({"D1:D4", "E1:E4", "C1:C3"});
  Bar({"D1:D3", "E1:E3"});
  Mark(grid, {"A1"});
  ASSERT_TRUE(data.SelectGroups(2, 2, 5, ""));  // of size two
  EXPECT_EQ(data.MaxCount, 2);
  EXPECT_TRUE(host.AllUsed());
}

TEST_F(GroupSelectionTest, ASingleGroupBearsTheTitleOfItsData) {
  options.UseGroupID = true;
  Fill(grid, 1, 6, {{"All"}, {"same"}, {"same"}, {"same"}});
  Bar({"F1:F4"});
  Bar({"B1:B4"});
  ASSERT_TRUE(data.SelectGroups(0, 1, 10, ""));
  EXPECT_EQ(Titles(), Texts{"Time"});
  EXPECT_EQ(Column(0), (Numbers{1, 2, 3}));
}

TEST_F(GroupSelectionTest, Weighted) {
  options.UseGroupID = true;
  Bar({"A1:A7"});
  Bar({"B1:B7"});
  Bar({"C1:C7"});
  ASSERT_TRUE(data.SelectWeightedGroups(2, 10, "t"));
  EXPECT_EQ(Prompts().back(), "Select WEIGHTS for t (1 column)");
  EXPECT_EQ(Column(0), (Numbers{1, M, 6}));
  EXPECT_EQ(data.CompanionMatrix[0], (Numbers{10, 40, 60}));
  EXPECT_EQ(data.CompanionMatrix[1], (Numbers{30, 50, M}));
  EXPECT_EQ(data.CompanionInfo[1].Count, 2);

  options.UseGroupID = false;
  Bar({"D1:E4"});
  Bar({"C1:C4", "C5:C7"});  // the second is a row too long
  Bar({"C1:C4", "C5:C6"});
  Mark(grid, {"A1"});
  ASSERT_TRUE(data.SelectWeightedGroups(2, 10, ""));
  EXPECT_EQ(host.LastMessage(), "Error: all columns selected must be 2 rows long.");
  EXPECT_EQ(Column(1), (Numbers{4, 5}));
  EXPECT_EQ(data.CompanionInfo[1].Count, 2);
}

TEST_F(GroupSelectionTest, TwoFactors) {
  Bar({"C1:C7"});
  Bar({"A1:A7"});
  Bar({"B1:B7"});
  ASSERT_TRUE(data.SelectTwoFactor(""));
  EXPECT_EQ(Prompts(), (Texts{"Select DATA (1 column)", "Select FACTOR (TREATMENT) IDENTIFIER (1 column)",
                              "Select FACTOR (BLOCK) IDENTIFIER (1 column)"}));
  EXPECT_EQ(Titles(), (Texts{"Load", "Drug", "Time"}));
  EXPECT_EQ(Column(1), (Numbers{1, M, 3, 1, 3, 1}));  // the missing category keeps its number
  host.requests.clear();
  Bar({"C1:C7"});
  BarReply(SelectionReply::Answer::Cancel);
  EXPECT_FALSE(data.SelectGroupSubgroup("x"));
  EXPECT_EQ(Prompts(), (Texts{"Select DATA column for x (1 column)", "Select GROUP IDENTIFIER for x (1 column)"}));
}

TEST_F(GroupSelectionTest, SeriesForCharts) {
  Bar({"B1:C7"});
  Bar({"C1:C7"});
  ASSERT_TRUE(data.SelectXYSeries(5));
  EXPECT_EQ(Prompts(), (Texts{"Select DATA for Y (VERTICAL AXIS) (Min 1: Max 5)",
                              "Select DATA for X (HORIZONTAL AXIS) (Min 1: Max 2)"}));
  EXPECT_EQ(data.CompanionMatrix[1], data.CompanionMatrix[0]);  // one X serves all
  EXPECT_EQ(Titles(), (Texts{"Time", "Load"}));
  options.UseGroupID = true;
  Bar({"A1:A7"});
  Bar({"B1:B7"});
  Bar({"C1:C7"});
  ASSERT_TRUE(data.SelectXYSeries(5));
  EXPECT_EQ(host.requests[2].prompt, "Select GROUP/SERIES IDENTIFIERS (Min 1: Max 20)");
  EXPECT_EQ(data.CompanionMatrix[0], (Numbers{10, 40, 60}));
  options.UseGroupID = false;
  host.requests.clear();
  Bar({"D1:E3"});
  Bar({"C2:C3"});
  Mark(grid, {"A1"});
  ASSERT_TRUE(data.SelectXYReplicates(5));
  EXPECT_EQ(Prompts(), (Texts{"Select DATA for Y (VERTICAL AXIS) REPLICATES (Min 1: Max 5)",
                              "Select DATA for X (HORIZONTAL AXIS) (1 column)"}));
  EXPECT_EQ(Column(0), (Numbers{1, 4}));  // the replicates of the first level
  EXPECT_EQ(Column(1), (Numbers{2, 5}));
  EXPECT_EQ(data.CompanionMatrix[0], (Numbers{10, 20}));
}

}  // namespace
}  // namespace tellurix
