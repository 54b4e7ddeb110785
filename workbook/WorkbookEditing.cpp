// Clearing, inserting, deleting, copying and filling cells.
#include <algorithm>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "workbook/WorkbookData.h"

namespace tellurix {

namespace {

// Puts the cells of a column from firstRow on into another order.
void ArrangeCells(CellColumn& column, int firstRow, std::span<const std::uint32_t> order) {
  const int count = static_cast<int>(order.size());
  std::vector<CellValue> before;
  before.reserve(order.size());
  bool allNumbers = true;
  for (int i = 0; i < count; ++i) {
    before.push_back(column.Get(firstRow + i));
    allNumbers = allNumbers && before.back().type == NumberCell && !before.back().formula;
  }
  if (allNumbers) {
    std::vector<double> numbers(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) numbers[i] = before[order[i]].number;
    column.Set(firstRow, std::span<const double>(numbers));
    return;
  }
  column.Clear(firstRow, firstRow + count - 1);
  for (int i = 0; i < count; ++i) {
    const auto from = static_cast<int>(order[static_cast<std::size_t>(i)]);
    const CellValue& value = before[static_cast<std::size_t>(from)];
    if (value.formula) {
      const auto text = value.formula->code.AfterCopy(value.formula->text, i - from, 0);
      column.Set(firstRow + i, FormulaRef(std::make_shared<Formula>(text ? *text : value.formula->text)));
    } else if (!value.IsEmpty()) {
      column.Set(firstRow + i, value);
    }
  }
}

}  // namespace

void Workbook::ClearCells(int column, int firstRow, int lastRow) {
  const CellColumn* cells = ColumnAt(1, column);
  if (!cells) return;
  lastRow = std::min(lastRow, cells->LastRow());
  if (firstRow > lastRow) return;
  if (firstRow == lastRow) {
    if (cells->View(firstRow).type == EmptyCell) return;
    ForCell(column, firstRow).Clear(firstRow, firstRow);
  } else {
    ForMany(column).Clear(firstRow, lastRow);
  }
  TouchCells(firstRow, column, lastRow, column);
  DropIfEmpty(column);
}

bool Workbook::ClearRange(const CellRange& range) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  const AutoStep step(*this, "Clear");
  for (int column = std::min(range.lastColumn, LastCol()); column >= range.firstColumn; --column) {
    ClearCells(column, range.firstRow, range.lastRow);
  }
  return true;
}

// Makes room for `inserted` cells of a slot at `at`, or takes `deleted` ones out there.
void Workbook::ShiftSlot(int slot, int at, int inserted, int deleted) {
  const ColumnRef old = Active().Held(slot);
  if (!old || old->LastRow() < at) return;
  auto shifted = std::make_shared<CellColumn>();
  shifted->CopyCells(*old, 1, at - 1, 1);
  const int from = at + deleted;
  if (old->LastRow() >= from) shifted->CopyCells(*old, from, old->LastRow() - from + 1, at + inserted);
  if (slot == Heights) shifted->Clear(MaxRows + 1, MaxRows + inserted);
  Replace(slot, std::move(shifted));
}

bool Workbook::InsertRows(int row, int count) {
  if (IsRefused() || !Fits(row, 1) || count < 1 || count > MaxRows) return false;
  const SheetData& sheet = Active();
  const int last = std::max(LastRow(), sheet.rowHeadings ? sheet.rowHeadings->LastRow() : 0);
  if (last >= row && last > MaxRows - count) return false;
  const AutoStep step(*this, "Insert rows");
  for (int column = LastCol(); column >= RowHeadings; --column) ShiftSlot(column, row, count, 0);
  ShiftSlot(Heights, row, count, 0);
  FollowMove({true, row, count, 0, 1, MaxColumns});
  TouchCells(row, 0, MaxRows, MaxColumns);
  return true;
}

