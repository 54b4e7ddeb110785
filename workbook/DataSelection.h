// From what the user marks in the worksheet to the shapes that all analyses share: a matrix of numbers with a reserved
// missing value, one descriptor a column, and category tables for text columns.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Documents.h"
#include "host/Host.h"
#include "host/Results.h"
#include "report/Options.h"
#include "workbook/GridStore.h"

namespace tellurix {

enum SelectionMode : int {
  ModeNumericCompact = 1,      // non-missing numbers, closed up
  ModeNumericRows = 2,         // every row down to the last one that is not blank, gaps stay as MissingValue
  ModeCategorical = 3,         // category numbers, column by column
  ModeCategoricalTrimmed = 4,  // the same after cutting trailing blanks common to all columns
  ModeCategoricalPooled = 5,   // category numbers of all columns in one column, row by row
  ModeCategoricalPlain = 6,    // as ModeCategorical
};

// Describes one column of DataMatrix.
struct ColumnDescriptor {
  std::string Title;
  int FirstRow = 0;  // worksheet row of the first cell that holds data
  int Count = 0;  // stored observations: non-missing ones in mode 1, positions in mode 2, rows in the categorical modes
  double Sum = 0;         // of the non-missing values (numeric modes)
  int CategoryCount = 0;  // with "* (missing)" when it occurs
  std::vector<int> CategoryFreq;
  std::vector<std::string> CategoryName;  // in order of first appearance
  int StartRow = 0;                       // worksheet row that position 1 stands for
};

// Codes of a categorical column are 1-based numbers into CategoryName, MissingValue for "* (missing)".
inline constexpr std::string_view MissingCategory = "* (missing)";

// One column of a raw selection.
struct RawColumn {
  int firstRow = 1;
  int column = 1;
  int rowCount = 0;
};

class DataSelection {
 public:
  // `helpContext` is the help number in force; `saveSettings` stores the options.
  DataSelection(Host& host, Documents& documents, Options& options, ResultsLog& results, const int& helpContext,
                std::function<void()> saveSettings);

  // --- the result of a selection, overwritten by the next ---
  std::vector<std::vector<double>>
      DataMatrix;  // [column][row - 1], as high as the selection, filled up with MissingValue
  std::vector<ColumnDescriptor> ColumnInfo;
  int LastColumn = -1;  // number of columns minus one
  int MinCount = 0;
  int MaxCount = 0;

  // What goes with DataMatrix after some grouped selections: weights, or X values; the same shape.
  std::vector<std::vector<double>> CompanionMatrix;
  std::vector<ColumnDescriptor> CompanionInfo;

  // --- selection of columns ---

  // Asks for columns and reads them; false when cancelled or refused (the user has been told).
  bool SelectWorksheetData(SelectionMode mode, int minColumns, int maxColumns, std::string_view prompt);

  // The same for columns of equal length: `requiredRows`, or any length when 0, after offering to pad.
  bool SelectEqualData(int requiredRows, SelectionMode mode, int minColumns, int maxColumns, std::string_view prompt);

  // For the columns just selected asks for as many others of the same lengths, into CompanionMatrix.
  bool SelectCompanions(std::string_view prompt);

  // Lines the columns up by worksheet row, opened and missing places as MissingValue, all as long as the longest.
  void PadJaggedColumns();

  // --- selection of groups; `name` says of what, empty for nothing ---

  // One column of DataMatrix a group, by column or by identifier as the options say. `equalSize`: 0 for any sizes, -1
  // for equal ones, above 0 for that size.
  bool SelectGroups(int equalSize, int minGroups, int maxGroups, std::string_view name);

  // The same with the weights of each observation in CompanionMatrix.
  bool SelectWeightedGroups(int minGroups, int maxGroups, std::string_view name);

  // Column 0 the data, 1 and 2 the codes of two nested levels, or of two crossed factors, row by row.
  bool SelectGroupSubgroup(std::string_view name);
  bool SelectTwoFactor(std::string_view name);

  // Y of each series in DataMatrix, its X in CompanionMatrix, at most `maxSeries`.
  bool SelectXYSeries(int maxSeries);

  // Y replicates of each X level in DataMatrix, one column a level; the levels in CompanionMatrix[0].
  bool SelectXYReplicates(int maxReplicates);

  // --- the steps below, for commands with a dialogue of their own ---

  // The marked columns, after asking as long as their number is not right; false when cancelled.
  bool SelectRange(int minColumns, int maxColumns, std::string_view prompt, std::vector<RawColumn>& columns);
  bool HasRangeSelected() const;  // more than one cell is marked
  bool WaitForSelection(const SelectionRequest& request);
  void CheckColumnCount(int min, int max, int selected, std::string_view title);
  void ClearGridSelection();  // collapses the marks to the active cell
  void ShowInvalidData();     // "Error: invalid data input."

  // A command begins: nothing that is marked has answered a prompt of it yet.
  void BeginCommand() { marksUsed_ = false; }

  bool SelectionRestart = false;  // the user flipped the radios: the command must begin its selection again
  bool Batch = false;             // state of the batch box

 private:
  static constexpr const char* SelectionTitle = "Worksheet Data Selection";

  // A selected identifier: one code a row.
  struct Identifier {
    ColumnDescriptor info;
    std::vector<double> codes;
  };

  GridStore* Grid() const;
  std::vector<RawColumn> MarkedColumns() const;
  void FindColumnTitle(RawColumn& raw, ColumnDescriptor& info) const;
  bool ReadNumericColumn(SelectionMode mode, RawColumn& raw, std::size_t k);
  bool ReadCategories(SelectionMode mode, const std::vector<RawColumn>& raw);
  void UpdateCounts();
  void LogSelection(const std::vector<RawColumn>& raw);
  // A selection that is refused leaves no mark and no record: `logged` is what LoggedSoFar answered before it.
  std::size_t LoggedSoFar();
  void StartAgain(std::size_t logged);
  void Warn(std::string text, std::string title);

  bool SelectIdentifier(int minGroups, int maxGroups, int equalSize, std::string_view prompt, Identifier& identifier);
  void SplitByIdentifier(const Identifier& identifier, std::vector<std::vector<double>>& matrix,
                         std::vector<ColumnDescriptor>& infos) const;
  bool SelectDataAndTwoFactors(std::string_view dataPrompt, std::string_view firstPrompt,
                               std::string_view secondPrompt);
  bool GroupSizesAgree(const std::vector<int>& sizes, int equalSize);
  void TakeAsCompanion(std::vector<std::vector<double>>& matrix, std::vector<ColumnDescriptor>& infos);
  void Restore(std::vector<std::vector<double>> matrix, std::vector<ColumnDescriptor> infos);

  Host& host_;
  Documents& documents_;
  Options& options_;
  ResultsLog& results_;
  const int& helpContext_;
  std::function<void()> saveSettings_;
  bool marksUsed_ = false;  // what is marked has answered a prompt of this command
};

}  // namespace tellurix
