#include "workbook/BlockCopy.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace tellurix {

namespace {

// Cells of one kind, one below the other, on their way.
class ColumnFiller {
 public:
  ColumnFiller(Workbook& workbook, int column) : workbook_(workbook), column_(column) {}

  void Add(int row, double number) {
    if (row != nextRow_ || !texts_.empty()) Flush();
    numbers_.push_back(number);
    nextRow_ = row + 1;
  }
  void Add(int row, std::string_view text) {
    if (row != nextRow_ || !numbers_.empty()) Flush();
    texts_.emplace_back(text);
    nextRow_ = row + 1;
  }
  void Flush() {
    workbook_.SetColumnNumbers(column_, nextRow_ - static_cast<int>(numbers_.size()), numbers_);
    workbook_.SetColumnTexts(column_, nextRow_ - static_cast<int>(texts_.size()), texts_);
    numbers_.clear();
    texts_.clear();
  }

 private:
  Workbook& workbook_;
  int column_;
  int nextRow_ = 1;
  std::vector<double> numbers_;
  std::vector<std::string> texts_;
};

}  // namespace

bool CopyCells(const Workbook& from, Workbook& to, int row, int column) {
  const int rows = from.LastRow(), columns = from.LastCol();
  if (rows == 0) return true;
  if (to.SheetLocked() || !Workbook::Fits(row, column) || rows > GridStore::MaxRows - row + 1 ||
      columns > GridStore::MaxColumns - column + 1) {
    return false;
  }
  to.ClearRange({row, column, row + rows - 1, column + columns - 1});
  for (int k = 0; k < columns; ++k) {
    ColumnFiller filler(to, column + k);
    for (int i = 0; i < rows; ++i) {
      const CellView cell = from.ReadRC(i + 1, k + 1);
      switch (std::abs(cell.type)) {
        case NumberCell:
          filler.Add(row + i, cell.number);
          break;
        case TextCell:
          filler.Add(row + i, cell.text);
          break;
        case LogicalCell:
          to.SetLogical(row + i, column + k, cell.number != 0);
          break;
        default:
          break;
      }
    }
    filler.Flush();
  }
  return true;
}

}  // namespace tellurix
