// The interface to the grid: a workbook of sheets of cells, with its selection. Rows and columns are 1-based; row 0 and
// column 0 stand for the headings. All operations act on the active sheet unless they say otherwise.
#pragma once

#include <string>
#include <string_view>

namespace tellurix {

// Kind of a cell, as TypeRC answers it; negated when the cell holds a formula with that kind of result.
enum CellType : int { EmptyCell = 0, NumberCell = 1, TextCell = 2, LogicalCell = 3 };

// All of a cell at once. The text is that of a text cell or of a formula whose result is text, else empty; it is a view
// into the store and holds until the next change.
struct CellView {
  int type = EmptyCell;
  double number = 0;  // a number or logical (true -1, false 0); else 0
  std::string_view text;
};

struct CellRange {
  int firstRow = 1;
  int firstColumn = 1;
  int lastRow = 1;
  int lastColumn = 1;

  bool operator==(const CellRange&) const = default;
  bool IsOneCell() const { return firstRow == lastRow && firstColumn == lastColumn; }
};

class GridStore {
 public:
  static constexpr int MaxRows = 1048576;
  static constexpr int MaxColumns = 16384;

  virtual ~GridStore() = default;

  // --- cells ---
  // ReadRC is for reading many cells: one call, and no copy of a text. TypeRC, NumberRC and TextRC are for single ones.
  virtual CellView ReadRC(int row, int column) const = 0;
  virtual int TypeRC(int row, int column) const = 0;
  virtual double NumberRC(int row, int column) const = 0;  // a number or logical (true -1, false 0); else 0
  virtual void NumberRC(int row, int column, double value) = 0;
  virtual std::string TextRC(int row, int column) const = 0;            // raw text; of a number its general form
  virtual void TextRC(int row, int column, std::string_view text) = 0;  // an empty text leaves the cell empty
  virtual std::string FormattedTextRC(int row, int column) const = 0;   // as displayed, by the number format

  // --- headings; empty when none was set ---
  virtual std::string ColText(int column) const = 0;
  virtual void ColText(int column, std::string_view text) = 0;
  virtual std::string RowText(int row) const = 0;

  // --- extent and sheets ---
  virtual int LastRow() const = 0;  // last row that holds anything; 0 for an empty sheet
  virtual int LastCol() const = 0;
  virtual int Sheet() const = 0;  // 1-based
  virtual void Sheet(int index) = 0;

  // --- selection ---
  virtual int SelectionCount() const = 0;
  virtual CellRange GetSelection(int index) const = 0;    // 0-based, in the order of marking
  virtual std::string Selection() const = 0;              // "A1" or "A1:B9,D1:D9"
  virtual void SetSelection(const CellRange& range) = 0;  // the one rectangle that is marked
  virtual void AddSelection(const CellRange& range) = 0;  // marked besides the others
  virtual void SetActiveCell(int row, int column) = 0;
  virtual int ActiveRow() const = 0;
  virtual int ActiveColumn() const = 0;

  // --- looks ---
  virtual void SetColWidthAuto(const CellRange& range, bool defaults) = 0;  // fits columns to their contents

  // --- undo: what happens between the two is one step; they nest ---
  virtual void BeginStep(std::string_view caption) = 0;
  virtual void EndStep() = 0;
};

// Column letters: 1 is "A", 27 "AA", 703 "AAA"; no end but that of int.
std::string ColumnLetters(int column);

// The number of column letters ("aa" is 27), or 0.
int ColumnNumber(std::string_view letters);

// "A1:B9", or "A1" for one cell.
std::string RangeText(const CellRange& range);

// Reads "A1", "A1:B9", "C:D" (whole columns) and "3:7" (whole rows), in either case, with the corners in any order;
// false when it is none of them or reaches beyond MaxRows or MaxColumns.
bool ReadRange(std::string_view text, CellRange& range);

}  // namespace tellurix
