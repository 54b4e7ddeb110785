// What a workbook is made of, for its own files.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "workbook/CellColumn.h"
#include "workbook/FormulaEngine.h"
#include "workbook/Workbook.h"

namespace tellurix {

// Slots of a sheet: its columns by their number, and these, which are columns too: the headings of columns and the
// widths stand at the "row" of their column's number.
inline constexpr int RowHeadings = 0;
inline constexpr int ColumnHeadings = -1;
inline constexpr int Widths = -2;
inline constexpr int Heights = -3;  // at their rows

// A cell as it is shown without a number format.
std::string Displayed(const CellView& cell);

inline std::size_t Index(int oneBased) { return static_cast<std::size_t>(oneBased - 1); }

inline CellRange OnSheet(const CellRange& range) {
  const auto row = [](int r) { return std::clamp(r, 1, GridStore::MaxRows); };
  const auto column = [](int c) { return std::clamp(c, 1, GridStore::MaxColumns); };
  return {row(std::min(range.firstRow, range.lastRow)), column(std::min(range.firstColumn, range.lastColumn)),
          row(std::max(range.firstRow, range.lastRow)), column(std::max(range.firstColumn, range.lastColumn))};
}

inline bool IsOnSheet(const CellRange& range) {
  return Workbook::Fits(range.firstRow, range.firstColumn) && Workbook::Fits(range.lastRow, range.lastColumn) &&
         range.firstRow <= range.lastRow && range.firstColumn <= range.lastColumn;
}

struct Workbook::SheetData {
  std::string name;
  std::vector<ColumnRef> columns;  // null: empty; the last one is not
  ColumnRef rowHeadings;
  ColumnRef columnHeadings;
  ColumnRef widths;
  ColumnRef heights;
  std::shared_ptr<const SheetLooks> looks = std::make_shared<SheetLooks>();
  SheetSettings settings;
  std::vector<CellRange> selection{CellRange{}};
  int activeRow = 1;
  int activeColumn = 1;
  mutable int lastRow = 0;
  mutable bool knowsLastRow = true;

  ColumnRef& Slot(int slot) {
    switch (slot) {
      case RowHeadings:
        return rowHeadings;
      case ColumnHeadings:
        return columnHeadings;
      case Widths:
        return widths;
      case Heights:
        return heights;
      default:
        break;
    }
    if (Index(slot) >= columns.size()) columns.resize(Index(slot) + 1);
    return columns[Index(slot)];
  }
  ColumnRef Held(int slot) const {  // null also beyond the columns in use
    if (slot > 0 && Index(slot) >= columns.size()) return nullptr;
    return const_cast<SheetData*>(this)->Slot(slot);
  }
  const CellColumn* Find(int slot) const {
    if (slot > 0) return Index(slot) < columns.size() ? columns[Index(slot)].get() : nullptr;
    return const_cast<SheetData*>(this)->Slot(slot).get();
  }
  void Trim() {
    while (!columns.empty() && !columns.back()) columns.pop_back();
  }
  int LastRow() const {
    if (!knowsLastRow) {
      lastRow = 0;
      for (const auto& column : columns) {
        if (column) lastRow = std::max(lastRow, column->LastRow());
      }
      knowsLastRow = true;
    }
    return lastRow;
  }
  std::string HeadingAt(int slot, int at) const {
    const CellColumn* headings = Find(slot);
    return headings && at >= 1 ? std::string(headings->View(at).text) : std::string();
  }
};

// The log of a step is an ordered list of values that were overwritten. Undoing swaps each with the present value,
// newest first, and redoing does the same the other way round.
struct Workbook::CellChange {
  SheetRef sheet;
  int slot;
  int row;
  CellValue value;
};

struct Workbook::ColumnChange {
  SheetRef sheet;
  int slot;
  ColumnRef column;
};

struct Workbook::SheetsChange {
  std::vector<std::pair<SheetRef, std::string>> sheets;  // with their names
  int active;
};

struct Workbook::LooksChange {
  SheetRef sheet;
  std::shared_ptr<const SheetLooks> looks;
};

struct Workbook::SheetSettingsChange {
  SheetRef sheet;
  SheetSettings settings;
};

struct Workbook::SettingsChange {
  std::unique_ptr<WorkbookSettings> settings;  // apart: entries of the log are to be small
};

struct Workbook::Step {
  struct Area {
    WorkbookChange::Kind kind;
    SheetRef sheet;  // null for Sheets
    CellRange range;
  };

  std::string caption;
  std::uint64_t serial = 0;
  std::vector<std::variant<CellChange, ColumnChange, SheetsChange, LooksChange, SheetSettingsChange, SettingsChange>>
      log;
  std::vector<Area> areas;
  std::size_t bytes = 0;

  void Touch(WorkbookChange::Kind kind, const SheetRef& sheet, const CellRange& range);
};

// A change is a step of its own unless one is open.
class Workbook::AutoStep {
 public:
  AutoStep(Workbook& workbook, std::string_view caption) : workbook_(workbook) { workbook_.BeginStep(caption); }
  ~AutoStep() { workbook_.EndStep(); }
  AutoStep(const AutoStep&) = delete;
  AutoStep& operator=(const AutoStep&) = delete;

 private:
  Workbook& workbook_;
};

template <typename Change>
void Workbook::Log(Change change) {
  if (!logging_) return;
  if (open_->log.empty()) {
    redo_.clear();
    document.changed = true;
  }
  open_->bytes += sizeof(open_->log[0]);
  open_->log.emplace_back(std::move(change));
}

// The cells as formulas read them.
class Workbook::Cells final : public FormulaCells {
 public:
  explicit Cells(const Workbook& workbook) : workbook_(workbook) {}
  int SheetCount() const override { return workbook_.SheetCount(); }
  int FindSheet(std::string_view name) const override { return workbook_.FindSheet(name) - 1; }
  const CellColumn* Column(int sheet, int column) const override {
    const auto& columns = workbook_.sheets_[static_cast<std::size_t>(sheet)]->columns;
    return Index(column) < columns.size() ? columns[Index(column)].get() : nullptr;
  }
  int LastColumn(int sheet) const override {
    return static_cast<int>(workbook_.sheets_[static_cast<std::size_t>(sheet)]->columns.size());
  }

 private:
  const Workbook& workbook_;
};

struct Workbook::Loading::Backup {
  std::vector<std::pair<SheetRef, SheetData>> sheets;
  int active = 0;
  WorkbookSettings settings;
};

}  // namespace tellurix
