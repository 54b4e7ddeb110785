// Blocks of cells with their rows and columns exchanged.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "workbook/Workbook.h"

namespace tellurix {

// A block of cells taken out of the active sheet of a workbook, with formulas, their results, and looks. It may stand
// in several rectangles side by side.
class CellBlock {
 public:
  // Rectangles of the same rows; nothing when they are not, or not on the sheet.
  static std::optional<CellBlock> Read(const Workbook& workbook, std::span<const CellRange> rectangles);

  int Rows() const { return rows_; }
  int Columns() const { return static_cast<int>(columns_.size()); }

  // Writes the block to the active sheet of a workbook, its columns as rows, from a cell on. With formulas: references
  // to cells of the block follow these to their new places, others stay with their cells; a formula that refers to
  // other cells of its workbook comes as its result in another workbook. Without: results only. False, and nothing
  // changed, when it does not fit or the sheet is locked.
  bool WriteRotated(Workbook& to, int row, int column, bool withFormulas) const;

 private:
  struct Cell {
    int type = EmptyCell;  // of the value or result, never negative
    double number = 0;
    std::string text;
    std::string formula;
    bool isError = false;
  };

  const Cell& At(int row, int column) const {
    return cells_[static_cast<std::size_t>(column) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(row)];
  }
  std::optional<CellRange> RotatedRange(const CellRange& range, int row, int column) const;
  std::optional<std::string> RotatedFormula(const std::string& formula, const Workbook& to, int row, int column) const;
  static void Put(Workbook& to, int row, int column, const Cell& cell, const std::optional<std::string>& formula);
  void WriteLooks(Workbook& to, int row, int column) const;

  const Workbook* from_ = nullptr;  // to tell whether another one is written to
  std::string sheet_;
  int firstRow_ = 1;
  int rows_ = 0;
  std::vector<int> columns_;  // worksheet columns
  std::vector<Cell> cells_;   // down the columns
  std::vector<CellLook> looks_;
};

}  // namespace tellurix
