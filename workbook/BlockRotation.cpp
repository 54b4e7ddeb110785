#include "workbook/BlockRotation.h"

#include <algorithm>
#include <cstdlib>

#include "numeric/Text.h"
#include "workbook/Formula.h"

namespace tellurix {

namespace {

LookChange Whole(const CellLook& look) {
  return {look.number,    look.fontName,   look.fontSize,   look.bold,     look.italic,
          look.underline, look.textColour, look.fillColour, look.alignment};
}

}  // namespace

std::optional<CellBlock> CellBlock::Read(const Workbook& workbook, std::span<const CellRange> rectangles) {
  if (rectangles.empty()) return std::nullopt;
  CellBlock block;
  block.from_ = &workbook;
  block.sheet_ = workbook.SheetName(workbook.Sheet());
  block.firstRow_ = rectangles.front().firstRow;
  block.rows_ = rectangles.front().lastRow - block.firstRow_ + 1;
  for (const CellRange& range : rectangles) {
    const bool sameRows = range.firstRow == block.firstRow_ && range.lastRow == rectangles.front().lastRow;
    if (!sameRows || !Workbook::Fits(range.firstRow, range.firstColumn) ||
        !Workbook::Fits(range.lastRow, range.lastColumn)) {
      return std::nullopt;
    }
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) block.columns_.push_back(column);
  }
  const std::size_t count = block.columns_.size() * static_cast<std::size_t>(block.rows_);
  block.cells_.reserve(count);
  block.looks_.reserve(count);
  for (const int column : block.columns_) {
    for (int row = block.firstRow_; row < block.firstRow_ + block.rows_; ++row) {
      const CellView view = workbook.ReadRC(row, column);
      Cell cell{.type = std::abs(view.type), .number = view.number, .text = std::string(view.text)};
      if (view.type < 0) {
        cell.formula = workbook.FormulaText(row, column);
        cell.isError = workbook.IsError(row, column);
      }
      block.cells_.push_back(std::move(cell));
      block.looks_.push_back(workbook.LookAt(row, column));
    }
  }
  return block;
}

// Where a range of the source that lies within the block comes to lie when the block is written at (row, column).
std::optional<CellRange> CellBlock::RotatedRange(const CellRange& range, int row, int column) const {
  if (range.firstRow < firstRow_ || range.lastRow >= firstRow_ + rows_) return std::nullopt;
  const auto first = std::ranges::find(columns_, range.firstColumn);
  const auto width = range.lastColumn - range.firstColumn;
  if (columns_.end() - first <= width || *(first + width) != range.lastColumn) return std::nullopt;
  const int top = row + static_cast<int>(first - columns_.begin());
  return CellRange{top, column + range.firstRow - firstRow_, top + width, column + range.lastRow - firstRow_};
}

// The formula as it reads in the rotated block; nothing where it would have to refer to another workbook.
std::optional<std::string> CellBlock::RotatedFormula(const std::string& formula, const Workbook& to, int row,
                                                     int column) const {
  const bool sameWorkbook = &to == from_;
  const bool sameSheet = sameWorkbook && EqualNoCase(to.SheetName(to.Sheet()), sheet_);
  bool leavesWorkbook = false;
  const FormulaCode code(formula);
  const auto text = code.WithReferences(formula, [&](const FormulaReference& ref) -> std::optional<FormulaReference> {
    const bool isOwn = ref.IsOf(sheet_, true);
    const bool isWhole = ref.wholeColumns || ref.wholeRows;
    FormulaReference now = ref;
    if (const auto range = isOwn && !isWhole ? RotatedRange(ref.range, row, column) : std::nullopt) {
      now.sheet.clear();
      now.range = *range;
      now.fixedFirstRow = ref.fixedFirstColumn;
      now.fixedFirstColumn = ref.fixedFirstRow;
      now.fixedLastRow = ref.fixedLastColumn;
      now.fixedLastColumn = ref.fixedLastRow;
      return now;
    }
    leavesWorkbook = leavesWorkbook || !sameWorkbook;
    if (sameSheet || !ref.sheet.empty()) return std::nullopt;
    now.sheet = sheet_;
    return now;
  });
  if (leavesWorkbook) return std::nullopt;
  return text.value_or(formula);
}

void CellBlock::Put(Workbook& to, int row, int column, const Cell& cell, const std::optional<std::string>& formula) {
  if (formula) {
    to.SetFormula(row, column, *formula, {cell.type, cell.number, cell.text, cell.isError});
  } else if (cell.type == NumberCell) {
    to.NumberRC(row, column, cell.number);
  } else if (cell.type == LogicalCell) {
    to.SetLogical(row, column, cell.number != 0);
  } else {
    to.TextRC(row, column, cell.text);
  }
}

bool CellBlock::WriteRotated(Workbook& to, int row, int column, bool withFormulas) const {
  if (to.SheetLocked() || !Workbook::Fits(row, column) || row + Columns() - 1 > GridStore::MaxRows ||
      column + rows_ - 1 > GridStore::MaxColumns) {
    return false;
  }
  to.BeginStep("Rotate");
  for (int i = rows_ - 1; i >= 0; --i) {
    for (int k = 0; k < Columns(); ++k) {
      const Cell& cell = At(i, k);
      std::optional<std::string> formula;
      if (withFormulas && !cell.formula.empty()) formula = RotatedFormula(cell.formula, to, row, column);
      Put(to, row + k, column + i, cell, formula);
    }
  }
  WriteLooks(to, row, column);
  to.EndStep();
  return true;
}

// Down each new column in runs of cells that look alike.
void CellBlock::WriteLooks(Workbook& to, int row, int column) const {
  for (int i = 0; i < rows_; ++i) {
    const auto lookOf = [&](int k) -> const CellLook& {
      return looks_[static_cast<std::size_t>(k) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(i)];
    };
    const bool isPlain = to.LooksDown(column + i).size() == 1 && to.LookAt(row, column + i) == CellLook();
    for (int k = 0; k < Columns();) {
      int end = k + 1;
      while (end < Columns() && lookOf(end) == lookOf(k)) ++end;
      if (!isPlain || lookOf(k) != CellLook()) {
        to.SetLook({row + k, column + i, row + end - 1, column + i}, Whole(lookOf(k)));
      }
      k = end;
    }
  }
}

}  // namespace tellurix