bool Workbook::DeleteRows(int row, int count) {
  if (IsRefused() || !Fits(row, 1) || count < 1 || count > MaxRows - row + 1) return false;
  const AutoStep step(*this, "Delete rows");
  for (int column = LastCol(); column >= RowHeadings; --column) ShiftSlot(column, row, 0, count);
  ShiftSlot(Heights, row, 0, count);
  FollowMove({true, row, 0, count, 1, MaxColumns});
  TouchCells(row, 0, MaxRows, MaxColumns);
  return true;
}

bool Workbook::InsertColumns(int column, int count) {
  if (IsRefused() || !Fits(1, column) || count < 1 || count > MaxColumns) return false;
  const SheetData& sheet = Active();
  const auto lastOf = [](const ColumnRef& slot) { return slot ? slot->LastRow() : 0; };
  const int last = std::max({LastCol(), lastOf(sheet.columnHeadings), lastOf(sheet.widths)});
  if (last >= column && last > MaxColumns - count) return false;
  const AutoStep step(*this, "Insert columns");
  for (int to = LastCol() + count; to >= column; --to) {
    Replace(to, to - count >= column ? sheet.Held(to - count) : nullptr);
  }
  ShiftSlot(ColumnHeadings, column, count, 0);
  ShiftSlot(Widths, column, count, 0);
  FollowMove({false, column, count, 0, 1, MaxRows});
  TouchCells(0, column, MaxRows, MaxColumns);
  return true;
}

bool Workbook::DeleteColumns(int column, int count) {
  if (IsRefused() || !Fits(1, column) || count < 1 || count > MaxColumns - column + 1) return false;
  const AutoStep step(*this, "Delete columns");
  const int last = LastCol();
  for (int to = column; to <= last; ++to) Replace(to, Active().Held(to + count));
  ShiftSlot(ColumnHeadings, column, 0, count);
  ShiftSlot(Widths, column, 0, count);
  FollowMove({false, column, 0, count, 1, MaxRows});
  TouchCells(0, column, MaxRows, MaxColumns);
  return true;
}

bool Workbook::InsertCells(const CellRange& range, Shift shift) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  const int rows = range.lastRow - range.firstRow + 1;
  const int columns = range.lastColumn - range.firstColumn + 1;
  const int lastColumn = LastCol();
  if (shift == Shift::Rows) {
    const int last = std::min(range.lastColumn, lastColumn);
    for (int column = range.firstColumn; column <= last; ++column) {
      const CellColumn* cells = Active().Find(column);
      if (cells && cells->LastRow() >= range.firstRow && cells->LastRow() > MaxRows - rows) return false;
    }
    const AutoStep step(*this, "Insert cells");
    for (int column = last; column >= range.firstColumn; --column) ShiftSlot(column, range.firstRow, rows, 0);
    FollowMove({true, range.firstRow, rows, 0, range.firstColumn, range.lastColumn});
    TouchCells(range.firstRow, range.firstColumn, MaxRows, range.lastColumn);
    return true;
  }
  for (int column = std::max(range.firstColumn, MaxColumns - columns + 1); column <= lastColumn; ++column) {
    const CellColumn* cells = Active().Find(column);
    if (cells && !cells->IsEmpty(range.firstRow, range.lastRow)) return false;
  }
  const AutoStep step(*this, "Insert cells");
  if (range.lastColumn < MaxColumns) {
    PutCells({range.firstRow, range.firstColumn, range.lastRow, MaxColumns - columns}, range.firstRow,
             range.lastColumn + 1, false);
  }
  ClearRange(range);
  FollowMove({false, range.firstColumn, columns, 0, range.firstRow, range.lastRow});
  return true;
}

bool Workbook::DeleteCells(const CellRange& range, Shift shift) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  const AutoStep step(*this, "Delete cells");
  if (shift == Shift::Rows) {
    for (int column = std::min(range.lastColumn, LastCol()); column >= range.firstColumn; --column) {
      ShiftSlot(column, range.firstRow, 0, range.lastRow - range.firstRow + 1);
    }
    FollowMove({true, range.firstRow, 0, range.lastRow - range.firstRow + 1, range.firstColumn, range.lastColumn});
    TouchCells(range.firstRow, range.firstColumn, MaxRows, range.lastColumn);
    return true;
  }
  const int width = range.lastColumn - range.firstColumn + 1;
  if (range.lastColumn < MaxColumns) {
    PutCells({range.firstRow, range.lastColumn + 1, range.lastRow, MaxColumns}, range.firstRow, range.firstColumn,
             false);
  }
  ClearRange({range.firstRow, MaxColumns - width + 1, range.lastRow, MaxColumns});
  FollowMove({false, range.firstColumn, 0, width, range.firstRow, range.lastRow});
  return true;
}

