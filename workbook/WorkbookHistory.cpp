// What a step of changes leaves behind: the log that undo and redo swap, and what listeners are told.
#include <algorithm>
#include <limits>
#include <utility>
#include <variant>

#include "workbook/WorkbookData.h"

namespace tellurix {

namespace {

// Writes to one column within a step that are kept cell by cell; the next one keeps the column as it stands.
constexpr int LoggedCells = 256;
constexpr int AllLogged = LoggedCells + 1;

}  // namespace

void Workbook::Step::Touch(WorkbookChange::Kind kind, const SheetRef& sheet, const CellRange& range) {
  for (auto& area : areas) {
    if (area.kind != kind || area.sheet != sheet) continue;
    area.range = {std::min(area.range.firstRow, range.firstRow), std::min(area.range.firstColumn, range.firstColumn),
                  std::max(area.range.lastRow, range.lastRow), std::max(area.range.lastColumn, range.lastColumn)};
    return;
  }
  areas.push_back({kind, sheet, range});
}

void Workbook::Touch(WorkbookChange::Kind kind, int firstRow, int firstColumn, int lastRow, int lastColumn) {
  static const SheetRef none;
  open_->Touch(kind, kind == WorkbookChange::Kind::Sheets ? none : sheets_[static_cast<std::size_t>(active_)],
               {firstRow, firstColumn, lastRow, lastColumn});
}

// Cells were overwritten, with something in the last row if `filled`.
void Workbook::TouchCells(int firstRow, int firstColumn, int lastRow, int lastColumn, bool filled) {
  Touch(WorkbookChange::Kind::Cells, firstRow, firstColumn, lastRow, lastColumn);
  const SheetData& sheet = Active();
  if (filled) {
    sheet.lastRow = std::max(sheet.lastRow, lastRow);
  } else if (lastRow >= sheet.lastRow) {
    sheet.knowsLastRow = false;
  }
}

// A column comes to be. One that came and went again since then needs no second record.
void Workbook::LogEmpty(const SheetRef& sheet, int slot) {
  if (!open_->log.empty()) {
    const auto* last = std::get_if<ColumnChange>(&open_->log.back());
    if (last && !last->column && last->sheet == sheet && last->slot == slot) return;
  }
  Log(ColumnChange{sheet, slot, nullptr});
}

// The column of a slot, made ready for a write to one cell.
CellColumn& Workbook::ForCell(int slot, int row) {
  const SheetRef& sheet = sheets_[static_cast<std::size_t>(active_)];
  ColumnRef& held = sheet->Slot(slot);
  const std::uint64_t step = open_->serial;
  if (!held) {
    LogEmpty(sheet, slot);
    held = std::make_shared<CellColumn>();
    held->step = step;
    held->logged = AllLogged;
    return *held;
  }
  // A column that the log or another slot holds as well was not made for writing here.
  const bool shared = held.use_count() > 1;
  const int logged = held->step == step && !shared ? held->logged : 0;
  if (logged == AllLogged) return *held;
  if (logged < LoggedCells) {
    if (logging_) Log(CellChange{sheet, slot, row, held->Get(row)});
    if (shared) held = std::make_shared<CellColumn>(*held);
    held->logged = logged + 1;
  } else {
    Log(ColumnChange{sheet, slot, held});
    held = std::make_shared<CellColumn>(*held);
    held->logged = AllLogged;
  }
  held->step = step;
  return *held;
}

// The same for a write to many cells.
CellColumn& Workbook::ForMany(int slot) {
  const SheetRef& sheet = sheets_[static_cast<std::size_t>(active_)];
  ColumnRef& held = sheet->Slot(slot);
  if (held && held->step == open_->serial && held->logged == AllLogged && held.use_count() == 1) return *held;
  if (held) {
    Log(ColumnChange{sheet, slot, held});
  } else {
    LogEmpty(sheet, slot);
  }
  if (!held) {
    held = std::make_shared<CellColumn>();
  } else if (held.use_count() > 1) {
    held = std::make_shared<CellColumn>(*held);
  }
  held->step = open_->serial;
  held->logged = AllLogged;
  return *held;
}

// Another column in a slot (null: none).
void Workbook::Replace(int slot, ColumnRef column) {
  const SheetRef& sheet = sheets_[static_cast<std::size_t>(active_)];
  if (column && column->IsEmpty()) column = nullptr;
  ColumnRef old = sheet->Held(slot);
  if (old == column) return;
  sheet->Slot(slot) = std::move(column);
  sheet->Trim();
  sheet->knowsLastRow = false;
  // What neither the sheet nor another step shares any more is kept by the log alone.
  if (logging_ && old && old.use_count() == 1) open_->bytes += old->OwnBytes();
  Log(ColumnChange{sheet, slot, std::move(old)});
}

void Workbook::DropIfEmpty(int slot) {
  SheetData& sheet = Active();
  ColumnRef& held = sheet.Slot(slot);
  if (held && held->IsEmpty()) {
    if (logging_) open_->bytes += held->TakeDetachedBytes();
    held = nullptr;
  }
  sheet.Trim();
}

void Workbook::LogSheets() {
  SheetsChange change{{}, active_};
  for (const auto& sheet : sheets_) change.sheets.emplace_back(sheet, sheet->name);
  Log(std::move(change));
  Touch(WorkbookChange::Kind::Sheets, 1, 1, 1, 1);
}

void Workbook::BeginStep(std::string_view caption) {
  if (depth_++ > 0) return;
  open_ = std::make_unique<Step>();
  open_->caption = caption;
  open_->serial = ++lastSerial_;
}

void Workbook::EndStep() {
  if (depth_ == 0 || --depth_ > 0) return;
  const std::unique_ptr<Step> closed = std::move(open_);
  if (!closed->log.empty()) {
    for (const auto& change : closed->log) {
      const auto take = [&](const SheetRef& sheet, int slot) {
        if (const ColumnRef column = sheet->Held(slot)) closed->bytes += column->TakeDetachedBytes();
      };
      if (const auto* cell = std::get_if<CellChange>(&change)) take(cell->sheet, cell->slot);
      if (const auto* column = std::get_if<ColumnChange>(&change)) take(column->sheet, column->slot);
    }
    Step told;  // for the listeners, who may change the workbook again
    Recalculate(*closed, told);
    historyBytes_ += closed->bytes;
    undo_.push_back(std::move(*closed));
    while (undo_.size() > HistorySteps || (historyBytes_ > HistoryBytes && undo_.size() > 1)) {
      historyBytes_ -= undo_.front().bytes;
      bottomSerial_ = undo_.front().serial;
      undo_.pop_front();
    }
    UpdateChanged();
    Tell(told);
  }
}

std::uint64_t Workbook::Revision() const { return undo_.empty() ? bottomSerial_ : undo_.back().serial; }

void Workbook::UpdateChanged() { document.changed = Revision() != savedSerial_; }

void Workbook::MarkSaved() {
  savedSerial_ = Revision();
  document.changed = false;
}

void Workbook::MarkUnsaved() {
  savedSerial_ = std::numeric_limits<std::uint64_t>::max();  // of no step
  document.changed = true;
}

bool Workbook::CanUndo() const { return depth_ == 0 && !undo_.empty(); }
bool Workbook::CanRedo() const { return depth_ == 0 && !redo_.empty(); }
std::string Workbook::UndoCaption() const { return undo_.empty() ? std::string() : undo_.back().caption; }
std::string Workbook::RedoCaption() const { return redo_.empty() ? std::string() : redo_.back().caption; }

void Workbook::Swap(Step& step, bool backwards) {
  const auto swapOne = [&](auto& change) {
    using Change = std::decay_t<decltype(change)>;
    if constexpr (std::is_same_v<Change, SheetsChange>) {
      SheetsChange present{{}, active_};
      for (const auto& sheet : sheets_) present.sheets.emplace_back(sheet, sheet->name);
      sheets_.clear();
      for (auto& [sheet, name] : change.sheets) {
        sheet->name = std::move(name);
        sheets_.push_back(sheet);
      }
      active_ = change.active;
      change = std::move(present);
    } else if constexpr (std::is_same_v<Change, LooksChange>) {
      change.sheet->looks.swap(change.looks);
    } else if constexpr (std::is_same_v<Change, SheetSettingsChange>) {
      std::swap(change.sheet->settings, change.settings);
    } else if constexpr (std::is_same_v<Change, SettingsChange>) {
      std::swap(settings_, *change.settings);
    } else {
      SheetData& sheet = *change.sheet;
      ColumnRef& held = sheet.Slot(change.slot);
      if constexpr (std::is_same_v<Change, ColumnChange>) {
        held.swap(change.column);
      } else {
        if (!held) {
          held = std::make_shared<CellColumn>();
        } else if (held.use_count() > 1) {
          held = std::make_shared<CellColumn>(*held);
        }
        CellValue present = held->Get(change.row);
        held->Set(change.row, change.value);
        change.value = std::move(present);
        if (held->IsEmpty()) held = nullptr;
      }
      sheet.Trim();
      sheet.knowsLastRow = false;
    }
  };
  const auto visit = [&](auto& change) { std::visit(swapOne, change); };
  if (backwards) {
    std::for_each(step.log.rbegin(), step.log.rend(), visit);
  } else {
    std::for_each(step.log.begin(), step.log.end(), visit);
  }
}

// Computes what depends on the step's changes, and adds it to what the listeners are told.
void Workbook::Recalculate(const Step& step, Step& told) {
  if (!listeners_.empty()) told.areas = step.areas;
  if (!formulas_->IsUsed()) return;
  const auto indexOf = [&](const SheetRef& sheet) {
    const auto found = std::find(sheets_.begin(), sheets_.end(), sheet);
    return found == sheets_.end() ? -1 : static_cast<int>(found - sheets_.begin());
  };
  const bool isRebuilt = std::any_of(step.log.begin(), step.log.end(),
                                     [](const auto& change) { return std::holds_alternative<SheetsChange>(change); });
  if (isRebuilt) formulas_->Rebuild(true);
  for (const bool refreshing : {true, false}) {
    if (refreshing && isRebuilt) continue;
    for (const auto& change : step.log) {
      if (const auto* cell = std::get_if<CellChange>(&change); cell && cell->slot > 0) {
        const int sheet = indexOf(cell->sheet);
        if (sheet < 0) continue;
        if (refreshing) {
          formulas_->RefreshCell(sheet, cell->slot, cell->row);
        } else {
          formulas_->Changed(sheet, {cell->row, cell->slot, cell->row, cell->slot});
        }
      } else if (const auto* column = std::get_if<ColumnChange>(&change); column && column->slot > 0) {
        const int sheet = indexOf(column->sheet);
        if (sheet < 0) continue;
        if (refreshing) {
          formulas_->RefreshColumn(sheet, column->slot);
          continue;
        }
        for (const auto& area : step.areas) {
          if (area.sheet != column->sheet || area.kind != WorkbookChange::Kind::Cells) continue;
          formulas_->Changed(sheet, {area.range.firstRow, column->slot, area.range.lastRow, column->slot});
        }
      }
    }
  }
  formulas_->Recalculate([&](int sheet, int row, int column) {
    told.Touch(WorkbookChange::Kind::Cells, sheets_[static_cast<std::size_t>(sheet)], {row, column, row, column});
  });
}

bool Workbook::Undo() {
  if (!CanUndo()) return false;
  Step step = std::move(undo_.back());
  undo_.pop_back();
  Swap(step, true);
  historyBytes_ -= step.bytes;
  Step told;
  Recalculate(step, told);
  redo_.push_back(std::move(step));
  UpdateChanged();
  Tell(told);
  return true;
}

bool Workbook::Redo() {
  if (!CanRedo()) return false;
  Step step = std::move(redo_.back());
  redo_.pop_back();
  Swap(step, false);
  historyBytes_ += step.bytes;
  Step told;
  Recalculate(step, told);
  undo_.push_back(std::move(step));
  UpdateChanged();
  Tell(told);
  return true;
}

void Workbook::ClearHistory() {
  if (depth_ > 0) return;
  if (!undo_.empty()) bottomSerial_ = undo_.back().serial;
  undo_.clear();
  redo_.clear();
  historyBytes_ = 0;
}

int Workbook::AddListener(Listener listener) {
  listeners_.emplace_back(++lastListener_, std::move(listener));
  return lastListener_;
}

void Workbook::RemoveListener(int number) {
  std::erase_if(listeners_, [&](const auto& entry) { return entry.first == number; });
}

void Workbook::Tell(const Step& step) {
  if (listeners_.empty()) return;
  const auto listeners = listeners_;  // one of them may add or remove others
  for (const auto& area : step.areas) {
    WorkbookChange change{area.kind, 0, area.range};
    if (area.sheet) {
      const auto found = std::find(sheets_.begin(), sheets_.end(), area.sheet);
      if (found == sheets_.end()) continue;
      change.sheet = static_cast<int>(found - sheets_.begin()) + 1;
    }
    for (const auto& [number, listener] : listeners) listener(change);
  }
}

}  // namespace tellurix
