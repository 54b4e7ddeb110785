#include "workbook/Workbook.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "workbook/CellColumn.h"

namespace tellurix {

namespace {

// Slots of a sheet: its columns by their number, and these, which are columns too: the headings of columns and the
// widths stand at the "row" of their column's number.
constexpr int RowHeadings = 0;
constexpr int ColumnHeadings = -1;
constexpr int Widths = -2;

// Writes to one column within a step that are kept cell by cell; the next one keeps the column as it stands.
constexpr int LoggedCells = 256;
constexpr int AllLogged = LoggedCells + 1;

constexpr std::string_view MissingMark = "*";

constexpr double NarrowestFit = 8;
constexpr double WidestFit = 60;
constexpr int FirstCellsFitted = 1000;
constexpr int SampledCellsFitted = 1000;

std::size_t Index(int oneBased) { return static_cast<std::size_t>(oneBased - 1); }

CellRange OnSheet(const CellRange& range) {
  const auto row = [](int r) { return std::clamp(r, 1, GridStore::MaxRows); };
  const auto column = [](int c) { return std::clamp(c, 1, GridStore::MaxColumns); };
  return {row(std::min(range.firstRow, range.lastRow)), column(std::min(range.firstColumn, range.lastColumn)),
          row(std::max(range.firstRow, range.lastRow)), column(std::max(range.firstColumn, range.lastColumn))};
}

bool IsOnSheet(const CellRange& range) {
  return Workbook::Fits(range.firstRow, range.firstColumn) && Workbook::Fits(range.lastRow, range.lastColumn) &&
         range.firstRow <= range.lastRow && range.firstColumn <= range.lastColumn;
}

std::string Displayed(const CellView& cell) {
  switch (std::abs(cell.type)) {
    case NumberCell:
      return GeneralText(cell.number);
    case TextCell:
      return std::string(cell.text);
    case LogicalCell:
      return cell.number != 0 ? "TRUE" : "FALSE";
    default:
      return {};
  }
}

}  // namespace

struct Workbook::SheetData {
  std::string name;
  std::vector<ColumnRef> columns;  // null: empty; the last one is not
  ColumnRef rowHeadings;
  ColumnRef columnHeadings;
  ColumnRef widths;
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

struct Workbook::Step {
  struct Area {
    WorkbookChange::Kind kind;
    SheetRef sheet;  // null for Sheets
    CellRange range;
  };