// Writes `rows` cells of a column over others. Formulas become copies with their references moved `columnsAway` and as
// many rows as the cells are; without a number of columns they go over as they are, for they must then leave the place
// where they were.
void Workbook::CopyColumnPart(const ColumnRef& source, int fromRow, int rows, int toRow, int toColumn,
                              std::optional<int> columnsAway) {
  const ColumnRef old = Active().Held(toColumn);
  const bool nothingThere = !old || old->IsEmpty(toRow, toRow + rows - 1);
  if (nothingThere && (!source || source->IsEmpty(fromRow, fromRow + rows - 1))) return;
  static const CellColumn nothing;
  auto made = old ? std::make_shared<CellColumn>(*old) : std::make_shared<CellColumn>();
  made->CopyCells(source ? *source : nothing, fromRow, rows, toRow);
  if (columnsAway && formulas_->IsUsed()) {
    std::vector<std::pair<int, FormulaRef>> copies;
    made->EachFormula(toRow, toRow + rows - 1, [&](int row, const FormulaRef& formula) {
      const auto text = formula->code.AfterCopy(formula->text, toRow - fromRow, *columnsAway);
      copies.emplace_back(row, std::make_shared<Formula>(text ? *text : formula->text));
    });
    for (const auto& [row, formula] : copies) made->Set(row, formula);
  }
  Replace(toColumn, std::move(made));
}

// Writes cells over others, with formulas as copies or, when the place they come from is to be written over, as they
// are.
void Workbook::PutCells(const CellRange& from, int toRow, int toColumn, bool asCopies) {
  const int rows = from.lastRow - from.firstRow + 1;
  const int columns = from.lastColumn - from.firstColumn + 1;
  // Beyond the last column in use there is nothing to copy and nothing to overwrite.
  const int lastColumn = LastCol();
  const int used = std::min(columns, std::max(lastColumn - from.firstColumn, lastColumn - toColumn) + 1);
  std::vector<ColumnRef> sources;
  if (used > 0) sources.reserve(static_cast<std::size_t>(used));
  for (int i = 0; i < used; ++i) sources.push_back(Active().Held(from.firstColumn + i));
  const auto away = asCopies ? std::optional<int>(toColumn - from.firstColumn) : std::nullopt;
  for (int i = 0; i < used; ++i) {
    CopyColumnPart(sources[static_cast<std::size_t>(i)], from.firstRow, rows, toRow, toColumn + i, away);
  }
  if (used > 0) TouchCells(toRow, toColumn, toRow + rows - 1, toColumn + columns - 1);
  if (asCopies) CopyLooks(from, toRow, toColumn);
}

bool Workbook::CopyBlock(const CellRange& from, int toRow, int toColumn) {
  if (!IsOnSheet(from) || !Fits(toRow, toColumn) || IsRefused()) return false;
  if (toRow > MaxRows - (from.lastRow - from.firstRow)) return false;
  if (toColumn > MaxColumns - (from.lastColumn - from.firstColumn)) return false;
  const AutoStep step(*this, "Copy");
  PutCells(from, toRow, toColumn, true);
  return true;
}

bool Workbook::ArrangeRows(const CellRange& range, std::span<const std::uint32_t> order) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  if (order.size() != static_cast<std::size_t>(range.lastRow - range.firstRow + 1)) return false;
  const AutoStep step(*this, "Sort");
  for (int column = std::min(range.lastColumn, LastCol()); column >= range.firstColumn; --column) {
    const ColumnRef held = Active().Held(column);
    if (!held || held->IsEmpty(range.firstRow, range.lastRow)) continue;
    auto made = std::make_shared<CellColumn>(*held);
    ArrangeCells(*made, range.firstRow, order);
    Replace(column, std::move(made));
  }
  TouchCells(range.firstRow, range.firstColumn, range.lastRow, range.lastColumn);
  ArrangeLooks(range, order);
  return true;
}

bool Workbook::FillDown(const CellRange& range) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  if (range.firstRow == range.lastRow) return true;
  const AutoStep step(*this, "Fill down");
  const int first = range.firstRow + 1;
  const auto count = static_cast<std::size_t>(range.lastRow - range.firstRow);
  for (int column = std::min(range.lastColumn, LastCol()); column >= range.firstColumn; --column) {
    const ColumnRef held = Active().Held(column);
    const CellValue value = held ? held->Get(range.firstRow) : CellValue();
    if (value.IsEmpty()) {
      ClearCells(column, first, range.lastRow);
      continue;
    }
    auto made = std::make_shared<CellColumn>(*held);
    if (value.formula) {
      for (int row = first; row <= range.lastRow; ++row) {
        const auto text = value.formula->code.AfterCopy(value.formula->text, row - range.firstRow, 0);
        made->Set(row, FormulaRef(std::make_shared<Formula>(text ? *text : value.formula->text)));
      }
    } else if (value.type == NumberCell) {
      made->Set(first, std::span<const double>(std::vector<double>(count, value.number)));
    } else if (value.type == TextCell) {
      made->Set(first, std::span<const TextRef>(std::vector<TextRef>(count, value.text)));
    } else {
      for (int row = first; row <= range.lastRow; ++row) made->Set(row, value);
    }
    Replace(column, std::move(made));
    TouchCells(first, column, range.lastRow, column);
  }
  FillLooks(range, true);
  return true;
}

bool Workbook::FillRight(const CellRange& range) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  if (range.firstColumn == range.lastColumn) return true;
  const AutoStep step(*this, "Fill right");
  const ColumnRef source = Active().Held(range.firstColumn);
  const int rows = range.lastRow - range.firstRow + 1;
  // An empty source has nothing to write beyond the columns in use.
  const bool isEmpty = !source || source->IsEmpty(range.firstRow, range.lastRow);
  const int last = isEmpty ? std::min(range.lastColumn, LastCol()) : range.lastColumn;
  for (int column = last; column > range.firstColumn; --column) {
    CopyColumnPart(source, range.firstRow, rows, range.firstRow, column, column - range.firstColumn);
    TouchCells(range.firstRow, column, range.lastRow, column);
  }
  FillLooks(range, false);
  return true;
}

// Replaces every formula for which `rewrite` answers another text; `own` is the sheet of which it asks.
void Workbook::RewriteFormulas(const SheetData& own, const Rewrite& rewrite) {
  if (!formulas_->IsUsed()) return;
  const int active = active_;
  for (active_ = 0; active_ < SheetCount(); ++active_) {
    for (int column = 1; column <= LastCol(); ++column) {
      const CellColumn* cells = Active().Find(column);
      if (!cells) continue;
      std::vector<std::pair<int, FormulaRef>> rewritten;
      cells->EachFormula(1, MaxRows, [&](int row, const FormulaRef& formula) {
        if (const auto text = rewrite(*formula, &Active() == &own)) {
          rewritten.emplace_back(row, std::make_shared<Formula>(*text));
        }
      });
      for (const auto& [row, formula] : rewritten) ForCell(column, row).Set(row, formula);
      if (!rewritten.empty()) TouchCells(rewritten.front().first, column, rewritten.back().first, column);
    }
  }
  active_ = active;
}

// References and looks follow cells of the active sheet that moved.
void Workbook::FollowMove(const CellsMoved& moved) {
  const SheetData& sheet = Active();
  ShiftLooks(moved);
  RewriteFormulas(sheet, [&](const Formula& formula, bool isOwnSheet) {
    return formula.code.AfterMove(formula.text, moved, sheet.name, isOwnSheet);
  });
}

}  // namespace tellurix