  std::string caption;
  std::uint64_t serial = 0;
  std::vector<std::variant<CellChange, ColumnChange, SheetsChange>> log;
  std::vector<Area> areas;
  std::size_t bytes = 0;
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

struct Workbook::Loading::Backup {
  std::vector<std::pair<SheetRef, SheetData>> sheets;
  int active = 0;
};

Workbook::Workbook() : texts_(std::make_unique<TextPool>()) {
  sheets_.push_back(std::make_shared<SheetData>());
  sheets_.back()->name = "Sheet1";
}

Workbook::~Workbook() = default;

// --- the log ---

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

void Workbook::Touch(WorkbookChange::Kind kind, int firstRow, int firstColumn, int lastRow, int lastColumn) {
  const SheetRef* sheet = kind == WorkbookChange::Kind::Sheets ? nullptr : &sheets_[static_cast<std::size_t>(active_)];
  const CellRange range{firstRow, firstColumn, lastRow, lastColumn};
  for (auto& area : open_->areas) {
    if (area.kind != kind || area.sheet != (sheet ? *sheet : nullptr)) continue;
    area.range = {std::min(area.range.firstRow, firstRow), std::min(area.range.firstColumn, firstColumn),
                  std::max(area.range.lastRow, lastRow), std::max(area.range.lastColumn, lastColumn)};
    return;
  }
  open_->areas.push_back({kind, sheet ? *sheet : nullptr, range});
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
    told.areas = closed->areas;
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

void Workbook::UpdateChanged() {
  document.changed = (undo_.empty() ? bottomSerial_ : undo_.back().serial) != savedSerial_;
}

void Workbook::MarkSaved() {
  savedSerial_ = undo_.empty() ? bottomSerial_ : undo_.back().serial;
  document.changed = false;
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

bool Workbook::Undo() {
  if (!CanUndo()) return false;
  Step step = std::move(undo_.back());
  undo_.pop_back();
  Swap(step, true);
  historyBytes_ -= step.bytes;
  Step told;
  told.areas = step.areas;
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
  told.areas = step.areas;
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

Workbook::Loading::Loading(Workbook& workbook) : workbook_(workbook), backup_(std::make_unique<Backup>()) {
  // The copies hold the columns, so that every write goes to a copy of its column.
  for (const auto& sheet : workbook_.sheets_) backup_->sheets.emplace_back(sheet, *sheet);
  backup_->active = workbook_.active_;
  workbook_.logging_ = false;
  workbook_.BeginStep({});
}

Workbook::Loading::~Loading() {
  if (!backup_) return;
  workbook_.sheets_.clear();
  for (auto& [sheet, data] : backup_->sheets) {
    *sheet = std::move(data);
    workbook_.sheets_.push_back(sheet);
  }
  workbook_.active_ = backup_->active;
  workbook_.open_->areas.clear();
  workbook_.EndStep();
  workbook_.logging_ = true;
}

void Workbook::Loading::Accept() {
  backup_.reset();
  Step told;
  told.areas.swap(workbook_.open_->areas);
  workbook_.open_->log.clear();
  workbook_.EndStep();
  workbook_.logging_ = true;
  workbook_.undo_.clear();
  workbook_.redo_.clear();
  workbook_.historyBytes_ = 0;
  workbook_.bottomSerial_ = ++workbook_.lastSerial_;
  workbook_.MarkSaved();
  workbook_.Tell(told);
}

// --- cells ---

const CellColumn* Workbook::ColumnAt(int row, int column) const {
  const auto& columns = Active().columns;
  if (row < 1 || static_cast<std::size_t>(column) - 1 >= columns.size()) return nullptr;
  return columns[Index(column)].get();
}

CellView Workbook::ReadRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->View(row) : CellView{};
}

int Workbook::TypeRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->Type(row) : EmptyCell;
}

double Workbook::NumberRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->Number(row) : 0;
}

std::string Workbook::TextRC(int row, int column) const { return Displayed(ReadRC(row, column)); }
std::string Workbook::FormattedTextRC(int row, int column) const { return Displayed(ReadRC(row, column)); }

void Workbook::NumberRC(int row, int column, double value) {
  if (!std::isfinite(value)) return TextRC(row, column, MissingMark);
  if (!Fits(row, column)) return;
  const AutoStep step(*this, "Enter");
  ForCell(column, row).Set(row, value);
  TouchCells(row, column, row, column, true);
}

void Workbook::TextRC(int row, int column, std::string_view text) {
  if (!Fits(row, column)) return;
  const AutoStep step(*this, text.empty() ? "Clear" : "Enter");
  if (text.empty()) return ClearCells(column, row, row);
  // Interned first: the text may be a view into the very cell.
  const TextRef interned = texts_->Intern(text);
  ForCell(column, row).Set(row, interned);
  TouchCells(row, column, row, column, true);
}

void Workbook::SetLogical(int row, int column, bool value) {
  if (!Fits(row, column)) return;
  const AutoStep step(*this, "Enter");
  ForCell(column, row).Set(row, value);
  TouchCells(row, column, row, column, true);
}

void Workbook::SetFormula(int row, int column, std::string_view formula, const FormulaResult& result) {
  if (!Fits(row, column)) return;
  const AutoStep step(*this, "Enter");
  auto cell = std::make_shared<Formula>();
  cell->text = formula;
  cell->isError = result.isError;
  if (result.type == NumberCell && std::isfinite(result.number)) {
    cell->type = NumberCell;
    cell->number = result.number;
  } else if (result.type == LogicalCell) {
    cell->type = LogicalCell;
    cell->number = result.number != 0 ? -1 : 0;
  } else {
    cell->type = TextCell;
    cell->result = result.type == NumberCell ? std::string(MissingMark) : result.text;
  }
  ForCell(column, row).Set(row, FormulaRef(std::move(cell)));
  TouchCells(row, column, row, column, true);
}

std::string Workbook::FormulaText(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  const Formula* formula = cells ? cells->FormulaAt(row) : nullptr;
  return formula ? formula->text : std::string();
}

bool Workbook::IsError(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  const Formula* formula = cells ? cells->FormulaAt(row) : nullptr;
  return formula && formula->isError;
}

bool Workbook::SetColumnNumbers(int column, int firstRow, std::span<const double> values) {
  if (!Fits(firstRow, column) || values.size() > MaxRows - Index(firstRow)) return false;
  if (values.empty()) return true;
  const AutoStep step(*this, "Fill");
  CellColumn& cells = ForMany(column);
  const int count = static_cast<int>(values.size());
  for (int i = 0; i < count;) {
    int end = i;
    while (end < count && std::isfinite(values[static_cast<std::size_t>(end)])) ++end;
    cells.Set(firstRow + i, values.subspan(static_cast<std::size_t>(i), static_cast<std::size_t>(end - i)));
    for (i = end; i < count && !std::isfinite(values[static_cast<std::size_t>(i)]); ++i) {
      cells.Set(firstRow + i, texts_->Intern(MissingMark));
    }
  }
  TouchCells(firstRow, column, firstRow + count - 1, column, true);
  return true;
}

bool Workbook::SetColumnTexts(int column, int firstRow, std::span<const std::string> texts) {
  if (!Fits(firstRow, column) || texts.size() > MaxRows - Index(firstRow)) return false;
  if (texts.empty()) return true;
  const AutoStep step(*this, "Fill");
  CellColumn& cells = ForMany(column);
  std::vector<TextRef> run;
  int row = firstRow;
  const auto flush = [&] {
    cells.Set(row - static_cast<int>(run.size()), std::span<const TextRef>(run));
    run.clear();
  };
  for (const auto& text : texts) {
    if (text.empty()) {
      flush();
      cells.Clear(row, row);
    } else {
      run.push_back(texts_->Intern(text));
    }
    ++row;
    if (run.size() == CellColumn::SegmentRows) flush();
  }
  flush();
  TouchCells(firstRow, column, row - 1, column);
  DropIfEmpty(column);
  return true;
}

// --- headings and widths ---

std::string Workbook::ColText(int column) const { return Active().HeadingAt(ColumnHeadings, column); }
std::string Workbook::RowText(int row) const { return Active().HeadingAt(RowHeadings, row); }

void Workbook::SetHeading(int slot, int at, std::string_view text) {
  if (text.empty() && Active().HeadingAt(slot, at).empty()) return;
  const AutoStep step(*this, "Heading");
  if (text.empty()) {
    ForCell(slot, at).Clear(at, at);
    DropIfEmpty(slot);
  } else {
    const TextRef interned = texts_->Intern(text);
    ForCell(slot, at).Set(at, interned);
  }
  if (slot == RowHeadings) {
    Touch(WorkbookChange::Kind::Headings, at, 0, at, 0);
  } else {
    Touch(WorkbookChange::Kind::Headings, 0, at, 0, at);
  }
}

void Workbook::ColText(int column, std::string_view text) {
  if (Fits(1, column)) SetHeading(ColumnHeadings, column, text);
}

void Workbook::RowText(int row, std::string_view text) {
  if (Fits(row, 1)) SetHeading(RowHeadings, row, text);
}

double Workbook::ColumnWidth(int column) const {
  const CellColumn* widths = Active().Find(Widths);
  if (!widths || column < 1 || widths->Type(column) != NumberCell) return DefaultColumnWidth;
  return widths->Number(column);
}

void Workbook::SetColumnWidth(int column, double width) {
  if (!Fits(1, column)) return;
  const bool toDefault = !std::isfinite(width) || width < 0;
  const CellColumn* widths = Active().Find(Widths);
  if (toDefault && (!widths || widths->Type(column) == EmptyCell)) return;
  const AutoStep step(*this, "Column width");
  if (toDefault) {
    ForCell(Widths, column).Clear(column, column);
    DropIfEmpty(Widths);
  } else {
    ForCell(Widths, column).Set(column, width);
  }
  Touch(WorkbookChange::Kind::Widths, 0, column, 0, column);
}

void Workbook::SetColWidthAuto(const CellRange& range, bool defaults) {
  const CellRange fitted = OnSheet(range);
  const AutoStep step(*this, "Column width");
  const CellColumn* headings = Active().Find(ColumnHeadings);
  const CellColumn* widths = Active().Find(Widths);
  // Beyond all of these there is nothing to fit and nothing to put back.
  const int used = std::max({LastCol(), headings ? headings->LastRow() : 0, widths ? widths->LastRow() : 0});
  for (int column = fitted.firstColumn; column <= std::min(fitted.lastColumn, used); ++column) {
    std::size_t widest = DisplayWidth(ColText(column));
    if (const CellColumn* cells = ColumnAt(1, column)) {
      const auto measure = [&](int row) { widest = std::max(widest, DisplayWidth(Displayed(cells->View(row)))); };
      const int last = std::min(fitted.lastRow, cells->LastRow());
      const int dense = std::min<long long>(last, fitted.firstRow + FirstCellsFitted - 1LL);
      for (int row = fitted.firstRow; row <= dense; ++row) measure(row);
      const int stride = std::max(1, (last - dense) / SampledCellsFitted + 1);
      for (int row = dense + stride; row <= last; row += stride) measure(row);
    }
    if (widest > 0) {
      SetColumnWidth(column, std::clamp(static_cast<double>(widest), NarrowestFit, WidestFit));
    } else if (defaults) {
      SetColumnWidth(column, -1);
    }
  }
}

// --- editing ---

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
  if (!IsOnSheet(range)) return false;
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
  Replace(slot, std::move(shifted));
}

bool Workbook::InsertRows(int row, int count) {
  if (!Fits(row, 1) || count < 1 || count > MaxRows) return false;
  const SheetData& sheet = Active();
  const int last = std::max(LastRow(), sheet.rowHeadings ? sheet.rowHeadings->LastRow() : 0);
  if (last >= row && last > MaxRows - count) return false;
  const AutoStep step(*this, "Insert rows");
  for (int column = LastCol(); column >= RowHeadings; --column) ShiftSlot(column, row, count, 0);
  TouchCells(row, 0, MaxRows, MaxColumns);
  return true;
}

bool Workbook::DeleteRows(int row, int count) {
  if (!Fits(row, 1) || count < 1 || count > MaxRows - row + 1) return false;
  const AutoStep step(*this, "Delete rows");
  for (int column = LastCol(); column >= RowHeadings; --column) ShiftSlot(column, row, 0, count);
  TouchCells(row, 0, MaxRows, MaxColumns);
  return true;
}

bool Workbook::InsertColumns(int column, int count) {
  if (!Fits(1, column) || count < 1 || count > MaxColumns) return false;
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
  TouchCells(0, column, MaxRows, MaxColumns);
  return true;
}

bool Workbook::DeleteColumns(int column, int count) {
  if (!Fits(1, column) || count < 1 || count > MaxColumns - column + 1) return false;
  const AutoStep step(*this, "Delete columns");
  const int last = LastCol();
  for (int to = column; to <= last; ++to) Replace(to, Active().Held(to + count));
  ShiftSlot(ColumnHeadings, column, 0, count);
  ShiftSlot(Widths, column, 0, count);
  TouchCells(0, column, MaxRows, MaxColumns);
  return true;
}

bool Workbook::InsertCells(const CellRange& range, Shift shift) {
  if (!IsOnSheet(range)) return false;
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
    TouchCells(range.firstRow, range.firstColumn, MaxRows, range.lastColumn);
    return true;
  }
  for (int column = std::max(range.firstColumn, MaxColumns - columns + 1); column <= lastColumn; ++column) {
    const CellColumn* cells = Active().Find(column);
    if (cells && !cells->IsEmpty(range.firstRow, range.lastRow)) return false;
  }
  const AutoStep step(*this, "Insert cells");
  CopyBlock({range.firstRow, range.firstColumn, range.lastRow, MaxColumns - columns}, range.firstRow,
            range.lastColumn + 1);
  return ClearRange(range);
}

bool Workbook::DeleteCells(const CellRange& range, Shift shift) {
  if (!IsOnSheet(range)) return false;
  const AutoStep step(*this, "Delete cells");
  if (shift == Shift::Rows) {
    for (int column = std::min(range.lastColumn, LastCol()); column >= range.firstColumn; --column) {
      ShiftSlot(column, range.firstRow, 0, range.lastRow - range.firstRow + 1);
    }
    TouchCells(range.firstRow, range.firstColumn, MaxRows, range.lastColumn);
    return true;
  }
  const int width = range.lastColumn - range.firstColumn + 1;
  if (range.lastColumn < MaxColumns) {
    CopyBlock({range.firstRow, range.lastColumn + 1, range.lastRow, MaxColumns}, range.firstRow, range.firstColumn);
  }
  return ClearRange({range.firstRow, MaxColumns - width + 1, range.lastRow, MaxColumns});
}

bool Workbook::CopyBlock(const CellRange& from, int toRow, int toColumn) {
  if (!IsOnSheet(from) || !Fits(toRow, toColumn)) return false;
  const int rows = from.lastRow - from.firstRow + 1;
  const int columns = from.lastColumn - from.firstColumn + 1;
  if (toRow > MaxRows - rows + 1 || toColumn > MaxColumns - columns + 1) return false;
  const AutoStep step(*this, "Copy");
  // Beyond the last column in use there is nothing to copy and nothing to overwrite.
  const int lastColumn = LastCol();
  const int used = std::min(columns, std::max(lastColumn - from.firstColumn, lastColumn - toColumn) + 1);
  std::vector<ColumnRef> sources;
  if (used > 0) sources.reserve(static_cast<std::size_t>(used));
  for (int i = 0; i < used; ++i) sources.push_back(Active().Held(from.firstColumn + i));
  static const CellColumn nothing;
  for (int i = 0; i < used; ++i) {
    const ColumnRef old = Active().Held(toColumn + i);
    const ColumnRef& source = sources[static_cast<std::size_t>(i)];
    const bool nothingThere = !old || old->IsEmpty(toRow, toRow + rows - 1);
    if (nothingThere && (!source || source->IsEmpty(from.firstRow, from.lastRow))) continue;
    auto made = old ? std::make_shared<CellColumn>(*old) : std::make_shared<CellColumn>();
    made->CopyCells(source ? *source : nothing, from.firstRow, rows, toRow);
    Replace(toColumn + i, std::move(made));
  }
  if (used > 0) TouchCells(toRow, toColumn, toRow + rows - 1, toColumn + columns - 1);
  return true;
}

// --- extent and sheets ---

int Workbook::LastRow() const { return Active().LastRow(); }
int Workbook::LastCol() const { return static_cast<int>(Active().columns.size()); }

void Workbook::Sheet(int index) {
  if (index >= 1 && index <= SheetCount()) active_ = index - 1;
}

std::string Workbook::SheetName(int index) const {
  return index >= 1 && index <= SheetCount() ? sheets_[Index(index)]->name : std::string();
}

int Workbook::FindSheet(std::string_view name) const {
  for (int i = 1; i <= SheetCount(); ++i) {
    if (EqualNoCase(sheets_[Index(i)]->name, name)) return i;
  }
  return 0;
}

bool Workbook::NameIsFree(std::string_view name, int exceptIndex) const {
  if (Trim(name).empty() || CharacterCount(name) > MaxSheetName) return false;
  const int found = FindSheet(name);
  return found == 0 || found == exceptIndex;
}

int Workbook::AddSheet(std::string_view name) {
  std::string given(name);
  for (int n = SheetCount() + 1; given.empty(); ++n) {
    if (const std::string next = "Sheet" + std::to_string(n); FindSheet(next) == 0) given = next;
  }
  if (!NameIsFree(given, 0)) return 0;
  const AutoStep step(*this, "Add sheet");
  LogSheets();
  sheets_.push_back(std::make_shared<SheetData>());
  sheets_.back()->name = std::move(given);
  active_ = SheetCount() - 1;
  return SheetCount();
}

bool Workbook::RenameSheet(int index, std::string_view name) {
  if (index < 1 || index > SheetCount() || !NameIsFree(name, index)) return false;
  const AutoStep step(*this, "Rename sheet");
  LogSheets();
  sheets_[Index(index)]->name = name;
  return true;
}

bool Workbook::DeleteSheet(int index) {
  if (index < 1 || index > SheetCount() || SheetCount() == 1) return false;
  const AutoStep step(*this, "Delete sheet");
  LogSheets();
  if (logging_) {
    const SheetData& gone = *sheets_[Index(index)];
    for (const auto& column : gone.columns) open_->bytes += column ? column->OwnBytes() : 0;
  }
  sheets_.erase(sheets_.begin() + (index - 1));
  if (active_ >= index || active_ == SheetCount()) --active_;
  return true;
}

bool Workbook::MoveSheet(int from, int to) {
  if (from < 1 || from > SheetCount() || to < 1 || to > SheetCount()) return false;
  if (from == to) return true;
  const AutoStep step(*this, "Move sheet");
  LogSheets();
  const SheetRef active = sheets_[static_cast<std::size_t>(active_)];
  const auto first = sheets_.begin() + (from - 1);
  const auto last = sheets_.begin() + (to - 1);
  if (from < to) {
    std::rotate(first, first + 1, last + 1);
  } else {
    std::rotate(last, first, first + 1);
  }
  active_ = static_cast<int>(std::find(sheets_.begin(), sheets_.end(), active) - sheets_.begin());
  return true;
}

// --- selection ---

int Workbook::SelectionCount() const { return static_cast<int>(Active().selection.size()); }

CellRange Workbook::GetSelection(int index) const {
  if (index < 0 || index >= SelectionCount()) return {};
  return Active().selection[static_cast<std::size_t>(index)];
}

std::string Workbook::Selection() const {
  std::string text;
  for (const auto& range : Active().selection) {
    if (!text.empty()) text += ',';
    text += RangeText(range);
  }
  return text;
}

void Workbook::SetSelection(const CellRange& range) {
  SheetData& sheet = Active();
  sheet.selection.assign(1, OnSheet(range));
  sheet.activeRow = sheet.selection[0].firstRow;
  sheet.activeColumn = sheet.selection[0].firstColumn;
}

void Workbook::AddSelection(const CellRange& range) { Active().selection.push_back(OnSheet(range)); }

void Workbook::SetActiveCell(int row, int column) {
  if (!Fits(row, column)) return;
  Active().activeRow = row;
  Active().activeColumn = column;
}

int Workbook::ActiveRow() const { return Active().activeRow; }
int Workbook::ActiveColumn() const { return Active().activeColumn; }

}  // namespace tellurix
